#pragma once

#include <kalmyr/core/SoEngineMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// \file
/// Engines that make values of their parts.

class KALMYR_API SoComposeVec2f final : public SoEngine {
    SO_ENGINE_HEADER(SoComposeVec2f)

public:
    SoComposeVec2f();
    static void initClass();

    SoMFFloat x, y;   ///< 0
    SoMFVec2f vector; ///< output

protected:
    ~SoComposeVec2f() override;
    void evaluate() override;
};

class KALMYR_API SoComposeVec3f final : public SoEngine {
    SO_ENGINE_HEADER(SoComposeVec3f)

public:
    SoComposeVec3f();
    static void initClass();

    SoMFFloat x, y, z; ///< 0
    SoMFVec3f vector;  ///< output

protected:
    ~SoComposeVec3f() override;
    void evaluate() override;
};

class KALMYR_API SoComposeVec4f final : public SoEngine {
    SO_ENGINE_HEADER(SoComposeVec4f)

public:
    SoComposeVec4f();
    static void initClass();

    SoMFFloat x, y, z, w; ///< 0
    SoMFVec4f vector;     ///< output

protected:
    ~SoComposeVec4f() override;
    void evaluate() override;
};

class KALMYR_API SoComposeRotation final : public SoEngine {
    SO_ENGINE_HEADER(SoComposeRotation)

public:
    SoComposeRotation();
    static void initClass();

    SoMFVec3f axis;        ///< 0 0 1
    SoMFFloat angle;       ///< 0 radians
    SoMFRotation rotation; ///< output

protected:
    ~SoComposeRotation() override;
    void evaluate() override;
};

/// The rotation that turns one direction into another.
class KALMYR_API SoComposeRotationFromTo final : public SoEngine {
    SO_ENGINE_HEADER(SoComposeRotationFromTo)

public:
    SoComposeRotationFromTo();
    static void initClass();

    SoMFVec3f from;        ///< 0 0 1
    SoMFVec3f to;          ///< 0 0 1
    SoMFRotation rotation; ///< output

protected:
    ~SoComposeRotationFromTo() override;
    void evaluate() override;
};

class KALMYR_API SoComposeMatrix final : public SoEngine {
    SO_ENGINE_HEADER(SoComposeMatrix)

public:
    SoComposeMatrix();
    static void initClass();

    SoMFVec3f translation;         ///< 0 0 0
    SoMFRotation rotation;         ///< none
    SoMFVec3f scaleFactor;         ///< 1 1 1
    SoMFRotation scaleOrientation; ///< none
    SoMFVec3f center;              ///< 0 0 0
    SoMFMatrix matrix;             ///< output

protected:
    ~SoComposeMatrix() override;
    void evaluate() override;
};
