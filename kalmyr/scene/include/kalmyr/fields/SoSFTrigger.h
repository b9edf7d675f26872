#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/fields/SoFieldMacros.h>

/// A field without a value: setting it is the event.
class KALMYR_API SoSFTrigger final : public SoSField {
    SO_FIELD_HEADER(SoSFTrigger)

    void setValue() { valueChanged(); }
    void trigger() { setValue(); }
    void initValue() {}

    bool isSame(const SoField& other) const override;
    void copyFrom(const SoField& other) override;
    /// The text is empty; reading it triggers.
    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;
};
