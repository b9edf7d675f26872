#include <kalmyr/engines/SoInterpolate.h>

#include "EngineTools.h"

SO_ENGINE_SOURCE(SoInterpolate)

SoInterpolate::SoInterpolate()
{
    SO_ENGINE_CONSTRUCTOR(SoEngine);
    SO_ADD_FIELD(alpha, (0.0f));
}

SoInterpolate::~SoInterpolate() = default;

void SoInterpolate::initClass()
{
    SO_ENGINE_INIT_ABSTRACT_CLASS(SoInterpolate, SoEngine, "Interpolate");
}

namespace {

template <class T>
T blend(const T& a, const T& b, float alpha)
{
    return a + (b - a) * alpha;
}
SbColor blend(const SbColor& a, const SbColor& b, float alpha)
{
    return SbColor(a + (b - a) * alpha);
}
SbRotation blend(const SbRotation& a, const SbRotation& b, float alpha)
{
    return SbRotation::slerp(a, b, std::clamp(alpha, 0.0f, 1.0f));
}

template <class Field>
void blendAll(const Field& a, const Field& b, float alpha, Field& to)
{
    using kalmyr::detail::valueAt;
    kalmyr::detail::fill(to, kalmyr::detail::longest(a, b),
                         [&](int i) { return blend(valueAt(a, i), valueAt(b, i), alpha); });
}

} // namespace

#define KALMYR_INTERPOLATE(Class, name, first, second)                                             \
    SO_ENGINE_SOURCE(Class)                                                                        \
    Class::Class()                                                                                 \
    {                                                                                              \
        SO_ENGINE_CONSTRUCTOR(SoInterpolate);                                                      \
        SO_ADD_FIELD(input0, first);                                                               \
        SO_ADD_FIELD(input1, second);                                                              \
        SO_ADD_OUTPUT(output);                                                                     \
    }                                                                                              \
    Class::~Class() = default;                                                                     \
    void Class::initClass()                                                                        \
    {                                                                                              \
        SO_ENGINE_INIT_CLASS(Class, SoInterpolate, name);                                          \
    }                                                                                              \
    void Class::evaluate()                                                                         \
    {                                                                                              \
        blendAll(input0, input1, alpha.getValue(), output);                                        \
    }

KALMYR_INTERPOLATE(SoInterpolateFloat, "InterpolateFloat", (0.0f), (1.0f))
KALMYR_INTERPOLATE(SoInterpolateVec2f, "InterpolateVec2f", (), ())
KALMYR_INTERPOLATE(SoInterpolateVec3f, "InterpolateVec3f", (), ())
KALMYR_INTERPOLATE(SoInterpolateVec4f, "InterpolateVec4f", (), ())
KALMYR_INTERPOLATE(SoInterpolateColor, "InterpolateColor", (), (1.0f, 1.0f, 1.0f))
KALMYR_INTERPOLATE(SoInterpolateRotation, "InterpolateRotation", (), ())
