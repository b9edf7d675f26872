#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/rendering/SoSceneView.h>
#include <kalmyr/vrml/SoVRMLBox.h>
#include <kalmyr/vrml/SoVRMLCone.h>
#include <kalmyr/vrml/SoVRMLCylinder.h>
#include <kalmyr/vrml/SoVRMLShape.h>
#include <kalmyr/vrml/SoVRMLSphere.h>

#include <gtest/gtest.h>

namespace {

template <class Body>
SoVRMLShape* addBody(SoGroup* root)
{
    auto* shape = new SoVRMLShape;
    shape->geometry.setValue(new Body);
    root->addChild(shape);
    return shape;
}

/// Edges that are no bend of the surface would show in outlines and line drawings.
TEST(VrmlBodies, CloseWithoutSeams)
{
    SoDB::init();
    const SoRef<SoSeparator> root(new SoSeparator);
    addBody<SoVRMLSphere>(root.get());
    addBody<SoVRMLBox>(root.get());
    addBody<SoVRMLCone>(root.get());
    addBody<SoVRMLCylinder>(root.get());
    SoGLRenderAction action;
    const SoSceneView view = kalmyr::viewScene(action, root.get());
    ASSERT_EQ(view.items.size(), 4u);
    const std::size_t sharpEdges[] = {0, 12, 32, 64}; // the rims of 32 segments
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(kalmyr::getOutline(*view.items[i].geometry).sharp.size() / 2, sharpEdges[i]) << i;
}

TEST(VrmlBodies, ShareGeometryAndAreSeenFromOutsideOnly)
{
    SoDB::init();
    const SoRef<SoSeparator> root(new SoSeparator);
    addBody<SoVRMLCylinder>(root.get());
    addBody<SoVRMLCylinder>(root.get());
    SoVRMLShape* open = addBody<SoVRMLCylinder>(root.get());
    static_cast<SoVRMLCylinder*>(open->geometry.getValue())->top.setValue(false);
    SoGLRenderAction action;
    const SoSceneView view = kalmyr::viewScene(action, root.get());
    ASSERT_EQ(view.items.size(), 3u);
    EXPECT_EQ(view.items[0].geometry, view.items[1].geometry);
    EXPECT_NE(view.items[0].geometry, view.items[2].geometry);
    for (const SoSceneView::Item& item : view.items)
        EXPECT_TRUE(item.geometry->solid);
}

} // namespace
