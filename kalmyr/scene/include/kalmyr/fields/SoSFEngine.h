#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoEngine.h>
#include <kalmyr/fields/SoFieldMacros.h>
#include <kalmyr/fields/SoReferenceFields.h>

/// Holds one engine, or none, with a reference. Engines are shared, not copied, except in the copy
/// of a graph that copies the engine as well.
///
/// As text: NULL, or an engine as scene files have it.
class KALMYR_API SoSFEngine final : public SoSFReference<SoSFEngine, SoEngine> {
    SO_FIELD_HEADER(SoSFEngine)
    SO_REFERENCE_ASSIGNMENT(SoSFEngine, SoEngine)

    static bool isSameObject(const SoEngine* a, const SoEngine* b) { return a == b; }
    static bool readObject(SoFieldReader& in, SoRef<SoEngine>& engine);
    static void writeObject(SoFieldWriter& out, const SoEngine* engine);
};

/// Holds any number of engines, null among them; see SoSFEngine.
class KALMYR_API SoMFEngine final : public SoMFReference<SoMFEngine, SoEngine> {
    SO_FIELD_HEADER(SoMFEngine)

    void addEngine(SoEngine* engine) { set1Value(getNum(), engine); }

    static bool isSameObject(const SoEngine* a, const SoEngine* b) { return a == b; }
    static bool readObject(SoFieldReader& in, SoRef<SoEngine>& engine);
    static void writeObject(SoFieldWriter& out, const SoEngine* engine);
};
