#pragma once

#include "mirabo/extender/private/Observed.h"

#include <kalmyr/core/SoField.h>

#include <memory>

namespace mirabo {

/// One change of one field that can be made and taken back any number of times, to the bit. Holds
/// neither the field nor its container.
class FieldStep {
public:
    FieldStep() = default;
    virtual ~FieldStep();
    FieldStep(const FieldStep&) = delete;
    FieldStep& operator=(const FieldStep&) = delete;

    /// \name Under the write lock, while the field lives; the host may let it die inside the change
    /// @{
    virtual void make(const Observed<SoField>& field) = 0;
    virtual void takeBack(const Observed<SoField>& field) = 0;
    /// @}

    /// Goes on to where a later step of the same field, which was made after this one, leads. False
    /// when one step cannot do what both do.
    virtual bool absorb(FieldStep& later) = 0;
};

/// \name The kinds of steps. Null when the step would change nothing.
/// Made while the field can be read.
/// @{

/// Gives the field the value of a scratch field of its type.
std::unique_ptr<FieldStep> makeValueStep(const SoField& field, std::unique_ptr<SoField> value,
                                         bool isDefault = false);
/// Puts values in the place of `removed` values from `start` on; null, too, when those are not
/// there.
std::unique_ptr<FieldStep> makeRangeStep(const SoMField& field, int start, int removed,
                                         const SoMField& values);
std::unique_ptr<FieldStep> makeIgnoredStep(const SoField& field, bool on);
/// Lets the field follow another one; null: none.
std::unique_ptr<FieldStep> makeConnectionStep(const SoField& field, SoField* master);

/// @}

/// A field of the same type with the same value, in no container; null when there is none.
std::unique_ptr<SoField> copyOf(const SoField& field);

} // namespace mirabo
