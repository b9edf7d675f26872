#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/fields/SoFieldMacros.h>

class SoFieldContainer;

/// Holds one field container of any kind, or none, with a reference and a listener.
class KALMYR_API SoSFFieldContainer final : public SoSField {
    SO_FIELD_HEADER(SoSFFieldContainer)

    SoSFFieldContainer() = default;
    ~SoSFFieldContainer() override;

    SoFieldContainer* getValue() const
    {
        evaluate();
        return m_held;
    }
    operator SoFieldContainer*() const { return getValue(); }
    void setValue(SoFieldContainer* container);
    SoSFFieldContainer& operator=(SoFieldContainer* container)
    {
        setValue(container);
        return *this;
    }
    void initValue(SoFieldContainer* container);

    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    void copyWith(SoNodeCopier& copier, const SoField& other) override;
    /// "NULL" or a node. A container that is no node is written as NULL: no text gives it back.
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;

private:
    SoFieldContainer* m_held = nullptr; // Holds a reference.
};
