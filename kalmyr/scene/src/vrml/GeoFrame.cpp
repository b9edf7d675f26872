#include "GeoFrame.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLProto.h>

#include <cmath>

namespace kalmyr::detail {

namespace {

SbVec3d turned(const SbVec3d& p, const SbMatrix& by)
{
    SbVec3d out;
    for (int c = 0; c < 3; ++c)
        out[c] = p[0] * by[0][c] + p[1] * by[1][c] + p[2] * by[2][c];
    return out;
}

} // namespace

bool GeoFrame::toLocal(const SbVec3d& given, SbVec3d& local)
{
    const SbVec3d place = system.toCentre(given);
    local = turned(place - origin, turn);
    if (!std::isfinite(local[0] + local[1] + local[2]) && fault.empty())
        fault = "'" + placeText(given) + "' is no place on the earth";
    return fault.empty();
}

bool GeoFrame::toLocal(const SbString& text, SbVec3d& local)
{
    SbVec3d given;
    if (!readPlace(text.toStdString(), given) && fault.empty())
        fault = "'" + text.toStdString() + "' is not three numbers";
    return fault.empty() && toLocal(given, local);
}

SbVec3d GeoFrame::fromLocal(const SbVec3d& local) const
{
    SbMatrix back = turn;
    for (int row = 0; row < 3; ++row) {
        for (int c = 0; c < 3; ++c)
            back[row][c] = turn[c][row];
    }
    return system.fromCentre(turned(local, back) + origin);
}

GeoFrame frameOf(const SoMFString& words, const SoSFNode& originField)
{
    GeoFrame frame;
    frame.fault = frame.system.set(words.values());
    const SoNode* node =
        originField.isIgnored() ? nullptr : SoVRMLProtoInstance::resolve(originField.getValue());
    if (!node || !node->isOfType(SoVRMLGeoOrigin::getClassTypeId()))
        return frame;
    const auto* origin = static_cast<const SoVRMLGeoOrigin*>(node);
    GeoSystem system;
    std::string fault = system.set(origin->geoSystem.values());
    SbVec3d given;
    if (fault.empty() && !readPlace(origin->geoCoords.getValue().toStdString(), given))
        fault = "'" + origin->geoCoords.getValue().toStdString() + "' is not three numbers";
    if (fault.empty()) {
        frame.origin = system.toCentre(given);
        if (!std::isfinite(frame.origin[0]))
            fault = "'" + origin->geoCoords.getValue().toStdString() + "' is no place on the earth";
    }
    if (fault.empty() && origin->rotateYUp.getValue()) {
        const SbMatrix axes = axesAt(frame.origin);
        for (int row = 0; row < 3; ++row) {
            for (int c = 0; c < 3; ++c)
                frame.turn[row][c] = axes[c][row];
        }
    }
    if (!fault.empty() && frame.fault.empty())
        frame.fault = "geoOrigin: " + fault;
    return frame;
}

void warnOfGeo(const SoNode* node, const std::string& fault)
{
    SoDebugError::postWarning(node->getTypeId().getName().getString(), "\"%s\": %s",
                              node->getName().getString(), fault.c_str());
}

} // namespace kalmyr::detail
