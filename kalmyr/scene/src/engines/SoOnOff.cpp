#include <kalmyr/engines/SoOnOff.h>

SO_ENGINE_SOURCE(SoOnOff)

SoOnOff::SoOnOff()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(on, ());
    SO_ADD_FIELD(off, ());
    SO_ADD_FIELD(toggle, ());
    SO_ADD_OUTPUT(isOn);
    SO_ADD_OUTPUT(isOff);
    isOff.initValue(true);
}

SoOnOff::~SoOnOff() = default;

void SoOnOff::initClass()
{
    SO_ENGINE_INIT_CLASS(SoOnOff, SoEngine, "OnOff");
}

void SoOnOff::inputChanged(SoField* input)
{
    const bool was = isOn.getValue();
    const bool is = input == &on || (input == &toggle && !was);
    if ((input != &on && input != &off && input != &toggle) || is == was)
        return;
    isOn.setValue(is);
    isOff.setValue(!is);
}
