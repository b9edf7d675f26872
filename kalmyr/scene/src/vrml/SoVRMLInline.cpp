#include <kalmyr/vrml/SoVRMLInline.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/vrml/SoVRMLMacros.h>

namespace {

SoVRMLInline::FetchURLCallBack* s_fetch = nullptr;
void* s_fetchData = nullptr;
SoVRMLInline::Loader* s_loader = nullptr;

void measureInline(SoAction* action, SoNode* node)
{
    auto* box = static_cast<SoVRMLInline*>(node);
    const SbVec3f size = box->bboxSize.getValue();
    if (!box->getChildData() && size[0] >= 0 && size[1] >= 0 && size[2] >= 0) {
        const SbVec3f center = box->bboxCenter.getValue();
        static_cast<SoGetBoundingBoxAction*>(action)->extendBy(
            SbBox3f(center - size / 2, center + size / 2));
        return;
    }
    node->doAction(action);
}

} // namespace

SO_NODE_SOURCE(SoVRMLInline)

SoVRMLInline::SoVRMLInline() : m_children(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_VRML_EXPOSED_EMPTY(url);
    SO_VRML_FIELD(bboxCenter, (0.0f, 0.0f, 0.0f));
    SO_VRML_FIELD(bboxSize, (-1.0f, -1.0f, -1.0f));
    // Nobody can listen yet.
    enableNotify(false);
    m_children.append(new SoGroup);
    enableNotify(true);
}

SoVRMLInline::~SoVRMLInline() = default;

void SoVRMLInline::initClass()
{
    SO_NODE_INIT_CLASS(SoVRMLInline, SoNode, "VRMLInline");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), measureInline);
}

void SoVRMLInline::setFetchURLCallBack(FetchURLCallBack* callback, void* data)
{
    s_fetch = callback;
    s_fetchData = data;
}

bool SoVRMLInline::fetch(const SbString& url, SoVRMLInline* node)
{
    if (s_fetch)
        s_fetch(url, s_fetchData, node);
    return s_fetch != nullptr;
}

void SoVRMLInline::setLoader(Loader* loader)
{
    s_loader = loader;
}

bool SoVRMLInline::requestChildrenFromURL()
{
    if (s_loader)
        return s_loader(this);
    SoDebugError::post("SoVRMLInline::requestChildrenFromURL", "nothing can read scene files yet");
    return false;
}

SoNode* SoVRMLInline::getChildData() const
{
    return m_children.getLength() > 1 ? m_children[1] : nullptr;
}

void SoVRMLInline::setChildData(SoNode* data)
{
    if (getChildData() && data) {
        m_children.set(1, data);
    } else if (getChildData()) {
        m_children.remove(1);
    } else if (data) {
        m_children.append(data);
    }
}

void SoVRMLInline::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    action->traverseChildren(m_children);
    state->pop();
}

void SoVRMLInline::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    m_children.truncate(); // the box of the original takes the place of the copy's own
    SoNode::copyContents(from, copier);
    m_directory = static_cast<const SoVRMLInline*>(from)->m_directory;
}
