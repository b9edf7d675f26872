#include <kalmyr/nodekits/SoNodeKitListPart.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/nodekits/SoBaseKit.h>
#include <kalmyr/nodes/SoGroup.h>

#include "core/CacheLock.h"
#include "KitSearch.h"

#include <algorithm>

SO_NODE_SOURCE(SoNodeKitListPart)

SoNodeKitListPart::SoNodeKitListPart() : m_children(this)
{
    SO_NODE_CONSTRUCTOR(SoNode);
    SO_ADD_FIELD(containerTypeName, (SbName("Group")));
    SO_ADD_FIELD(childTypeNames, (SbName("Node")));
    SO_ADD_FIELD(containerNode, (nullptr));
}

SoNodeKitListPart::~SoNodeKitListPart() = default;

void SoNodeKitListPart::initClass()
{
    SO_NODE_INIT_CLASS(SoNodeKitListPart, SoNode, "NodeKitListPart");
    SoSearchAction::addMethod(getClassTypeId(), kalmyr::detail::searchParts);
}

SoGroup* SoNodeKitListPart::group() const
{
    return m_children.getLength() > 0 ? static_cast<SoGroup*>(m_children[0]) : nullptr;
}

SoGroup* SoNodeKitListPart::groupOrNew()
{
    if (!group())
        containerNode.setValue(SoNode::create(getContainerType()));
    return group();
}

SoType SoNodeKitListPart::getContainerType() const
{
    const SoType type = SoType::fromName(containerTypeName.getValue());
    return type.isDerivedFrom(SoGroup::getClassTypeId()) ? type : SoGroup::getClassTypeId();
}

bool SoNodeKitListPart::setContainerType(SoType type)
{
    if (m_locked || !type.isDerivedFrom(SoGroup::getClassTypeId()) || !type.canCreateInstance())
        return false;
    containerTypeName.setValue(type.getName());
    SoGroup* old = group();
    if (!old || old->getTypeId() == type)
        return true;
    const SoRef<SoGroup> made(static_cast<SoGroup*>(SoNode::create(type)));
    made->setChildren(old->getChildren()->getNodes());
    containerNode.setValue(made.get());
    return true;
}

std::vector<SoType> SoNodeKitListPart::getChildTypes() const
{
    std::vector<SoType> types;
    for (int i = 0; i < childTypeNames.getNum(); ++i)
        types.push_back(SoType::fromName(childTypeNames[i]));
    return types;
}

bool SoNodeKitListPart::addChildType(SoType type)
{
    if (m_locked || !type.isDerivedFrom(SoNode::getClassTypeId()))
        return false;
    const int at = childTypeNames.isDefault() ? 0 : childTypeNames.getNum();
    childTypeNames.set1Value(at, type.getName());
    return true;
}

bool SoNodeKitListPart::isTypePermitted(SoType type) const
{
    const std::vector<SoType> types = getChildTypes();
    return std::any_of(types.begin(), types.end(), [type](SoType allowed) {
        return !allowed.isBad() && type.isDerivedFrom(allowed);
    });
}

bool SoNodeKitListPart::isChildPermitted(const SoNode* child) const
{
    return child && isTypePermitted(child->getTypeId());
}

SoNode* SoNodeKitListPart::makeChild() const
{
    const std::vector<SoType> types = getChildTypes();
    return types.empty() ? nullptr : SoNode::create(types.front());
}

int SoNodeKitListPart::getNumChildren() const
{
    return group() ? group()->getNumChildren() : 0;
}

namespace {

bool isIndex(int index, int num)
{
    return kalmyr::holds(index >= 0 && index < num, "0 <= index < getNumChildren()");
}

} // namespace

SoNode* SoNodeKitListPart::getChild(int index) const
{
    return isIndex(index, getNumChildren()) ? group()->getChild(index) : nullptr;
}

void SoNodeKitListPart::buildIndex() const
{
    m_index.clear();
    m_indexedCount = getNumChildren();
    m_index.reserve(static_cast<std::size_t>(m_indexedCount));
    for (int i = 0; i < m_indexedCount; ++i)
        m_index.emplace(getChild(i), i); // of several places the first
}

