#include "GeoFrame.h"

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/elements/SoViewElements.h>
#include <kalmyr/vrml/SoVRMLGeo.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

#include "nodes/LevelDistance.h"

using namespace kalmyr::detail;

SO_NODE_SOURCE(SoVRMLGeoLOD)

SoVRMLGeoLOD::SoVRMLGeoLOD() : m_files(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_FIELD(center, (""));
    SO_VRML_EMPTY_FIELD(child1Url);
    SO_VRML_EMPTY_FIELD(child2Url);
    SO_VRML_EMPTY_FIELD(child3Url);
    SO_VRML_EMPTY_FIELD(child4Url);
    SO_VRML_EMPTY_FIELD(geoOrigin);
    SO_VRML_EMPTY_FIELD(geoSystem);
    geoSystem.initValues({SbString("GD"), SbString("WE")});
    SO_VRML_FIELD(range, (10.0f));
    SO_VRML_EMPTY_FIELD(rootUrl);
    SO_VRML_EMPTY_FIELD(rootNode);
    SO_VRML_EVENT_OUT(children);
}

SoVRMLGeoLOD::~SoVRMLGeoLOD() = default;

void SoVRMLGeoLOD::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLGeoLOD, SoNode, "VRMLGeoLOD");
    SoGLRenderAction::addViewDependentType(getClassTypeId());
    // All that is there counts, so that the box does not change with the camera; a box is no reason
    // to read a file.
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), [](SoAction* action, SoNode* node) {
        auto* self = static_cast<SoVRMLGeoLOD*>(node);
        action->getState()->push();
        self->traverseRoot(action);
        for (int i = self->m_hasRootFile ? 1 : 0; i < self->m_files.getLength(); ++i)
            if (static_cast<SoVRMLInline*>(self->m_files[i])->getChildData())
                action->traverse(self->m_files[i], i);
        action->getState()->pop();
    });
}

void SoVRMLGeoLOD::makeFiles()
{
    m_files.truncate();
    m_hasRootFile = rootNode.getNum() == 0 && rootUrl.getNum() > 0;
    if (m_hasRootFile)
        addFile(rootUrl);
    for (const SoMFString* url : {&child1Url, &child2Url, &child3Url, &child4Url})
        if (url->getNum() > 0)
            addFile(*url);
}

void SoVRMLGeoLOD::addFile(const SoMFString& url)
{
    auto* file = new SoVRMLInline;
    file->url.copyFrom(url);
    m_files.append(file);
}

bool SoVRMLGeoLOD::isNear(SoState* state) const
{
    const int numChildren = m_files.getLength() - (m_hasRootFile ? 1 : 0);
    if (numChildren == 0 || !SoViewElement::get(state).valid)
        return false;
    GeoFrame frame = frameOf(geoSystem, geoOrigin);
    SbVec3d place;
    return frame.toLocal(center.getValue(), place)
           && eyeDistance(state, SbVec3f(place)) < range.getValue();
}

void SoVRMLGeoLOD::traverseRoot(SoAction* action)
{
    if (m_hasRootFile)
        action->traverse(m_files[0], 0);
    if (rootNode.isIgnored())
        return;
    for (SoNode* node : rootNode.getValues())
        if (node)
            action->traverse(node, -1);
}

void SoVRMLGeoLOD::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    int next = -1;
    const bool isPathHere = action->isOnPath(next) && next >= 0;
    if (isPathHere ? next >= (m_hasRootFile ? 1 : 0) : isNear(state)) {
        for (int i = m_hasRootFile ? 1 : 0; i < m_files.getLength(); ++i)
            action->traverse(m_files[i], i);
    } else {
        traverseRoot(action);
    }
    state->pop();
}

void SoVRMLGeoLOD::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    const auto* source = static_cast<const SoVRMLGeoLOD*>(from);
    m_hasRootFile = source->m_hasRootFile;
    for (SoNode* file : source->m_files.getNodes())
        m_files.append(copier.copyOf(file));
}
