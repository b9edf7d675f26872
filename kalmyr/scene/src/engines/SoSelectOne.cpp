#include <kalmyr/engines/SoSelectOne.h>

#include <algorithm>

namespace {

SoType s_type;

} // namespace

SoType SoSelectOne::getClassTypeId()
{
    return s_type;
}

SoType SoSelectOne::getTypeId() const
{
    return s_type;
}

void SoSelectOne::initClass()
{
    s_type = SoType::createType(SoTypedEngine::getClassTypeId(), SbName("SelectOne"),
                                []() -> void* { return static_cast<SoEngine*>(new SoSelectOne); });
}

SoSelectOne::SoSelectOne(SoType multiple)
{
    setValueType(multiple);
}

SoSelectOne::SoSelectOne() : SoSelectOne(SoMFFloat::getClassTypeId()) {}
SoSelectOne::~SoSelectOne() = default;

void SoSelectOne::declareFields()
{
    declare("index", &index);
    input = static_cast<SoMField*>(declareNew("input", getValueType()));
    output = declareNew("output", getSingleType());
    declareOutput(output);
}

void SoSelectOne::evaluate()
{
    const int num = input->getNum();
    if (num > 0)
        selectValue(*input, std::clamp(index.getValue(), 0, num - 1), *output);
}
