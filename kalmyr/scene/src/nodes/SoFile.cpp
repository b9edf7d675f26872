#include <kalmyr/nodes/SoFile.h>

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoNodeCopier.h>

#include <atomic>

namespace {

std::atomic<bool> s_searchOK = false;

void searchFile(SoAction* action, SoNode* node)
{
    auto* search = static_cast<SoSearchAction*>(action);
    search->check(node);
    if (s_searchOK && !search->hasTerminated())
        search->searchBelow(node);
}

} // namespace

SO_NODE_SOURCE(SoFile)

SoFile::SoFile() : m_children(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(name, (""));
}

SoFile::~SoFile() = default;

void SoFile::initClass()
{
    SO_NODE_INIT_CLASS(SoFile, SoNode, "File");
    SoSearchAction::addMethod(getClassTypeId(), searchFile);
}

void SoFile::setSearchOK(bool on)
{
    s_searchOK = on;
}

bool SoFile::getSearchOK()
{
    return s_searchOK;
}

void SoFile::setChildData(SoNode* data)
{
    if (m_children.getLength() > 0 && data) {
        m_children.set(0, data);
    } else if (data) {
        m_children.append(data);
    } else {
        m_children.truncate();
    }
}

void SoFile::doAction(SoAction* action)
{
    action->traverseChildren(m_children);
}

void SoFile::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
}