int SoNodeKitListPart::findChild(const SoNode* child) const
{
    constexpr int kShort = 16;
    if (!group() || getNumChildren() <= kShort)
        return group() ? group()->findChild(child) : -1;
    const kalmyr::detail::CacheLock lock;
    if (m_indexedCount != getNumChildren())
        buildIndex();
    const auto at = m_index.find(child);
    return at == m_index.end() ? -1 : at->second;
}

bool SoNodeKitListPart::addChild(SoNode* child)
{
    return kalmyr::holds(child, "a child") && isChildPermitted(child)
           && groupOrNew()->addChild(child);
}

bool SoNodeKitListPart::insertChild(SoNode* child, int index)
{
    return kalmyr::holds(child && index >= 0 && index <= getNumChildren(),
                         "a child, and 0 <= index <= getNumChildren()")
           && isChildPermitted(child) && groupOrNew()->insertChild(child, index);
}

bool SoNodeKitListPart::replaceChild(int index, SoNode* child)
{
    return kalmyr::holds(child, "a child") && isIndex(index, getNumChildren())
           && isChildPermitted(child) && group()->replaceChild(index, child);
}

bool SoNodeKitListPart::removeChild(int index)
{
    return isIndex(index, getNumChildren()) && group()->removeChild(index);
}

bool SoNodeKitListPart::removeChild(const SoNode* child)
{
    const int index = findChild(child);
    return kalmyr::holds(index >= 0, "a child of the list") && removeChild(index);
}

void SoNodeKitListPart::removeAllChildren()
{
    if (group())
        group()->removeAllChildren();
}

bool SoNodeKitListPart::containerSet(const char* fields)
{
    return kalmyr::holds(fields, "a text") && groupOrNew()->set(fields);
}

bool SoNodeKitListPart::affectsState() const
{
    return group() && group()->affectsState();
}

void SoNodeKitListPart::doAction(SoAction* action)
{
    action->traverseChildren(m_children);
}

bool SoNodeKitListPart::accepts(const SoNode* container) const
{
    if (!container)
        return true;
    if (!container->isOfType(SoGroup::getClassTypeId())
        || (m_locked && !container->isOfType(getContainerType())))
        return false;
    const auto& nodes = container->getChildren()->getNodes();
    return std::all_of(nodes.begin(), nodes.end(),
                       [this](const SoNode* child) { return isChildPermitted(child); });
}

void SoNodeKitListPart::followContainer()
{
    SoNode* wanted = containerNode.getValue();
    SoNode* present = group();
    if (wanted == present)
        return;
    m_indexedCount = -1;
    if (!accepts(wanted)) {
        containerNode.initValue(present);
        SoDebugError::post("SoNodeKitListPart",
                           "a %s with its children cannot be the group of this list",
                           wanted->getTypeId().getName().getString());
        return;
    }
    if (wanted && present)
        m_children.set(0, wanted);
    else if (wanted)
        m_children.append(wanted);
    else
        m_children.truncate();
}

bool SoNodeKitListPart::noteChange(const SoNotification& notification)
{
    // The group may be edited by others than the list.
    if (notification.kind != SoNotification::UNSPECIFIED && notification.container == group())
        m_indexedCount = -1;
    if (notification.container == this && notification.field == &containerNode)
        followContainer();
    return true;
}

void SoNodeKitListPart::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    SoNode::copyContents(from, copier);
    const auto* source = static_cast<const SoNodeKitListPart*>(from);
    if (containerNode.getValue() != copier.resolve(source->group()))
        containerNode.setValue(copier.copyOf(source->group()));
    m_locked = source->m_locked;
}

bool SoNodeKitListPart::isFieldWritten(const SoField& field) const
{
    // A kit's notification about its list is no news.
    if (m_locked && (&field == &containerTypeName || &field == &childTypeNames))
        return false;
    return SoNode::isFieldWritten(field);
}
