#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/sensors/SoCascade.h>
#include <kalmyr/sensors/SoFieldSensor.h>

/// \file
/// Interpolators of VRML97. Setting `set_fraction` sets `value_changed`, inside that call.

/// Base of the interpolators. Fractions below the first key and above the last one stand for these.
class KALMYR_API SoVRMLInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLInterpolator)

public:
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;          ///< fractions, rising

    bool affectsState() const override { return false; }

protected:
    SoVRMLInterpolator();
    ~SoVRMLInterpolator() override;

    /// Sets the value from the key values number `at` and `at + 1`, the fraction `t` between them.
    virtual void interpolate(int at, float t) = 0;

private:
    void follow();

    SoFieldSensor m_sensor;
    SoCascade m_cascade; ///< of values that come round to the fraction
};

/// Key values of a colour over a fraction of time; hues are passed through in between.
class KALMYR_API SoVRMLColorInterpolator : public SoVRMLInterpolator {
    SO_NODE_HEADER(SoVRMLColorInterpolator)

public:
    SoVRMLColorInterpolator();
    static void initClass();

    SoMFColor keyValue;
    SoSFColor value_changed; ///< event out

protected:
    ~SoVRMLColorInterpolator() override;
    void interpolate(int at, float t) override;
};

/// Key values of a list of positions over a fraction of time.
class KALMYR_API SoVRMLCoordinateInterpolator : public SoVRMLInterpolator {
    SO_NODE_HEADER(SoVRMLCoordinateInterpolator)

public:
    SoVRMLCoordinateInterpolator();
    static void initClass();

    SoMFVec3f keyValue;
    SoMFVec3f value_changed; ///< event out

protected:
    ~SoVRMLCoordinateInterpolator() override;
    void interpolate(int at, float t) override;
};

/// Key values of a list of normals over a fraction of time; they turn at constant speed.
class KALMYR_API SoVRMLNormalInterpolator : public SoVRMLInterpolator {
    SO_NODE_HEADER(SoVRMLNormalInterpolator)

public:
    SoVRMLNormalInterpolator();
    static void initClass();

    SoMFVec3f keyValue;
    SoMFVec3f value_changed; ///< event out

protected:
    ~SoVRMLNormalInterpolator() override;
    void interpolate(int at, float t) override;
};

/// Key values of an orientation over a fraction of time, by the shortest way.
class KALMYR_API SoVRMLOrientationInterpolator : public SoVRMLInterpolator {
    SO_NODE_HEADER(SoVRMLOrientationInterpolator)

public:
    SoVRMLOrientationInterpolator();
    static void initClass();

    SoMFRotation keyValue;
    SoSFRotation value_changed; ///< event out

protected:
    ~SoVRMLOrientationInterpolator() override;
    void interpolate(int at, float t) override;
};

/// Key values of a position over a fraction of time.
class KALMYR_API SoVRMLPositionInterpolator : public SoVRMLInterpolator {
    SO_NODE_HEADER(SoVRMLPositionInterpolator)

public:
    SoVRMLPositionInterpolator();
    static void initClass();

    SoMFVec3f keyValue;
    SoSFVec3f value_changed; ///< event out

protected:
    ~SoVRMLPositionInterpolator() override;
    void interpolate(int at, float t) override;
};

/// Key values of a number over a fraction of time.
class KALMYR_API SoVRMLScalarInterpolator : public SoVRMLInterpolator {
    SO_NODE_HEADER(SoVRMLScalarInterpolator)

public:
    SoVRMLScalarInterpolator();
    static void initClass();

    SoMFFloat keyValue;
    SoSFFloat value_changed; ///< event out

protected:
    ~SoVRMLScalarInterpolator() override;
    void interpolate(int at, float t) override;
};
