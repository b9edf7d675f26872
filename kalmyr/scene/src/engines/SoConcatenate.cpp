#include <kalmyr/engines/SoConcatenate.h>

namespace {

SoType s_type;

} // namespace

SoType SoConcatenate::getClassTypeId()
{
    return s_type;
}

SoType SoConcatenate::getTypeId() const
{
    return s_type;
}

void SoConcatenate::initClass()
{
    s_type =
        SoType::createType(SoTypedEngine::getClassTypeId(), SbName("Concatenate"),
                           []() -> void* { return static_cast<SoEngine*>(new SoConcatenate); });
}

SoConcatenate::SoConcatenate(SoType multiple)
{
    setValueType(multiple);
}

SoConcatenate::SoConcatenate() : SoConcatenate(SoMFFloat::getClassTypeId()) {}
SoConcatenate::~SoConcatenate() = default;

void SoConcatenate::declareFields()
{
    char name[] = "input0";
    for (SoMField*& field : input) {
        field = static_cast<SoMField*>(declareNew(name, getValueType()));
        ++name[5];
    }
    output = static_cast<SoMField*>(declareNew("output", getValueType()));
    declareOutput(output);
}

void SoConcatenate::evaluate()
{
    output->setNum(0);
    for (const SoMField* field : input)
        if (field->getNum() > 0)
            appendValues(*field, *output);
}
