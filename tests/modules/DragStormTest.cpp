#include "DragStage.h"

#include <kalmyr/nodes/SoTransform.h>

#include <kalmyr/base/SbSphere.h>

#include <algorithm>
#include <random>
#include <set>

namespace {

/// Draggers under any transform, seen by any camera, taken anywhere and dragged anywhere: what was
/// taken is under the pointer afterwards, or as near as the motion lets it.
class DragStorm : public DragStage, public testing::WithParamInterface<const char*> {
protected:
    float unit(float low, float high)
    {
        return std::uniform_real_distribution<float>(low, high)(m_random);
    }
    SbVec3f point(float low, float high)
    {
        return {unit(low, high), unit(low, high), unit(low, high)};
    }
    SbRotation turn() { return {point(-1, 1), unit(0, 6)}; }

    void setStage(const char* type)
    {
        SoCamera* seen = nullptr;
        if (m_random() % 2) {
            auto* flat = new SoOrthographicCamera;
            flat->height = 8;
            seen = flat;
        } else {
            auto* deep = new SoPerspectiveCamera;
            deep->heightAngle = unit(0.4f, 1.1f);
            seen = deep;
        }
        const SbRotation way = turn();
        const SbVec3f target = point(-5, 5);
        seen->orientation = way;
        seen->position = target + way.rotated(SbVec3f(0, 0, unit(7, 12)));
        seen->nearDistance = 1;
        seen->farDistance = 40;
        setCamera(seen);
        while (root->getNumChildren() > 1)
            root->removeChild(1);
        m_around = new SoTransform;
        m_around->translation = target;
        m_around->rotation = turn();
        m_around->scaleFactor = point(0.5f, 2.0f);
        m_around->scaleOrientation = turn();
        root->addChild(m_around.get());
        m_dragger = static_cast<SoDragger*>(SoNode::create(SoType::fromName(type)));
        root->addChild(m_dragger.get());
    }

    void expectFollows(const Held& held, const SbVec3f& before, SbVec2s pointer);
    void expectTurned(const Held& held, const SbVec3f& before, const SbVec3f& now, SbVec2s pointer);
    SbVec3f valueOf(const char* field) const
    {
        const SoField* found = m_dragger->getField(field);
        return found ? static_cast<const SoSFVec3f*>(found)->getValue() : SbVec3f();
    }

    SbVec3f directionOf() const
    {
        if (const SoField* plane = m_dragger->getField("plane"))
            return static_cast<const SoSFPlane*>(plane)->getValue().getNormal();
        return valueOf("direction");
    }
    float coneOf() const
    {
        const SoField* angle = m_dragger->getField("cutOffAngle");
        return angle ? static_cast<const SoSFFloat*>(angle)->getValue() : 0;
    }
    static float angleOf(const SbVec3f& a, const SbVec3f& b)
    {
        return std::atan2(a.cross(b).length(), a.dot(b));
    }
    /// Of the plane that a handle moves in to the line of sight.
    float slopeOf(const SoDragHandle& handle, SbVec2s at) const
    {
        const SbVec3f axis = handle.axis.getValue();
        const SbVec3f side(axis[2], axis[0], axis[1]);
        const SbMatrix toWorld = m_dragger->getMotionMatrix() * m_around->getLocalMatrix();
        const SbVec3f normal =
            toWorld.direction(side).cross(toWorld.direction(axis.cross(side))).normalized();
        return std::abs(normal.dot(sight(at).getDirection()));
    }

