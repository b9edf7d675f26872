#include "ShapeActions.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/details/SoDetail.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/shapes/TriangleTree.h>

namespace {

void measureShape(SoAction* action, SoNode* node)
{
    SbBox3f box;
    SbVec3f center;
    static_cast<SoShape*>(node)->computeBBox(action->getState(), box, center);
    static_cast<SoGetBoundingBoxAction*>(action)->extendBy(box, center);
}

/// A box of things with a size in pixels is right for the present view only.
void measurePixelShape(SoAction* action, SoNode* node)
{
    static_cast<SoGetBoundingBoxAction*>(action)->doNotCache();
    measureShape(action, node);
}

/// The geometry as the present view shows it. Null as well where only a view could tell.
SoRef<SoGeometry> geometryInView(SoState* state, SoShape* shape)
{
    SoRef<SoGeometry> geometry = shape->getGeometry(state);
    if (geometry && geometry->isSizedInPixels())
        return geometry->inView(SoModelMatrixElement::get(state), SoViewElement::get(state),
                                SoViewportRegionElement::get(state));
    return geometry;
}

void countShape(SoAction* action, SoNode* node)
{
    auto* count = static_cast<SoGetPrimitiveCountAction*>(action);
    const SoRef<SoGeometry> geometry = static_cast<SoShape*>(node)->getGeometry(action->getState());
    if (!geometry)
        return;
    count->addTriangles(geometry->getNumTriangles());
    count->addLines(geometry->getNumLines());
    count->addPoints(geometry->points.size());
}

// ---- picking

SbVec3f faceNormal(const SoGeometry& g, const std::uint32_t* corners)
{
    const SbVec3f& a = g.positions[corners[0]];
    return (g.positions[corners[1]] - a).cross(g.positions[corners[2]] - a).normalized();
}

/// A shape that is picked.
struct Picked {
    SoRayPickAction* action;
    SoShape* shape;
    const SoGeometry& geometry;

