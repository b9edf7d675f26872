#include <kalmyr/actions/SoSearchAction.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFNode.h>

SO_ACTION_SOURCE(SoSearchAction, SoAction, "SearchAction")

void SoSearchAction::initMethods()
{
    addMethod(SoNode::getClassTypeId(), [](SoAction* action, SoNode* node) {
        auto* search = static_cast<SoSearchAction*>(action);
        search->check(node);
        if (!search->hasTerminated())
            search->searchBelow(node);
    });
}

namespace {

bool holdsNodes(SoType fieldType)
{
    return fieldType.isDerivedFrom(SoSFNode::getClassTypeId())
           || fieldType.isDerivedFrom(SoMNodeField::getClassTypeId());
}

} // namespace

SoSearchAction::SoSearchAction() = default;

void SoSearchAction::reset()
{
    m_node = nullptr;
    m_type = SoType::badType();
    m_name = SbName();
    m_find = 0;
    m_interest = FIRST;
    m_derived = true;
    m_searchingAll = false;
    m_searchingKits = false;
    m_paths.clear();
}

void SoSearchAction::setNode(SoNode* node)
{
    m_node = node;
    m_find |= NODE;
}

void SoSearchAction::setType(SoType type, bool derived)
{
    m_type = type;
    m_derived = derived;
    m_find |= TYPE;
}

void SoSearchAction::setName(const SbName& name)
{
    m_name = name;
    m_find |= NAME;
}

void SoSearchAction::apply(SoNode* root)
{
    m_paths.clear();
    if (mayExist())
        SoAction::apply(root);
}

void SoSearchAction::apply(SoPath* path)
{
    const SoRef<SoPath> held(path);
    m_paths.clear();
    if (mayExist())
        SoAction::apply(path);
}

bool SoSearchAction::mayExist() const
{
    if (m_find == 0)
        return false;
    // Names are registered in the whole process, so an unknown one needs no traversal.
    return !(m_find & NAME) || m_name.isEmpty()
           || SoBase::getNamedBase(m_name, SoNode::getClassTypeId());
}

void SoSearchAction::beginTraversal(SoNode*)
{
    m_nothingIn.clear();
    m_nodeFields.resize(static_cast<std::size_t>(SoType::getNumTypes()));
}

bool SoSearchAction::matches(const SoNode* node) const
{
    if ((m_find & NODE) && node != m_node)
        return false;
    if (m_find & TYPE) {
        const SoType type = node->getTypeId();
        if (!(m_derived ? type.isDerivedFrom(m_type) : type == m_type))
            return false;
    }
    return !(m_find & NAME) || node->getName() == m_name;
}

void SoSearchAction::check(SoNode* node)
{
    if (getPathMode() == OFF_PATH || !matches(node))
        return;
    SoRef<SoPath> path(getCurPath());
    ++m_numFound;
    if (m_interest == LAST)
        m_paths.clear();
    m_paths.push_back(std::move(path));
    if (m_interest == FIRST)
        setTerminated(true);
    if (m_paths.size() < kMaxPaths)
        return;
    setTerminated(true);
    SoDebugError::post("SoSearchAction::apply", "stopped at %d paths: more are not kept",
                       static_cast<int>(kMaxPaths));
}

void SoSearchAction::searchBelow(SoNode* node)
{
    const SoChildList* children = node->getInternalChildren();
    const SoFieldData* data = node->getFieldData();
    const bool holdsOthers =
        (children && children->getLength() > 0) || (data && !data->getNodeFields().empty());
    // Nodes that hold others several times over, level upon level, have places without end.
    constexpr std::uint64_t kFewVisits = 5000; // which are not worth the memory
    if (getNumVisits() < kFewVisits || !holdsOthers || node->getRefCount() < 2
        || getPathMode() != NO_PATH) {
        searchEverywhereBelow(node);
        return;
    }
    if (m_nothingIn.count(node) > 0)
        return;
    const std::uint64_t found = m_numFound, placeBound = m_numPlaceBound;
    searchEverywhereBelow(node);
    if (!hasTerminated() && m_numFound == found && m_numPlaceBound == placeBound)
        m_nothingIn.insert(node);
}

void SoSearchAction::searchEverywhereBelow(SoNode* node)
{
    const SoChildList* children =
        m_searchingAll ? node->getInternalChildren() : node->getChildren();
    if (children)
        traverseChildren(*children);
    if (!hasTerminated())
        searchFields(node);
}

void SoSearchAction::searchFields(SoNode* node)
{
    const SoFieldData* data = node->getFieldData();
    if (!data)
        return;
    const auto type = static_cast<std::size_t>(node->getTypeId().getIndex());
    if (type < m_nodeFields.size()) {
        NodeFields& known = m_nodeFields[type];
        if (!known.data)
            collectNodeFields(node, data, known);
        if (known.data == data) {
            for (const int i : known.indices)
                searchField(node, data->getField(node, i));
            return;
        }
    }
    // A node whose fields came from a file has a table of its own.
    for (int i = 0; i < data->getNumFields(); ++i) {
        SoField* field = data->getField(node, i);
        if (holdsNodes(field->getTypeId()))
            searchField(node, field);
    }
}

void SoSearchAction::collectNodeFields(const SoNode* node, const SoFieldData* data,
                                       NodeFields& known)
{
    known.data = data;
    for (int i = 0; i < data->getNumFields(); ++i) {
        if (holdsNodes(data->getField(node, i)->getTypeId()))
            known.indices.push_back(i);
    }
}

void SoSearchAction::searchField(SoNode* container, SoField* field)
{
    if (field->isOfType(SoSFNode::getClassTypeId())) {
        searchFieldNode(container, static_cast<SoSFNode*>(field)->getValue());
        return;
    }
    const auto* nodes = static_cast<SoMNodeField*>(field);
    if (nodes->isBound())
        return; // the children, visited as such
    for (int i = 0; i < nodes->getNum() && !hasTerminated(); ++i)
        searchFieldNode(container, nodes->getNode(i));
}

void SoSearchAction::searchFieldNode(SoNode* container, SoNode* node)
{
    if (!node || hasTerminated())
        return;
    // Fields of scripts may name nodes above their own: do not go round in circles.
    if (isOnWay(node)) {
        dependsOnPlace();
        return;
    }
    // The parts of a kit are its children as well; one visit is enough.
    const SoChildList* children =
        m_searchingAll ? container->getInternalChildren() : container->getChildren();
    if (!children || children->find(node) < 0)
        traverse(node, -1);
}
