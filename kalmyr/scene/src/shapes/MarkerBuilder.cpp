#include "MarkerBuilder.h"

#include "AttributeLookup.h"
#include "ShapeActions.h"

#include <kalmyr/actions/SoCallbackAction.h>
#include <kalmyr/actions/SoGetPrimitiveCountAction.h>
#include <kalmyr/actions/SoRayPickAction.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/details/SoPointDetail.h>
#include <kalmyr/elements/SoDrawElements.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/shapes/SoMarkerTable.h>
#include <kalmyr/shapes/SoShape.h>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace kalmyr::detail {

namespace {

/// In pixels from the corner of the pixel that the point is in.
struct Rectangle {
    int left, bottom, right, top;
};

/// Few rectangles that cover the pixels of a marker and nothing else: runs of a row, which equal
/// runs of the next row make higher.
std::vector<Rectangle> coverOf(const SoMarker& marker)
{
    std::vector<Rectangle> done, open;
    const int width = marker.size[0], height = marker.size[1];
    for (int row = 0; row <= height; ++row) {
        std::vector<Rectangle> here;
        for (int x = 0; row < height && x < width; ++x) {
            if (!marker.pixels[static_cast<std::size_t>(row * width + x)])
                continue;
            const int first = x;
            while (x < width && marker.pixels[static_cast<std::size_t>(row * width + x)])
                ++x;
            here.push_back({first, row, x, row + 1});
        }
        for (const Rectangle& below : open) {
            bool goesOn = false;
            for (Rectangle& run : here) {
                if (run.left == below.left && run.right == below.right) {
                    run.bottom = below.bottom;
                    goesOn = true;
                }
            }
            if (!goesOn)
                done.push_back(below);
        }
        open.swap(here);
    }
    for (Rectangle& r : done) {
        r.left -= marker.center[0];
        r.right -= marker.center[0];
        r.bottom -= marker.center[1];
        r.top -= marker.center[1];
    }
    return done;
}

/// The covers of the markers that one shape uses.
class Covers {
public:
    /// Null when there is no such marker.
    const std::vector<Rectangle>* find(int number)
    {
        const auto [found, isNew] = m_known.try_emplace(number);
        SoMarker marker;
        if (isNew && (found->second.exists = SoMarkerTable::get(number, marker)))
            found->second.rectangles = coverOf(marker);
        return found->second.exists ? &found->second.rectangles : nullptr;
    }

private:
    struct Known {
        bool exists = false;
        std::vector<Rectangle> rectangles;
    };
    std::map<int, Known> m_known;
};

void addRectangle(const Rectangle& r, const SbVec3f& position, std::int32_t face,
                  SoGeometry& geometry)
{
    const auto first = static_cast<std::uint32_t>(geometry.positions.size());
    geometry.positions.insert(geometry.positions.end(), 4, position);
    for (const int corner : {0, 1, 2, 3}) {
        geometry.pixelOffsets.emplace_back(
            static_cast<float>(corner == 1 || corner == 2 ? r.right : r.left),
            static_cast<float>(corner >= 2 ? r.top : r.bottom));
    }
    for (const std::uint32_t i : {0u, 1u, 2u, 0u, 2u, 3u})
        geometry.triangles.push_back(first + i);
    geometry.triangleFaces.insert(geometry.triangleFaces.end(), 2, face);
}

void countMarkers(SoAction* action, SoNode* node)
{
    const SoRef<SoGeometry> geometry = static_cast<SoShape*>(node)->getGeometry(action->getState());
    if (geometry)
        static_cast<SoGetPrimitiveCountAction*>(action)->addPoints(
            pointsOfMarkers(*geometry)->points.size());
}

void handOutPoints(SoAction* action, SoNode* node)
{
    auto* out = static_cast<SoCallbackAction*>(action);
    if (!out->wantsPoints(node))
        return;
    const SoRef<SoGeometry> geometry = static_cast<SoShape*>(node)->getGeometry(action->getState());
    if (!geometry)
        return;
    const SoMaterialValues& material = SoMaterialElement::get(action->getState());
    const SoRef<SoGeometry> points = pointsOfMarkers(*geometry);
    for (const std::uint32_t i : points->points) {
        SoPrimitiveVertex vertex;
        vertex.point = points->positions[i];
        vertex.color = points->colors.empty()
                           ? material.getDiffuse().getPackedValue(material.getTransparency())
                           : points->colors[i];
        out->invokePoint(node, vertex);
    }
}

int numberAt(std::span<const std::int32_t> indices, int place)
{
    return static_cast<std::size_t>(place) < indices.size()
               ? indices[static_cast<std::size_t>(place)]
               : -1;
}

/// How many points come before a place in the indices.
int pointsBefore(const MarkerIndices& indices, int place)
{
    const auto before = indices.coord.first(
        std::min(indices.coord.size(), static_cast<std::size_t>(indices.indexed ? place : 0)));
    return place - static_cast<int>(std::count(before.begin(), before.end(), -1));
}

std::unique_ptr<SoPointDetail> detailOf(const MarkerIndices& indices, int place, int binding)
{
    auto detail = std::make_unique<SoPointDetail>();
    detail->setCoordinateIndex(indices.indexed ? numberAt(indices.coord, place)
                                               : indices.start + place);
    const bool isGiven =
        !indices.material.empty() && !(indices.material.size() == 1 && indices.material[0] < 0);
    if (binding == SoBinding::OVERALL)
        detail->setMaterialIndex(0);
    else if (!indices.indexed || binding == SoBinding::PER_PART || binding == SoBinding::PER_FACE
             || binding == SoBinding::PER_VERTEX)
        detail->setMaterialIndex(pointsBefore(indices, place));
    else if (binding == SoBinding::PER_VERTEX_INDEXED)
        detail->setMaterialIndex(numberAt(isGiven ? indices.material : indices.coord, place));
    else
        detail->setMaterialIndex(isGiven ? numberAt(indices.material, pointsBefore(indices, place))
                                         : detail->getCoordinateIndex());
    return detail;
}

} // namespace