    void describe(SoPickedPoint* picked, SoShape::Primitive primitive, std::size_t index) const
    {
        picked->setDetail(shape->createDetail(action->getState(), geometry, primitive, index,
                                              picked->getObjectPoint()));
    }
};

void addTriangleHit(const Picked& target, const SoPickRay& ray,
                    const kalmyr::TriangleTree::Hit& met)
{
    const SoGeometry& g = target.geometry;
    const std::uint32_t* corners = &g.triangles[met.triangle * 3];
    SoPickHit hit;
    hit.t = met.t;
    hit.point = ray.origin + ray.direction * met.t;
    SbVec2f texCoord;
    hit.normal = SbVec3f();
    for (int i = 0; i < 3; ++i) {
        if (!g.normals.empty())
            hit.normal += g.normals[corners[i]] * met.barycentric[i];
        if (!g.texCoords.empty())
            texCoord += g.texCoords[corners[i]] * met.barycentric[i];
    }
    if (hit.normal.normalize() == 0)
        hit.normal = faceNormal(g, corners);
    SoPickedPoint* picked = target.action->addHit(hit);
    if (!picked)
        return;
    picked->setTextureCoords(texCoord);
    target.describe(picked, SoShape::Primitive::TRIANGLE, met.triangle);
}

void pickTriangles(const Picked& target)
{
    const SoGeometry& g = target.geometry;
    SoRayPickAction* action = target.action;
    if (g.triangles.empty())
        return;
    const SoPickRay ray = action->getObjectRay();
    if (ray.tMin > ray.tMax)
        return;
    const kalmyr::TriangleTree& tree = g.getTriangleTree();
    const auto add = [&](const kalmyr::TriangleTree::Hit& met) {
        addTriangleHit(target, ray, met);
        return true;
    };
    kalmyr::TriangleTree::Hit nearest;
    if (action->isPickAll())
        tree.intersectAll(ray.origin, ray.direction, ray.tMin, ray.tMax, add);
    else if (tree.intersect(ray.origin, ray.direction, ray.tMin, ray.tMax, nearest))
        add(nearest);
}

void pickLinesAndPoints(const Picked& target)
{
    const SoGeometry& g = target.geometry;
    SoPickHit hit;
    for (std::size_t i = 0; i + 1 < g.lines.size(); i += 2) {
        if (!target.action->intersectLine(g.positions[g.lines[i]], g.positions[g.lines[i + 1]],
                                          hit))
            continue;
        if (SoPickedPoint* picked = target.action->addHit(hit))
            target.describe(picked, SoShape::Primitive::LINE, i / 2);
    }
    for (std::size_t i = 0; i < g.points.size(); ++i) {
        if (!target.action->intersectPoint(g.positions[g.points[i]], hit))
            continue;
        if (SoPickedPoint* picked = target.action->addHit(hit))
            target.describe(picked, SoShape::Primitive::POINT, i);
    }
}

void pickShape(SoAction* action, SoNode* node)
{
    auto* pick = static_cast<SoRayPickAction*>(action);
    auto* shape = static_cast<SoShape*>(node);
    SoState* state = action->getState();
    const auto style = state->get<SoPickStyleElement>().value().style;
    if (style == SoPickStyleValue::UNPICKABLE || !pick->hasRay())
        return;
    SbBox3f box;
    SbVec3f center;
    shape->computeBBox(state, box, center);
    if (box.isEmpty() || !pick->mayHit(box))
        return;
    if (style == SoPickStyleValue::BOUNDING_BOX) {
        SoPickHit hit;
        if (pick->intersectBox(box, hit))
            pick->addHit(hit);
        return;
    }
    const SoRef<SoGeometry> geometry = geometryInView(state, shape);
    if (!geometry)
        return;
    const Picked target{pick, shape, *geometry};
    pickTriangles(target);
    pickLinesAndPoints(target);
}

// ---- primitives

SoPrimitiveVertex vertexAt(const SoGeometry& g, std::uint32_t i, std::uint32_t color)
{
    SoPrimitiveVertex v;
    v.point = g.positions[i];
    if (!g.normals.empty())
        v.normal = g.normals[i];
    if (!g.texCoords.empty())
        v.texCoord = g.texCoords[i];
    v.color = g.colors.empty() ? color : g.colors[i];
    return v;
}

void handOut(SoAction* action, SoNode* node)
{
    auto* out = static_cast<SoCallbackAction*>(action);
    const bool triangles = out->wantsTriangles(node);
    const bool lines = out->wantsLines(node);
    const bool points = out->wantsPoints(node);
    if (!triangles && !lines && !points)
        return;
    const SoRef<SoGeometry> held = geometryInView(action->getState(), static_cast<SoShape*>(node));
    if (!held)
        return;
    const SoGeometry& g = *held;
    const SoMaterialValues& material = SoMaterialElement::get(action->getState());
    const std::uint32_t color = material.getDiffuse().getPackedValue(material.getTransparency());
    const auto vertex = [&](std::uint32_t i) { return vertexAt(g, i, color); };
    for (std::size_t i = 0; triangles && i + 2 < g.triangles.size(); i += 3) {
        out->invokeTriangle(node, vertex(g.triangles[i]), vertex(g.triangles[i + 1]),
                            vertex(g.triangles[i + 2]));
    }
    for (std::size_t i = 0; lines && i + 1 < g.lines.size(); i += 2) {
        out->invokeLine(node, vertex(g.lines[i]), vertex(g.lines[i + 1]));
    }
    for (std::size_t i = 0; points && i < g.points.size(); ++i) {
        out->invokePoint(node, vertex(g.points[i]));
    }
}

} // namespace

void kalmyr::detail::addShapeMethods(SoType shapeType)
{
    SoGetBoundingBoxAction::addMethod(shapeType, measureShape);
    SoRayPickAction::addMethod(shapeType, pickShape);
    SoCallbackAction::addMethod(shapeType, handOut);
    SoGetPrimitiveCountAction::addMethod(shapeType, countShape);
}

void kalmyr::detail::addPixelShapeMethods(SoType type)
{
    SoGetBoundingBoxAction::addMethod(type, measurePixelShape);
}
