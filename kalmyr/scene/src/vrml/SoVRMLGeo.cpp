#include <kalmyr/vrml/SoVRMLGeo.h>

#include "GeoFrame.h"
#include "GeometryInput.h"

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/shapes/ShapeSource.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "core/CacheLock.h"

#include <algorithm>
#include <cmath>

using namespace kalmyr::detail;

namespace {

template <class To, class From>
void forwardEvent(SoFieldSensor& sensor, From& event, void (*function)(void*, SoSensor*), To* self)
{
    sensor.setFunction(function);
    sensor.setData(self);
    sensor.setPriority(0);
    sensor.attach(&event);
}

bool readNumber(const SbString& text, double& number)
{
    SbVec3d three;
    const bool isNumber = readPlace(text.toStdString() + " 0 0", three);
    number = three[0];
    return isNumber;
}

} // namespace

// ---- origin and coordinates

SO_NODE_SOURCE(SoVRMLGeoOrigin)

SoVRMLGeoOrigin::SoVRMLGeoOrigin()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_EXPOSED(geoCoords, (""));
    SO_VRML_FIELD(rotateYUp, (false));
}

SoVRMLGeoOrigin::~SoVRMLGeoOrigin() = default;

void SoVRMLGeoOrigin::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoOrigin, SoNode, "VRMLGeoOrigin");
}

SO_NODE_SOURCE(SoVRMLGeoCoordinate)

SoVRMLGeoCoordinate::SoVRMLGeoCoordinate()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_EMPTY_FIELD(point);
}

SoVRMLGeoCoordinate::~SoVRMLGeoCoordinate() = default;

void SoVRMLGeoCoordinate::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoCoordinate, SoNode, "VRMLGeoCoordinate");
}

std::span<const SbVec3f> SoVRMLGeoCoordinate::getPoints() const
{
    std::string fault;
    {
        const CacheLock lock;
        if (m_builtFrom == getNodeId())
            return m_points;
        GeoFrame frame = frameOf(geoSystem, geoOrigin);
        m_points.clear();
        SbVec3d local;
        for (const SbString& text : point.values()) {
            if (!frame.toLocal(text, local))
                break;
            m_points.emplace_back(local);
        }
        if (!frame.fault.empty())
            m_points.clear();
        fault = frame.fault;
        m_builtFrom = getNodeId();
    }
    // Without the lock: a handler may do anything.
    if (!fault.empty())
        warnOfGeo(this, fault);
    return m_points;
}

// ---- heights

SO_NODE_SOURCE(SoVRMLGeoElevationGrid)

SoVRMLGeoElevationGrid::SoVRMLGeoElevationGrid()
{
    SO_NODE_CONSTRUCTOR(SoVRMLGeometry);
    SO_VRML_EVENT_IN(set_height);
    SO_VRML_EVENT_IN(set_yScale);
    SO_VRML_EXPOSED_EMPTY(color);
    SO_VRML_EXPOSED_EMPTY(normal);
    SO_VRML_EXPOSED_EMPTY(texCoord);
    SO_VRML_FIELD(yScale, (1.0f));
    SO_VRML_FIELD(ccw, (true));
    SO_VRML_FIELD(colorPerVertex, (true));
    SO_VRML_FIELD(creaseAngle, (0.0f));
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_FIELD(geoGridOrigin, ("0 0 0"));
    SO_VRML_EMPTY_FIELD(height);
    SO_VRML_FIELD(normalPerVertex, (true));
    SO_VRML_FIELD(solid, (true));
    SO_VRML_FIELD(xDimension, (0));
    SO_VRML_FIELD(xSpacing, ("1.0"));
    SO_VRML_FIELD(zDimension, (0));
    SO_VRML_FIELD(zSpacing, ("1.0"));
    forwardEvent<SoVRMLGeoElevationGrid>(
        m_heightSensor, set_height,
        [](void* self, SoSensor*) {
            auto* grid = static_cast<SoVRMLGeoElevationGrid*>(self);
            grid->height = grid->set_height;
        },
        this);
    forwardEvent<SoVRMLGeoElevationGrid>(
        m_scaleSensor, set_yScale,
        [](void* self, SoSensor*) {
            auto* grid = static_cast<SoVRMLGeoElevationGrid*>(self);
            grid->yScale = grid->set_yScale.getValue();
        },
        this);
}

