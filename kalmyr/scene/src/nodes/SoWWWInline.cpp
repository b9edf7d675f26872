#include <kalmyr/nodes/SoWWWInline.h>

#include <kalmyr/actions/SoGetBoundingBoxAction.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/nodes/SoGroup.h>

namespace {

SoWWWInline::FetchURLCallBack* s_fetch = nullptr;
void* s_fetchData = nullptr;
SoWWWInline::Loader* s_loader = nullptr;

void measureInline(SoAction* action, SoNode* node)
{
    const auto* box = static_cast<SoWWWInline*>(node);
    const SbVec3f size = box->bboxSize.getValue();
    if (!box->getChildData() && size[0] > 0 && size[1] > 0 && size[2] > 0) {
        const SbVec3f center = box->bboxCenter.getValue();
        static_cast<SoGetBoundingBoxAction*>(action)->extendBy(
            SbBox3f(center - size / 2, center + size / 2));
        return;
    }
    node->doAction(action);
}

} // namespace

SO_NODE_SOURCE(SoWWWInline)

SoWWWInline::SoWWWInline() : m_children(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, (""));
    SO_ADD_FIELD(bboxSize, (0.0f, 0.0f, 0.0f));
    SO_ADD_FIELD(bboxCenter, (0.0f, 0.0f, 0.0f));
    // Nobody can listen yet.
    enableNotify(false);
    m_children.append(new SoGroup);
    enableNotify(true);
}

SoWWWInline::~SoWWWInline() = default;

void SoWWWInline::initClass()
{
    SO_NODE_INIT_CLASS(SoWWWInline, SoNode, "WWWInline");
    SoGetBoundingBoxAction::addMethod(getClassTypeId(), measureInline);
}

void SoWWWInline::setFetchURLCallBack(FetchURLCallBack* callback, void* data)
{
    s_fetch = callback;
    s_fetchData = data;
}

bool SoWWWInline::fetch(const SbString& url, SoWWWInline* node)
{
    if (s_fetch)
        s_fetch(url, s_fetchData, node);
    return s_fetch != nullptr;
}

void SoWWWInline::setLoader(Loader* loader)
{
    s_loader = loader;
}

bool SoWWWInline::requestURLData()
{
    return s_loader && s_loader(this);
}

SoNode* SoWWWInline::getChildData() const
{
    return m_children.getLength() > 1 ? m_children[1] : nullptr;
}

void SoWWWInline::setChildData(SoNode* data)
{
    if (getChildData() && data) {
        m_children.set(1, data);
    } else if (getChildData()) {
        m_children.remove(1);
    } else if (data) {
        m_children.append(data);
    }
}

void SoWWWInline::doAction(SoAction* action)
{
    SoState* state = action->getState();
    state->push();
    action->traverseChildren(m_children);
    state->pop();
}

void SoWWWInline::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    m_children.truncate(); // the box of the original takes the place of the copy's own
    SoNode::copyContents(from, copier);
    m_directory = static_cast<const SoWWWInline*>(from)->m_directory;
}
