#include <kalmyr/engines/SoGate.h>

namespace {

SoType s_type;

} // namespace

SoType SoGate::getClassTypeId()
{
    return s_type;
}

SoType SoGate::getTypeId() const
{
    return s_type;
}

void SoGate::initClass()
{
    s_type = SoType::createType(SoTypedEngine::getClassTypeId(), SbName("Gate"),
                                []() -> void* { return static_cast<SoEngine*>(new SoGate); });
}

SoGate::SoGate(SoType multiple)
{
    setValueType(multiple);
}

SoGate::SoGate() : SoGate(SoMFFloat::getClassTypeId()) {}
SoGate::~SoGate() = default;

void SoGate::declareFields()
{
    declare("enable", &enable);
    declare("trigger", &trigger);
    input = static_cast<SoMField*>(declareNew("input", getValueType()));
    output = static_cast<SoMField*>(declareNew("output", getValueType()));
    declareOutput(output);
}

void SoGate::inputChanged(SoField* changed)
{
    if (changed == &enable && !enable.getValue()) {
        output->evaluate(); // the gate closes behind what came last
        return;
    }
    const bool opened = changed == &enable || changed == &trigger;
    if (!opened && !(changed == input && enable.getValue()))
        return;
    m_waiting = true;
    outputsChanged();
    if (!enable.getValue())
        output->evaluate(); // only the value of this moment passes
}

void SoGate::evaluate()
{
    if (m_waiting)
        output->copyFrom(*input);
    m_waiting = false;
}