void buildMarkers(const VertexInput& input, std::span<const std::int32_t> markers,
                  SoGeometry& geometry)
{
    AttributeLookup colors(input.colors, input.coordIndex);
    Fault fault;
    Covers covers;
    std::uint32_t number = 0;
    bool isTooMuch = false;
    for (std::size_t i = 0; i < input.coordIndex.size() && !isTooMuch; ++i) {
        const std::int32_t index = input.coordIndex[i];
        if (index == -1)
            continue;
        const std::uint32_t n = number++;
        if (index < 0 || static_cast<std::size_t>(index) >= input.positions.size()) {
            fault.record(input.coordField, index, input.positions.size(), i);
            continue;
        }
        const Place place{static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(i) - n, n, n};
        const std::int64_t color = colors.isGiven() ? colors.at(place, fault) : 0;
        const std::size_t which = std::min<std::size_t>(n, markers.size() - 1);
        const std::int32_t marker = markers.empty() ? 0 : markers[which];
        if (color < 0 || marker == SoMarkerTable::kNone)
            continue;
        const std::vector<Rectangle>* cover = covers.find(marker);
        if (!cover) {
            fault.record("markerIndex", marker, static_cast<std::size_t>(SoMarkerTable::getNum()),
                         which);
            continue;
        }
        isTooMuch = geometry.getNumTriangles() / 2 + cover->size() > kMaxMarkerRectangles;
        if (isTooMuch)
            break;
        for (const Rectangle& r : *cover)
            addRectangle(r, input.positions[static_cast<std::size_t>(index)],
                         static_cast<std::int32_t>(i), geometry);
        if (colors.isGiven())
            geometry.colors.resize(geometry.positions.size(),
                                   input.colors.values[static_cast<std::size_t>(color)]);
    }
    warnOf(fault, input.node);
    if (isTooMuch)
        SoDebugError::postWarning("MarkerSet", "more than %zu rectangles; the rest is left out",
                                  kMaxMarkerRectangles);
    geometry.solid = false;
}

SoRef<SoGeometry> pointsOfMarkers(const SoGeometry& markers)
{
    SoRef<SoGeometry> points(new SoGeometry);
    std::int32_t last = -1;
    for (std::size_t t = 0; t < markers.getNumTriangles(); ++t) {
        const std::int32_t face = markers.triangleFaces[t];
        if (face == last)
            continue;
        last = face;
        const std::uint32_t from = markers.triangles[3 * t];
        points->points.push_back(static_cast<std::uint32_t>(points->positions.size()));
        points->positions.push_back(markers.positions[from]);
        if (!markers.colors.empty())
            points->colors.push_back(markers.colors[from]);
    }
    return points;
}

/// One by one: where the pixels are is known for one view only, so no search tree lasts.
void pickMarkers(SoAction* action, SoNode* node, const MarkerIndices& indices)
{
    auto* pick = static_cast<SoRayPickAction*>(action);
    auto* shape = static_cast<SoShape*>(node);
    SoState* state = action->getState();
    const auto style = state->get<SoPickStyleElement>().value().style;
    const SoRef<SoGeometry> all = shape->getGeometry(state);
    if (style == SoPickStyleValue::UNPICKABLE || !all || !pick->hasRay())
        return;
    const SoRef<SoGeometry> seen =
        all->inView(SoModelMatrixElement::get(state), SoViewElement::get(state),
                    SoViewportRegionElement::get(state));
    if (!seen || seen->isEmpty())
        return;
    SoPickHit hit;
    if (style == SoPickStyleValue::BOUNDING_BOX) {
        if (pick->intersectBox(seen->getBox(), hit))
            pick->addHit(hit);
        return;
    }
    const int binding = SoMaterialBindingElement::get(state);
    std::int32_t met = -1;
    for (std::size_t t = 0; t < seen->getNumTriangles(); ++t) {
        const std::uint32_t* corner = &seen->triangles[3 * t];
        const auto& p = seen->positions;
        // A marker is met once.
        if (seen->triangleFaces[t] == met
            || !pick->intersectTriangle(p[corner[0]], p[corner[1]], p[corner[2]], hit))
            continue;
        met = seen->triangleFaces[t];
        if (SoPickedPoint* picked = pick->addHit(hit))
            picked->setDetail(detailOf(indices, met, binding));
    }
}

void addMarkerMethods(SoType type)
{
    addPixelShapeMethods(type);
    SoGetPrimitiveCountAction::addMethod(type, countMarkers);
    SoCallbackAction::addMethod(type, handOutPoints);
}

} // namespace kalmyr::detail
