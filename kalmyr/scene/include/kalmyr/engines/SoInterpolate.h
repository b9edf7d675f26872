#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// Common part of the engines that blend two values: all `input0` for alpha 0, all `input1` for 1,
/// and beyond these along the same line (rotations: along the shortest arc, alpha within 0 to 1).
class KALMYR_API SoInterpolate : public SoEngine {
    SO_ENGINE_HEADER(SoInterpolate)

public:
    static void initClass();

    SoSFFloat alpha; ///< 0

protected:
    SoInterpolate();
    ~SoInterpolate() override;
};

/// Numbers, from 0 to 1 at first.
class KALMYR_API SoInterpolateFloat final : public SoInterpolate {
    SO_ENGINE_HEADER(SoInterpolateFloat)

public:
    SoInterpolateFloat();
    static void initClass();
    SoMFFloat input0, input1;
    SoMFFloat output; ///< output

protected:
    ~SoInterpolateFloat() override;
    void evaluate() override;
};

#define KALMYR_INTERPOLATE(Class, Field)                                                           \
    class KALMYR_API Class final : public SoInterpolate {                                          \
        SO_ENGINE_HEADER(Class)                                                                    \
                                                                                                   \
    public:                                                                                        \
        Class();                                                                                   \
        static void initClass();                                                                   \
        Field input0, input1;                                                                      \
        Field output; /**< output */                                                               \
                                                                                                   \
    protected:                                                                                     \
        ~Class() override;                                                                         \
        void evaluate() override;                                                                  \
    };

KALMYR_INTERPOLATE(SoInterpolateVec2f, SoMFVec2f)
KALMYR_INTERPOLATE(SoInterpolateVec3f, SoMFVec3f)
KALMYR_INTERPOLATE(SoInterpolateVec4f, SoMFVec4f)
KALMYR_INTERPOLATE(SoInterpolateColor, SoMFColor)
KALMYR_INTERPOLATE(SoInterpolateRotation, SoMFRotation)

#undef KALMYR_INTERPOLATE
