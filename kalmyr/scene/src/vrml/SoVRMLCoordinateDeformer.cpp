#include <kalmyr/vrml/SoVRMLCoordinateDeformer.h>

#include "NurbsInput.h"

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/vrml/SoVRMLCoordinate.h>
#include <kalmyr/vrml/SoVRMLTransform.h>

#include <algorithm>

using namespace kalmyr::detail;

SO_NODE_SOURCE(SoVRMLCoordinateDeformer)

SoVRMLCoordinateDeformer::SoVRMLCoordinateDeformer()
{
    SO_NODE_CONSTRUCTOR(SoVRMLParent);
    SO_VRML_EXPOSED_EMPTY(controlPoint);
    SO_VRML_EXPOSED_EMPTY(inputCoord);
    SO_VRML_EXPOSED_EMPTY(inputTransform);
    SO_VRML_EXPOSED_EMPTY(outputCoord);
    SO_VRML_EXPOSED_EMPTY(weight);
    SO_VRML_NET_FIELDS(2);
    SO_VRML_FIELD(wDimension, (0));
    SO_VRML_EMPTY_FIELD(wKnot);
    SO_VRML_FIELD(wOrder, (2));
    SoField* const watched[] = {&controlPoint, &weight, &inputCoord, &inputTransform};
    for (std::size_t i = 0; i < 4; ++i) {
        m_sensors[i].setFunction([](void* self, SoSensor*) {
            auto* node = static_cast<SoVRMLCoordinateDeformer*>(self);
            // While a file is read, or a lattice is set up, not all is there.
            if (node->outputCoord.getNum() > 0 && node->inputCoord.getNum() > 0
                && node->uDimension.getValue() > 0 && node->wDimension.getValue() > 0)
                node->deform();
        });
        m_sensors[i].setData(this);
        m_sensors[i].setPriority(0);
        m_sensors[i].attach(watched[i]);
    }
}

SoVRMLCoordinateDeformer::~SoVRMLCoordinateDeformer()
{
    for (SoFieldSensor& sensor : m_sensors)
        sensor.detach();
}

void SoVRMLCoordinateDeformer::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLCoordinateDeformer, SoVRMLParent, "VRMLCoordinateDeformer");
}

bool SoVRMLCoordinateDeformer::deform()
{
    if (m_isBusy)
        return true; // what comes of its own output
    if (controlPoint.getNum() == 0)
        return false; // nothing given yet
    NurbsSurface net;
    NurbsKnots w;
    const int numW = wDimension.getValue();
    std::string fault = setKnots(w, wKnot.values(), numW, wOrder.getValue(), controlPoint.getNum());
    if (fault.empty())
        fault = fillNet(*this, controlPoint.values(), weight.values(), net, numW);
    if (!fault.empty()) {
        SoDebugError::postWarning("CoordinateDeformer", "\"%s\": %s", getName().getString(),
                                  fault.c_str());
        return false;
    }
    m_isBusy = true;
    for (int i = 0; i < std::min(inputCoord.getNum(), outputCoord.getNum()); ++i) {
        const auto* from = nodeAs<SoVRMLCoordinate>(inputCoord[i]);
        auto* to = nodeAs<SoVRMLCoordinate>(outputCoord[i]);
        if (!from || !to || from == to)
            continue;
        const auto* carry =
            i < inputTransform.getNum() ? nodeAs<SoVRMLTransform>(inputTransform[i]) : nullptr;
        const SbMatrix matrix = carry ? carry->getLocalMatrix() : SbMatrix::identity();
        std::vector<SbVec3f> bent;
        bent.reserve(static_cast<std::size_t>(from->point.getNum()));
        for (const SbVec3f& p : from->point.values())
            bent.push_back(volumePoint(net.u, net.v, w, net.points, matrix.point(p)));
        to->point.setNumQuietly(static_cast<int>(bent.size()));
        std::copy(bent.begin(), bent.end(), to->point.startEditing());
        to->point.finishEditing();
    }
    m_isBusy = false;
    return true;
}