SoVRMLGeoElevationGrid::~SoVRMLGeoElevationGrid()
{
    m_heightSensor.detach();
    m_scaleSensor.detach();
}

void SoVRMLGeoElevationGrid::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoElevationGrid, SoVRMLGeometry, "VRMLGeoElevationGrid");
}

std::uint64_t SoVRMLGeoElevationGrid::stateKey(SoState* state) const
{
    return lookKey(state, color);
}

std::string SoVRMLGeoElevationGrid::fillGrid(kalmyr::ShapeSource& source) const
{
    const int nx = xDimension.getValue(), nz = zDimension.getValue();
    GeoFrame frame = frameOf(geoSystem, geoOrigin);
    SbVec3d corner;
    double east = 0, north = 0;
    if (frame.fault.empty() && frame.system.getFrame() == GeoSystem::GC)
        frame.fault = "a grid needs GD or UTM";
    if (frame.fault.empty()
        && (!readPlace(geoGridOrigin.getValue().toStdString(), corner)
            || !readNumber(xSpacing.getValue(), east) || !readNumber(zSpacing.getValue(), north)))
        frame.fault = "geoGridOrigin, xSpacing and zSpacing are not all numbers";
    for (int z = 0; z < nz && frame.fault.empty(); ++z) {
        for (int x = 0; x < nx && frame.fault.empty(); ++x) {
            const std::int32_t at = z * nx + x;
            const double up = static_cast<double>(height[at]) * yScale.getValue();
            SbVec3d local;
            frame.toLocal(frame.system.stepped(corner, x * east, z * north, up), local);
            source.positions.emplace_back(local);
            source.texCoords.emplace_back(static_cast<float>(x) / static_cast<float>(nx - 1),
                                          static_cast<float>(z) / static_cast<float>(nz - 1));
            if (x + 1 < nx && z + 1 < nz)
                source.coordIndex.insert(source.coordIndex.end(),
                                         {at, at + 1, at + nx + 1, at + nx, -1});
        }
    }
    source.input.positions = source.positions;
    source.input.coordIndex = source.coordIndex;
    return frame.fault;
}

void SoVRMLGeoElevationGrid::fillSource(SoState* state, kalmyr::ShapeSource& source) const
{
    const int nx = xDimension.getValue(), nz = zDimension.getValue();
    if (nx < 2 || nz < 2)
        return;
    std::string fault;
    if (height.getNum() / nx < nz)
        fault = "height has " + std::to_string(height.getNum()) + " values, a grid of "
                + std::to_string(nx) + " by " + std::to_string(nz) + " needs more";
    else if (source.wantsLists())
        fault = fillGrid(source);
    if (!fault.empty())
        return warnOfGeo(this, fault);
    source.kind = kalmyr::ShapeSource::FACES;
    fillGridAttributes(*this, state, source);
    source.input.convex = false;
}

// ---- location

SO_NODE_SOURCE(SoVRMLGeoLocation)

SoVRMLGeoLocation::SoVRMLGeoLocation()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_FIELD(geoCoords, (""));
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
}

SoVRMLGeoLocation::~SoVRMLGeoLocation() = default;

void SoVRMLGeoLocation::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoLocation, SoVRMLParent, "VRMLGeoLocation");
}

bool SoVRMLGeoLocation::getLocalMatrix(SbMatrix& matrix) const
{
    std::string fault;
    bool isKnown = false;
    {
        const CacheLock lock;
        if (m_builtFrom != getNodeId()) {
            m_builtFrom = getNodeId();
            m_matrix = SbMatrix::identity();
            GeoFrame frame = frameOf(geoSystem, geoOrigin);
            SbVec3d given, local;
            const bool isGiven = !geoCoords.getValue().isEmpty();
            m_isKnown = isGiven && frame.toLocal(geoCoords.getValue(), local)
                        && readPlace(geoCoords.getValue().toStdString(), given);
            if (isGiven)
                fault = frame.fault;
            if (m_isKnown) {
                m_matrix = axesAt(frame.system.toCentre(given)) * frame.turn;
                for (int c = 0; c < 3; ++c)
                    m_matrix[3][c] = static_cast<float>(local[c]);
            }
        }
        matrix = m_matrix;
        isKnown = m_isKnown;
    }
    if (!fault.empty())
        warnOfGeo(this, fault);
    return isKnown;
}

