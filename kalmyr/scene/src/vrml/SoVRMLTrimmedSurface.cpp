#include <kalmyr/vrml/SoVRMLTrimmedSurface.h>

#include "NurbsInput.h"

#include <kalmyr/elements/SoDrawElements.h>

#include "shapes/NurbsBuilder.h"

#include <algorithm>
#include <cmath>

using namespace kalmyr::detail;

namespace kalmyr::detail {

ListEvents::ListEvents(SoMFNode& list, SoMFNode& add, SoMFNode& remove)
    : m_list(list),
      m_add(add),
      m_remove(remove),
      m_addSensor(
          [](void* self, SoSensor*) {
              auto* events = static_cast<ListEvents*>(self);
              events->take(events->m_add, true);
          },
          this),
      m_removeSensor(
          [](void* self, SoSensor*) {
              auto* events = static_cast<ListEvents*>(self);
              events->take(events->m_remove, false);
          },
          this)
{
    m_addSensor.setPriority(0);
    m_addSensor.attach(&add);
    m_removeSensor.setPriority(0);
    m_removeSensor.attach(&remove);
}

ListEvents::~ListEvents()
{
    m_addSensor.detach();
    m_removeSensor.detach();
}

void ListEvents::take(SoMFNode& event, bool adds)
{
    const std::vector<SoNode*> nodes = event.getValues();
    if (nodes.empty())
        return;
    const std::vector<SoRef<SoNode>> held(nodes.begin(), nodes.end());
    // An event leaves nothing behind.
    const bool told = event.enableNotify(false);
    event.setNum(0);
    event.setDefault(true);
    event.enableNotify(told);
    for (SoNode* node : nodes) {
        const std::vector<SoNode*> known = m_list.getValues();
        const auto found = std::find(known.begin(), known.end(), node);
        if (adds && node && found == known.end())
            m_list.set1Value(m_list.getNum(), node);
        else if (!adds && found != known.end())
            m_list.deleteValues(static_cast<int>(found - known.begin()), 1);
    }
}

} // namespace kalmyr::detail

SO_NODE_SOURCE(SoVRMLTrimmedSurface)

SoVRMLTrimmedSurface::SoVRMLTrimmedSurface()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EVENT_IN(addTrimmingContour);
    SO_VRML_EVENT_IN(removeTrimmingContour);
    SO_VRML_EXPOSED_EMPTY(trimmingContour);
    SO_VRML_EXPOSED_EMPTY(surface);
}

SoVRMLTrimmedSurface::~SoVRMLTrimmedSurface() = default;

void SoVRMLTrimmedSurface::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLTrimmedSurface, SoVRMLGeometry, "VRMLTrimmedSurface");
}

std::uint64_t SoVRMLTrimmedSurface::stateKey(SoState* state) const
{
    return nurbsShapeKey(state);
}

void SoVRMLTrimmedSurface::buildGeometry(SoState* state, SoGeometry& geometry)
{
    const auto* whole = nodeAs<SoVRMLNurbsSurface>(surface);
    if (!whole || whole->controlPoint.getNum() == 0)
        return; // nothing given yet
    NurbsSurfaceInput input;
    NurbsSurface texture;
    input.node = this;
    std::string fault = whole->fill(state, input, texture);
    std::vector<SoProfilePiece> pieces;
    for (SoNode* node : trimmingContour.getValues()) {
        const auto* contour = nodeAs<SoVRMLContour2D>(node);
        auto line = std::make_shared<std::vector<SbVec2d>>();
        if (contour && fault.empty())
            fault = contour->addLine(SoComplexityElement::get(state), *line);
        pieces.push_back({line, true});
    }
    if (!fault.empty())
        return warnOfNurbs(this, fault);
    input.outlines = outlinesOf(pieces);
    buildNurbsSurface(input, geometry);
}

SO_NODE_SOURCE(SoVRMLContour2D)

SoVRMLContour2D::SoVRMLContour2D()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(addChildren);
    SO_VRML_EVENT_IN(removeChildren);
    SO_VRML_EXPOSED_EMPTY(children);
}

SoVRMLContour2D::~SoVRMLContour2D() = default;

void SoVRMLContour2D::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLContour2D, SoNode, "VRMLContour2D");
}

std::string SoVRMLContour2D::addLine(float complexity, std::vector<SbVec2d>& line) const
{
    for (SoNode* child : children.getValues()) {
        if (const auto* polyline = nodeAs<SoVRMLPolyline2D>(child)) {
            for (const SbVec2f& p : polyline->point.values()) {
                if (!std::isfinite(p[0] + p[1]))
                    return "a contour has a point that is not finite";
                line.emplace_back(p);
            }
            continue;
        }
        const auto* given = nodeAs<SoVRMLNurbsCurve2D>(child);
        if (!given || given->controlPoint.getNum() == 0)
            continue;
        NurbsCurve curve;
        std::string fault =
            fillPoints(curve.points, given->controlPoint.values(), given->weight.values(),
                       static_cast<std::size_t>(given->controlPoint.getNum()));
        const std::vector<float> even =
            evenKnots(given->controlPoint.getNum(), given->order.getValue());
        const std::span<const float> knots =
            given->knot.getNum() > 0 ? given->knot.values() : std::span<const float>(even);
        if (fault.empty())
            fault = makeProfileLine(std::move(curve), knots, complexity, line);
        if (!fault.empty())
            return "contour: " + fault;
    }
    return {};
}

SO_NODE_SOURCE(SoVRMLNurbsCurve2D)

SoVRMLNurbsCurve2D::SoVRMLNurbsCurve2D()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED(tessellation, (0));
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_EMPTY_FIELD(knot);
    SO_VRML_FIELD(order, (3));
}

SoVRMLNurbsCurve2D::~SoVRMLNurbsCurve2D() = default;

void SoVRMLNurbsCurve2D::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLNurbsCurve2D, SoNode, "VRMLNurbsCurve2D");
}

SO_NODE_SOURCE(SoVRMLPolyline2D)

SoVRMLPolyline2D::SoVRMLPolyline2D()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(point);
}

SoVRMLPolyline2D::~SoVRMLPolyline2D() = default;

void SoVRMLPolyline2D::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLPolyline2D, SoNode, "VRMLPolyline2D");
}
