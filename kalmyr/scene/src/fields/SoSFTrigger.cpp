#include <kalmyr/base/SoContract.h>
#include <kalmyr/fields/SoSFTrigger.h>

SO_FIELD_SOURCE(SoSFTrigger, SoSField, "SFTrigger")

bool SoSFTrigger::isSame(const SoField& other) const
{
    return other.getTypeId() == getTypeId();
}

void SoSFTrigger::copyFrom(const SoField& other)
{
    if (canCopy(other))
        trigger();
}

bool SoSFTrigger::readValue(SoFieldReader&)
{
    trigger();
    return true;
}

void SoSFTrigger::writeValue(SoFieldWriter&) const {}
