#pragma once

#include <kalmyr/core/SoNode.h>
#include <kalmyr/core/SoNodeMacros.h>
#include <kalmyr/fields/SoValueFields.h>

/// \file
/// Interpolators of VRML97. They keep their values; nothing drives them.

/// Key values of a colour over a fraction of time.
class KALMYR_API SoVRMLColorInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLColorInterpolator)

public:
    SoVRMLColorInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;
    SoMFColor keyValue;
    SoSFColor value_changed; ///< event out

protected:
    ~SoVRMLColorInterpolator() override;
};

/// Key values of a list of positions over a fraction of time.
class KALMYR_API SoVRMLCoordinateInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLCoordinateInterpolator)

public:
    SoVRMLCoordinateInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;
    SoMFVec3f keyValue;
    SoMFVec3f value_changed; ///< event out

protected:
    ~SoVRMLCoordinateInterpolator() override;
};

/// Key values of a list of normals over a fraction of time.
class KALMYR_API SoVRMLNormalInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLNormalInterpolator)

public:
    SoVRMLNormalInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;
    SoMFVec3f keyValue;
    SoMFVec3f value_changed; ///< event out

protected:
    ~SoVRMLNormalInterpolator() override;
};

/// Key values of an orientation over a fraction of time.
class KALMYR_API SoVRMLOrientationInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLOrientationInterpolator)

public:
    SoVRMLOrientationInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;
    SoMFRotation keyValue;
    SoSFRotation value_changed; ///< event out

protected:
    ~SoVRMLOrientationInterpolator() override;
};

/// Key values of a position over a fraction of time.
class KALMYR_API SoVRMLPositionInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLPositionInterpolator)

public:
    SoVRMLPositionInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;
    SoMFVec3f keyValue;
    SoSFVec3f value_changed; ///< event out

protected:
    ~SoVRMLPositionInterpolator() override;
};

/// Key values of a number over a fraction of time.
class KALMYR_API SoVRMLScalarInterpolator : public SoNode {
    SO_NODE_HEADER(SoVRMLScalarInterpolator)

public:
    SoVRMLScalarInterpolator();
    static void initClass();

    SoSFFloat set_fraction; ///< event in
    SoMFFloat key;
    SoMFFloat keyValue;
    SoSFFloat value_changed; ///< event out

protected:
    ~SoVRMLScalarInterpolator() override;
};
