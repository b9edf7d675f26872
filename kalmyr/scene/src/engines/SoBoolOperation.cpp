#include <kalmyr/engines/SoBoolOperation.h>

#include "EngineTools.h"

SO_ENGINE_SOURCE(SoBoolOperation)

namespace {

constexpr SoEnumEntry kOperations[] = {
    {"CLEAR", SoBoolOperation::CLEAR},
    {"SET", SoBoolOperation::SET},
    {"A", SoBoolOperation::A},
    {"NOT_A", SoBoolOperation::NOT_A},
    {"B", SoBoolOperation::B},
    {"NOT_B", SoBoolOperation::NOT_B},
    {"A_OR_B", SoBoolOperation::A_OR_B},
    {"NOT_A_OR_B", SoBoolOperation::NOT_A_OR_B},
    {"A_OR_NOT_B", SoBoolOperation::A_OR_NOT_B},
    {"NOT_A_OR_NOT_B", SoBoolOperation::NOT_A_OR_NOT_B},
    {"A_AND_B", SoBoolOperation::A_AND_B},
    {"NOT_A_AND_B", SoBoolOperation::NOT_A_AND_B},
    {"A_AND_NOT_B", SoBoolOperation::A_AND_NOT_B},
    {"NOT_A_AND_NOT_B", SoBoolOperation::NOT_A_AND_NOT_B},
    {"A_EQUALS_B", SoBoolOperation::A_EQUALS_B},
    {"A_NOT_EQUALS_B", SoBoolOperation::A_NOT_EQUALS_B},
};

} // namespace

SoBoolOperation::SoBoolOperation()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(a, (false));
    SO_ADD_FIELD(b, (false));
    SO_ADD_FIELD(operation, (static_cast<int>(A)));
    SO_ADD_OUTPUT(output);
    SO_ADD_OUTPUT(inverse);
    operation.setEnums(kOperations);
}

SoBoolOperation::~SoBoolOperation() = default;

void SoBoolOperation::initClass()
{
    SO_ENGINE_INIT_CLASS(SoBoolOperation, SoEngine, "BoolOperation");
}

void SoBoolOperation::evaluate()
{
    using kalmyr::detail::valueAt;
    const int num = kalmyr::detail::longest(a, b, operation);
    const auto result = [this](int i) {
        const int which = (valueAt(a, i) ? 2 : 0) + (valueAt(b, i) ? 1 : 0);
        return (valueAt(operation, i) >> which & 1) != 0;
    };
    kalmyr::detail::fill(output, num, result);
    kalmyr::detail::fill(inverse, num, [&](int i) { return !result(i); });
}
