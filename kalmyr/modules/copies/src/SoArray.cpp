#include <kalmyr/copies/SoArray.h>

#include <algorithm>
#include <cstdint>

namespace {

constexpr SoEnumEntry kOrigins[] = {
    {"FIRST", SoArray::FIRST},
    {"CENTER", SoArray::CENTER},
    {"LAST", SoArray::LAST},
};

int countOf(const SoSFShort& field)
{
    return std::max(0, static_cast<int>(field.getValue()));
}

/// How many steps away from the group the first one of a row stands.
float firstStep(int origin, int count)
{
    switch (origin) {
    case SoArray::CENTER:
        return -static_cast<float>(count - 1) / 2;
    case SoArray::LAST:
        return -static_cast<float>(count - 1);
    default:
        return 0;
    }
}

} // namespace

SO_NODE_SOURCE(SoArray)

SoArray::SoArray()
{
    SO_NODE_CONSTRUCTOR(SoCopies);
    SO_ADD_FIELD(origin, (FIRST));
    origin.setEnums(kOrigins);
    SO_ADD_FIELD(numElements1, (std::int16_t{1}));
    SO_ADD_FIELD(numElements2, (std::int16_t{1}));
    SO_ADD_FIELD(numElements3, (std::int16_t{1}));
    SO_ADD_FIELD(separation1, (1.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(separation2, (0.0f, 1.0f, 0.0f));
    SO_ADD_FIELD(separation3, (0.0f, 0.0f, 1.0f));
}

SoArray::~SoArray() = default;

void SoArray::initClass()
{
    SO_NODE_INIT_CLASS(SoArray, SoCopies, "Array");
}

int SoArray::getNumCopies() const
{
    const std::int64_t count =
        std::int64_t{countOf(numElements1)} * countOf(numElements2) * countOf(numElements3);
    return static_cast<int>(std::min<std::int64_t>(count, kMaxCopies));
}

SbMatrix SoArray::getCopyMatrix(int index) const
{
    const int columns = countOf(numElements1);
    const int rows = countOf(numElements2);
    const int where = origin.getValue();
    const auto step = [where](int at, int count) {
        return firstStep(where, count) + static_cast<float>(at);
    };
    SbMatrix matrix;
    matrix.setTranslate(separation1.getValue() * step(index % columns, columns)
                        + separation2.getValue() * step(index / columns % rows, rows)
                        + separation3.getValue()
                              * step(index / columns / rows, countOf(numElements3)));
    return matrix;
}