    std::mt19937 m_random{4711};
    SoRef<SoTransform> m_around;
    SoRef<SoDragger> m_dragger;
    SbVec3f m_directionBefore;
    float m_coneBefore = 0;
    std::set<int> m_checked; ///< motions
};

void DragStorm::expectFollows(const Held& held, const SbVec3f& before, SbVec2s pointer)
{
    const SbVec3f now = placeOf(held);
    const SbVec2f seen = onScreen(now);
    const SbVec2f off = SbVec2f(pointer[0], pointer[1]) - seen;
    const int motion = held.handle->motion.getValue();
    switch (motion) {
    case SoDragHandle::MOVE_PLANE:
    case SoDragHandle::MOVE_VIEW:
    case SoDragHandle::SCALE_PLANE:
        EXPECT_LT(off.length(), 0.5f);
        break;
    case SoDragHandle::MOVE_LINE:
    case SoDragHandle::SCALE_LINE:
    case SoDragHandle::SCALE_EVENLY: {
        // Nearest to the pointer of all points of the picture of its line.
        const SbVec3f way = now - before;
        const SbVec2f along =
            onScreen(now + way.normalized() * 0.01f) - onScreen(now - way.normalized() * 0.01f);
        if (way.length() > 0.01f) {
            EXPECT_LT(std::abs(off.dot(along.normalized())), 0.7f);
        }
        break;
    }
    default:
        expectTurned(held, before, now, pointer);
    }
    m_checked.insert(motion);
}

void DragStorm::expectTurned(const Held& held, const SbVec3f& before, const SbVec3f& now,
                             SbVec2s pointer)
{
    // In the space around the dragger, where turns are turns.
    const SbMatrix toLocal = m_around->getLocalMatrix().inverse();
    const SbVec3f center = valueOf("location");
    const SbVec3f from = toLocal.point(before) - center, to = toLocal.point(now) - center;
    SbLine ray = sight(pointer).transformed(toLocal);
    ray.setPosDir(ray.getPosition() - center, ray.getDirection());
    const SbVec3f axis = held.handle->axis.getValue();
    const auto across = [&axis](const SbVec3f& v) { return v - axis * axis.dot(v); };
    switch (held.handle->motion.getValue()) {
    case SoDragHandle::TURN_DISC: {
        SbVec3f met;
        if (std::abs(ray.getDirection().dot(axis)) < 0.2f
            || !SbPlane(axis, from).intersect(ray, met))
            return;
        EXPECT_NEAR((from - axis * axis.dot(from)).length(), across(to).length(), 1e-2f);
        EXPECT_GT(across(to).normalized().dot(across(met).normalized()), 0.9999f);
        break;
    }
    case SoDragHandle::TURN_CYLINDER: {
        SbVec3f onRay, onSide;
        if (!ray.getClosestPoints(SbLine(SbVec3f(), axis), onRay, onSide)
            || (onRay - onSide).length() > 0.95f * across(from).length())
            return;
        EXPECT_NEAR(across(from).length(), across(to).length(), 1e-2f);
        ray.getClosestPoints(SbLine(to, to + axis), onRay, onSide);
        EXPECT_LT((onRay - onSide).length(), 0.01f);
        break;
    }
    default: {
        SbVec3f met, behind;
        if (ray.getClosestPoint(SbVec3f()).length() > 0.95f * from.length()
            || !SbSphere(SbVec3f(), from.length()).intersect(ray, met, behind))
            return;
        if (from.dot(ray.getDirection()) > 0)
            met = behind; // it was taken at the far side
        if (!m_dragger->getField("cutOffAngle") && !m_dragger->getField("direction")
            && !m_dragger->getField("plane")) {
            EXPECT_LT((SbVec2f(pointer[0], pointer[1]) - onScreen(now)).length(), 0.8f);
            return;
        }
        // The arrow keeps its distance from the pointer; the cone opens as far as that grows.
        const float cone = coneOf();
        if (m_dragger->getField("cutOffAngle") && (cone > 1.57f || cone < 0.011f))
            return; // as far as it opens or closes
        const float opened = cone - m_coneBefore;
        EXPECT_NEAR(angleOf(directionOf(), met), angleOf(m_directionBefore, from) + opened, 0.02f);
    }
    }
}

TEST_P(DragStorm, WhatWasTakenStaysUnderThePointer)
{
    int drags = 0;
    for (int tried = 0; tried < 40000 && drags < 60; ++tried) {
        setStage(GetParam());
        const SbVec2s from(static_cast<short>(unit(250, 750)), static_cast<short>(unit(250, 750)));
        const auto held = find(from);
        if (!held || held->handle->motion.getValue() == SoDragHandle::NONE)
            continue;
        const int motion = held->handle->motion.getValue();
        if ((motion == SoDragHandle::MOVE_PLANE || motion == SoDragHandle::SCALE_PLANE)
            && slopeOf(*held->handle, from) < 0.2f)
            continue; // seen from its edge
        const SbVec3f before = placeOf(*held);
        m_directionBefore = directionOf();
        m_coneBefore = coneOf();
        ASSERT_LT((onScreen(before) - SbVec2f(from[0], from[1])).length(), 0.5f);
        press(from);
        ASSERT_TRUE(action->isHandled());
        moveTo(from);
        EXPECT_LT((placeOf(*held) - before).length(), 0.02f) << "no jump";
        SbVec2s to = from;
        for (int step = 0; step < 4; ++step) {
            to = from
                 + SbVec2s(static_cast<short>(unit(-60, 60)), static_cast<short>(unit(-60, 60)));
            moveTo(to);
        }
        const SbVec3f scale = valueOf("scaleFactor");
        if (std::min({scale[0], scale[1], scale[2]}) > 0.01f || scale == SbVec3f())
            expectFollows(*held, before, to);
        EXPECT_FALSE(HasFailure()) << GetParam() << ", drag " << drags << " at the part "
                                   << held->handle->part.getValue().getString();
        if (HasFailure())
            return;
        release(to);
        EXPECT_FALSE(m_dragger->isActive.getValue());
        ++drags;
    }
    EXPECT_EQ(drags, 60);
    EXPECT_FALSE(m_checked.empty());
}

INSTANTIATE_TEST_SUITE_P(All, DragStorm,
                         testing::Values("Translate1Dragger", "Translate2Dragger",
                                         "Translate3Dragger", "RotateCylindricalDragger",
                                         "RotateDiscDragger", "RotateSphericalDragger",
                                         "Scale1Dragger", "Scale2Dragger", "Scale3Dragger",
                                         "ScaleUniformDragger", "TransformDragger",
                                         "DirectionalLightDragger", "PointLightDragger",
                                         "SpotLightDragger", "ClipPlaneDragger"),
                         [](const auto& info) { return std::string(info.param); });

} // namespace
