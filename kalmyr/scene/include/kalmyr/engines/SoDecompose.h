#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// \file
/// Engines that take values apart.

class KALMYR_API SoDecomposeVec2f final : public SoEngine {
    SO_ENGINE_HEADER(SoDecomposeVec2f)

public:
    SoDecomposeVec2f();
    static void initClass();

    SoMFVec2f vector; ///< 0 0
    SoMFFloat x, y;   ///< outputs

protected:
    ~SoDecomposeVec2f() override;
    void evaluate() override;
};

class KALMYR_API SoDecomposeVec3f final : public SoEngine {
    SO_ENGINE_HEADER(SoDecomposeVec3f)

public:
    SoDecomposeVec3f();
    static void initClass();

    SoMFVec3f vector;  ///< 0 0 0
    SoMFFloat x, y, z; ///< outputs

protected:
    ~SoDecomposeVec3f() override;
    void evaluate() override;
};

class KALMYR_API SoDecomposeVec4f final : public SoEngine {
    SO_ENGINE_HEADER(SoDecomposeVec4f)

public:
    SoDecomposeVec4f();
    static void initClass();

    SoMFVec4f vector;     ///< 0 0 0 0
    SoMFFloat x, y, z, w; ///< outputs

protected:
    ~SoDecomposeVec4f() override;
    void evaluate() override;
};

class KALMYR_API SoDecomposeRotation final : public SoEngine {
    SO_ENGINE_HEADER(SoDecomposeRotation)

public:
    SoDecomposeRotation();
    static void initClass();

    SoMFRotation rotation; ///< none
    SoMFVec3f axis;        ///< output, of length 1
    SoMFFloat angle;       ///< output, radians

protected:
    ~SoDecomposeRotation() override;
    void evaluate() override;
};

class KALMYR_API SoDecomposeMatrix final : public SoEngine {
    SO_ENGINE_HEADER(SoDecomposeMatrix)

public:
    SoDecomposeMatrix();
    static void initClass();

    SoMFMatrix matrix;             ///< identity
    SoMFVec3f center;              ///< 0 0 0: what rotation and scaling go about
    SoMFVec3f translation;         ///< output
    SoMFRotation rotation;         ///< output
    SoMFVec3f scaleFactor;         ///< output
    SoMFRotation scaleOrientation; ///< output

protected:
    ~SoDecomposeMatrix() override;
    void evaluate() override;
};