void SoVRMLGeoLocation::setState(SoState* state)
{
    SbMatrix matrix;
    if (getLocalMatrix(matrix))
        SoModelMatrixElement::mult(state, this, matrix);
}

// ---- what is kept

SO_NODE_SOURCE(SoVRMLGeoMetadata)

SoVRMLGeoMetadata::SoVRMLGeoMetadata()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(data);
    SO_VRML_EXPOSED_EMPTY(summary);
    SO_VRML_EXPOSED_EMPTY(url);
}

SoVRMLGeoMetadata::~SoVRMLGeoMetadata() = default;

void SoVRMLGeoMetadata::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoMetadata, SoNode, "VRMLGeoMetadata");
}

// ---- motion and touch

SO_NODE_SOURCE(SoVRMLGeoPositionInterpolator)

SoVRMLGeoPositionInterpolator::SoVRMLGeoPositionInterpolator()
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EVENT_IN(set_fraction);
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_EMPTY_FIELD(key);
    SO_VRML_EMPTY_FIELD(keyValue);
    SO_VRML_EVENT_OUT(geovalue_changed);
    SO_VRML_EVENT_OUT(value_changed);
    forwardEvent<SoVRMLGeoPositionInterpolator>(
        m_sensor, set_fraction,
        [](void* self, SoSensor*) { static_cast<SoVRMLGeoPositionInterpolator*>(self)->follow(); },
        this);
}

SoVRMLGeoPositionInterpolator::~SoVRMLGeoPositionInterpolator()
{
    m_sensor.detach();
}

void SoVRMLGeoPositionInterpolator::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoPositionInterpolator, SoNode, "VRMLGeoPositionInterpolator");
}

void SoVRMLGeoPositionInterpolator::follow()
{
    const auto keys = key.values();
    const auto count = static_cast<std::ptrdiff_t>(
        std::min(keys.size(), static_cast<std::size_t>(keyValue.getNum())));
    if (count == 0 || !m_cascade.mayReact())
        return;
    const float fraction = set_fraction.getValue();
    const auto above = std::upper_bound(keys.begin(), keys.begin() + count, fraction);
    const auto after =
        static_cast<int>(std::min(above - keys.begin(), static_cast<std::ptrdiff_t>(count - 1)));
    const int before = std::max(after - (above == keys.begin() + count ? 0 : 1), 0);
    const float gap =
        keys[static_cast<std::size_t>(after)] - keys[static_cast<std::size_t>(before)];
    const double t = gap > 0 ? (fraction - keys[static_cast<std::size_t>(before)]) / gap : 0;
    GeoFrame frame = frameOf(geoSystem, geoOrigin);
    SbVec3d from, to, local;
    if (frame.fault.empty()
        && (!readPlace(keyValue[before].toStdString(), from)
            || !readPlace(keyValue[after].toStdString(), to)))
        frame.fault = "a key value is not three numbers";
    const SbVec3d place = from + (to - from) * t;
    if (!frame.fault.empty() || !frame.toLocal(place, local))
        return warnOfGeo(this, frame.fault);
    geovalue_changed = SbString(placeText(place));
    value_changed = SbVec3f(local);
}

SO_NODE_SOURCE(SoVRMLGeoTouchSensor)

SoVRMLGeoTouchSensor::SoVRMLGeoTouchSensor()
{
    SO_NODE_CONSTRUCTOR(SoVRMLTouchSensor);
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_EVENT_OUT(hitGeoCoord_changed);
}

SoVRMLGeoTouchSensor::~SoVRMLGeoTouchSensor() = default;

void SoVRMLGeoTouchSensor::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoTouchSensor, SoVRMLTouchSensor, "VRMLGeoTouchSensor");
}

