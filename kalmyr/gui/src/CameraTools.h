#pragma once

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/cameras/SoPerspectiveCamera.h>

#include <algorithm>
#include <cmath>

// Small things that viewers do with cameras.

constexpr float kMinSize = 1e-9f; // of a view or distance
constexpr float kMaxSize = 1e15f;

inline float clampedSize(float size)
{
    return std::isfinite(size) ? std::clamp(size, kMinSize, kMaxSize) : 1.0f;
}

/// Height seen at distance 1, of a camera with perspective.
inline float heightScale(const SoCamera& camera)
{
    return 2 * std::tan(static_cast<const SoPerspectiveCamera&>(camera).heightAngle.getValue() / 2);
}

inline SbVec3f ahead(const SbRotation& orientation, float distance)
{
    return orientation.rotated(SbVec3f(0, 0, -distance));
}

/// Empty without a node. Callbacks in the scene may let go of it meanwhile.
inline SbBox3f sceneBox(SoNode* scene, const SbViewportRegion& region)
{
    const SoRef<SoNode> node(scene);
    if (!node)
        return SbBox3f();
    SoGetBoundingBoxAction action(region);
    action.apply(node.get());
    return action.getBoundingBox();
}

template <class Field, class Value>
void setIfDifferent(Field& field, const Value& value)
{
    if (!(field.getValue() == value))
        field.setValue(value);
}
