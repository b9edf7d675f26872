#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoPath.h>
#include <kalmyr/fields/SoFieldMacros.h>
#include <kalmyr/fields/SoReferenceFields.h>

/// Holds a path, or none, with a reference. Paths are shared, not copied: edit a path and call
/// touch(), or set another one. Equal paths are the same value.
///
/// As text: NULL, or "Path { HEAD [ 0, 2 ] }" with the head node and child indices from there. A
/// node that is reached by a field stands there as "FIELD name 0", with its index in the field.
/// Text outside of a file has the whole graph below the head, and reading it makes a new one.
class KALMYR_API SoSFPath final : public SoSFReference<SoSFPath, SoPath> {
    SO_FIELD_HEADER(SoSFPath)
    SO_REFERENCE_ASSIGNMENT(SoSFPath, SoPath)

    void copyWith(SoNodeCopier& copier, const SoField& other) override;

    static bool isSameObject(const SoPath* a, const SoPath* b)
    {
        return a == b || (a && b && *a == *b);
    }
    static bool readObject(SoFieldReader& in, SoRef<SoPath>& path);
    static void writeObject(SoFieldWriter& out, const SoPath* path);
};

/// Holds any number of paths; see SoSFPath.
class KALMYR_API SoMFPath final : public SoMFReference<SoMFPath, SoPath> {
    SO_FIELD_HEADER(SoMFPath)

    void addPath(SoPath* path) { set1Value(getNum(), path); }
    void copyWith(SoNodeCopier& copier, const SoField& other) override;

    static bool isSameObject(const SoPath* a, const SoPath* b)
    {
        return SoSFPath::isSameObject(a, b);
    }
    static bool readObject(SoFieldReader& in, SoRef<SoPath>& path);
    static void writeObject(SoFieldWriter& out, const SoPath* path);
};
