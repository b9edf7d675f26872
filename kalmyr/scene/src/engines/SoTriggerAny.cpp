#include <kalmyr/engines/SoTriggerAny.h>

SO_ENGINE_SOURCE(SoTriggerAny)

SoTriggerAny::SoTriggerAny()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(input0, ());
    SO_ADD_FIELD(input1, ());
    SO_ADD_FIELD(input2, ());
    SO_ADD_FIELD(input3, ());
    SO_ADD_FIELD(input4, ());
    SO_ADD_FIELD(input5, ());
    SO_ADD_FIELD(input6, ());
    SO_ADD_FIELD(input7, ());
    SO_ADD_FIELD(input8, ());
    SO_ADD_FIELD(input9, ());
    SO_ADD_OUTPUT(output);
}

SoTriggerAny::~SoTriggerAny() = default;

void SoTriggerAny::initClass()
{
    SO_ENGINE_INIT_CLASS(SoTriggerAny, SoEngine, "TriggerAny");
}
