#pragma once

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoShape.h>

#include <gtest/gtest.h>

#include <functional>

namespace nodetest {

/// Starts the toolkit before each test.
class NodesTest : public ::testing::Test {
protected:
    void SetUp() override { SoDB::init(); }
};

/// Traverses and calls back at each shape, while the state is what the shape sees.
inline void atShapes(SoNode* root, const std::function<void(SoState*, SoShape*)>& function)
{
    SoCallbackAction action;
    action.addPreCallback(SoShape::getClassTypeId(), [&](SoCallbackAction* a, const SoNode* node) {
        function(a->getState(), const_cast<SoShape*>(static_cast<const SoShape*>(node)));
        return SoCallbackAction::CONTINUE;
    });
    action.apply(root);
}

/// The geometry of the last shape below.
inline SoRef<SoGeometry> geometryOf(SoNode* root)
{
    SoRef<SoGeometry> geometry;
    atShapes(root, [&](SoState* state, SoShape* shape) { geometry = shape->getGeometry(state); });
    return geometry;
}

/// Sum of the areas of all triangles as seen against `direction`: faces turned away count negative.
inline float facingArea(const SoGeometry& g, const SbVec3f& direction)
{
    float sum = 0;
    for (std::size_t i = 0; i + 2 < g.triangles.size(); i += 3) {
        const SbVec3f& a = g.positions[g.triangles[i]];
        sum += (g.positions[g.triangles[i + 1]] - a)
                   .cross(g.positions[g.triangles[i + 2]] - a)
                   .dot(direction)
               / 2;
    }
    return sum;
}

} // namespace nodetest
