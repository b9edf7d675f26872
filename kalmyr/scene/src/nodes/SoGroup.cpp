#include <kalmyr/nodes/SoGroup.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/base/SoContract.h>

SO_NODE_SOURCE(SoGroup)

SoGroup::SoGroup() : m_children(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
}

SoGroup::SoGroup(int numChildren) : SoGroup()
{
    m_children.reserve(numChildren);
}

SoGroup::~SoGroup() = default;

void SoGroup::initClass()
{
    SO_NODE_INIT_CLASS(SoGroup, SoNode, "Group");
}

bool SoGroup::addChild(SoNode* child)
{
    return m_children.append(child);
}

bool SoGroup::insertChild(SoNode* child, int index)
{
    return m_children.insert(child, index);
}

bool SoGroup::removeChild(int index)
{
    return m_children.remove(index);
}

bool SoGroup::removeChild(SoNode* child)
{
    const int index = findChild(child);
    return kalmyr::holds(index >= 0, "a child of the group") && removeChild(index);
}

bool SoGroup::replaceChild(int index, SoNode* child)
{
    return m_children.set(index, child);
}

bool SoGroup::replaceChild(SoNode* oldChild, SoNode* newChild)
{
    const int index = findChild(oldChild);
    return kalmyr::holds(index >= 0, "a child of the group") && replaceChild(index, newChild);
}

void SoGroup::removeAllChildren()
{
    m_children.truncate();
}

bool SoGroup::setChildren(const std::vector<SoNode*>& children)
{
    return m_children.assign(children);
}

SoNode* SoGroup::getChild(int index) const
{
    return m_children[index];
}

void SoGroup::doAction(SoAction* action)
{
    action->traverseChildren(m_children);
}