void SoVRMLGeoTouchSensor::hover(const Pointer& pointer)
{
    SoVRMLTouchSensor::hover(pointer);
    if (!pointer.isOver)
        return;
    const GeoFrame frame = frameOf(geoSystem, geoOrigin);
    if (!frame.fault.empty())
        return warnOfGeo(this, frame.fault);
    hitGeoCoord_changed = SbString(placeText(frame.fromLocal(SbVec3d(pointer.hit.point))));
}

// ---- viewpoint

SO_NODE_SOURCE(SoVRMLGeoViewpoint)

SoVRMLGeoViewpoint::SoVRMLGeoViewpoint()
{
    SO_NODE_CONSTRUCTOR(SoVRMLBindable);
    SO_VRML_EVENT_IN(set_orientation);
    SO_VRML_EVENT_IN(set_position);
    SO_VRML_EXPOSED(fieldOfView, (0.785398f));
    SO_VRML_EXPOSED(headlight, (true));
    SO_VRML_EXPOSED(jump, (true));
    SO_VRML_EXPOSED_EMPTY(navType);
    navType.initValues({SbString("EXAMINE"), SbString("ANY")});
    SO_VRML_FIELD(description, (""));
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_FIELD(orientation, (SbRotation()));
    SO_VRML_FIELD(position, ("0 0 100000"));
    SO_VRML_FIELD(speedFactor, (1.0f));
    SO_VRML_EVENT_OUT(bindTime);
    forwardEvent<SoVRMLGeoViewpoint>(
        m_positionSensor, set_position,
        [](void* self, SoSensor*) {
            auto* view = static_cast<SoVRMLGeoViewpoint*>(self);
            view->position = view->set_position.getValue();
        },
        this);
    forwardEvent<SoVRMLGeoViewpoint>(
        m_orientationSensor, set_orientation,
        [](void* self, SoSensor*) {
            auto* view = static_cast<SoVRMLGeoViewpoint*>(self);
            view->orientation = view->set_orientation.getValue();
        },
        this);
}

SoVRMLGeoViewpoint::~SoVRMLGeoViewpoint()
{
    m_positionSensor.detach();
    m_orientationSensor.detach();
}

void SoVRMLGeoViewpoint::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoViewpoint, SoVRMLBindable, "VRMLGeoViewpoint");
}

void SoVRMLGeoViewpoint::boundChanged(SbTime now)
{
    bindTime = now;
}

bool SoVRMLGeoViewpoint::getView(SbVec3f& place, SbRotation& turn) const
{
    GeoFrame frame = frameOf(geoSystem, geoOrigin);
    SbVec3d given, local;
    if (!frame.toLocal(position.getValue(), local)) {
        warnOfGeo(this, frame.fault);
        return false;
    }
    readPlace(position.getValue().toStdString(), given);
    place = SbVec3f(local);
    turn = orientation.getValue() * SbRotation(axesAt(frame.system.toCentre(given)) * frame.turn);
    return true;
}

// ---- inline

SO_NODE_SOURCE(SoVRMLInlineLoadControl)

SoVRMLInlineLoadControl::SoVRMLInlineLoadControl()
{
    SO_NODE_CONSTRUCTOR(SoVRMLInline);
    SO_VRML_EXPOSED(load, (true));
    SO_VRML_EVENT_OUT(children);
    forwardEvent<SoVRMLInlineLoadControl>(
        m_sensor, load,
        [](void* self, SoSensor*) { static_cast<SoVRMLInlineLoadControl*>(self)->follow(); }, this);
}

SoVRMLInlineLoadControl::~SoVRMLInlineLoadControl()
{
    m_sensor.detach();
}

void SoVRMLInlineLoadControl::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLInlineLoadControl, SoVRMLInline, "VRMLInlineLoadControl");
}

void SoVRMLInlineLoadControl::follow()
{
    if (load.getValue() && !getChildData() && url.getNum() > 0)
        requestChildrenFromURL();
    else if (!load.getValue() && getChildData())
        setChildData(nullptr);
    children.setNum(0);
    if (SoNode* content = getChildData())
        children.set1Value(0, content);
}
