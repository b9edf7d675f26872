#include <kalmyr/vrml/SoVRMLProto.h>

#include <kalmyr/actions/SoSearchAction.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/core/SoNodeCopier.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace {

SoType s_instanceType;

/// What the body takes from the interface is searched where it stands there: looked at twice at
/// each level, a few nested prototypes would have places without end.
void searchInstance(SoAction* action, SoNode* node)
{
    auto* search = static_cast<SoSearchAction*>(action);
    search->check(node);
    if (search->hasTerminated())
        return;
    if (!search->isSearchingAll()) {
        search->searchBelow(node);
        return;
    }
    auto* instance = static_cast<SoVRMLProtoInstance*>(node);
    search->traverseChildren(instance->getParts());
    const SoFieldData* data = instance->getFieldData();
    for (const int i : data->getNodeFields()) {
        SoField* field = data->getField(instance, i);
        if (!search->hasTerminated() && !instance->isPassedOn(*field))
            search->searchField(instance, field);
    }
}

} // namespace

/// Prototypes that were declared one after the other. Those in the body of another one know what
/// was declared in front of that, not what came behind it: they begin a scope of their own.
struct SoVRMLProto::Scope {
    struct Place {
        std::size_t number;
        const SoVRMLProto* proto; // Not owned; alive where one of a higher number is.
    };
    const SoVRMLProto* outer = nullptr; // Not owned; the first of the scope holds it.
    std::size_t size = 0;
    std::unordered_map<SbName, std::vector<Place>> places;
};

SoVRMLProto::~SoVRMLProto()
{
    // One after the other: a file may declare so many that the stack would not hold a call for
    // each.
    SoRef<SoVRMLProto> next = std::move(m_previous);
    while (next && next->getRefCount() == 1) {
        SoRef<SoVRMLProto> further = std::move(next->m_previous);
        next = std::move(further);
    }
}

void SoVRMLProto::declareBehind(const SoRef<SoVRMLProto>& previous)
{
    m_previous = previous;
    if (previous && previous->m_number == previous->m_scope->size) {
        m_scope = previous->m_scope;
    } else {
        m_scope = std::make_shared<Scope>();
        m_scope->outer = previous.get();
    }
    m_number = ++m_scope->size;
    m_scope->places[name].push_back({m_number, this});
}

const SoVRMLProto* SoVRMLProto::find(const SbName& wanted) const
{
    for (const SoVRMLProto* last = this; last; last = last->m_scope->outer) {
        const auto found = last->m_scope->places.find(wanted);
        if (found == last->m_scope->places.end())
            continue;
        const auto behind = std::upper_bound(
            found->second.begin(), found->second.end(), last->m_number,
            [](std::size_t number, const Scope::Place& place) { return number < place.number; });
        if (behind != found->second.begin())
            return std::prev(behind)->proto;
    }
    return nullptr;
}

SoType SoVRMLProtoInstance::getClassTypeId()
{
    return s_instanceType;
}

void SoVRMLProtoInstance::initClass()
{
    s_instanceType =
        SoType::createType(SoNode::getClassTypeId(), SbName("VRMLProtoInstance"),
                           []() -> void* { return static_cast<SoNode*>(new SoVRMLProtoInstance); });
    SoSearchAction::addMethod(s_instanceType, searchInstance);
}

SoVRMLProtoInstance::SoVRMLProtoInstance() : m_declared(this), m_parts(this) {}
SoVRMLProtoInstance::~SoVRMLProtoInstance()
{
    holdProto(nullptr);
}

void SoVRMLProtoInstance::holdProto(SoVRMLProto* proto)
{
    if (m_proto)
        --m_proto->m_numInstances;
    m_proto = proto;
    if (proto)
        ++proto->m_numInstances;
}

void SoVRMLProtoInstance::setProto(SoVRMLProto* proto)
{
    holdProto(proto);
    for (const SoVRMLProto::Entry& entry : proto->interface)
        m_declared.declare(entry.type, entry.name, entry.kind);
}

SoNode* SoVRMLProtoInstance::resolve(SoNode* node)
{
    while (node && node->isOfType(s_instanceType)) {
        const SoChildList& parts = static_cast<SoVRMLProtoInstance*>(node)->m_parts;
        node = parts.getLength() > 0 ? parts[0] : nullptr;
    }
    return node;
}

void SoVRMLProtoInstance::notePassedOn(const SoField& field)
{
    const int index = getFieldData()->getIndex(this, &field);
    if (std::find(m_passedOn.begin(), m_passedOn.end(), index) == m_passedOn.end())
        m_passedOn.push_back(index);
}

bool SoVRMLProtoInstance::isPassedOn(const SoField& field) const
{
    return !m_passedOn.empty()
           && std::find(m_passedOn.begin(), m_passedOn.end(),
                        getFieldData()->getIndex(this, &field))
                  != m_passedOn.end();
}

bool SoVRMLProtoInstance::affectsState() const
{
    return m_parts.getLength() > 0 && m_parts[0]->affectsState();
}

void SoVRMLProtoInstance::doAction(SoAction* action)
{
    if (m_parts.getLength() > 0)
        action->traverse(m_parts[0], 0);
}

void SoVRMLProtoInstance::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    const auto* source = static_cast<const SoVRMLProtoInstance*>(from);
    holdProto(source->m_proto.get());
    m_declared.copy(source->m_declared, copier);
    m_passedOn = source->m_passedOn;
    SoForeignFields::copy(from, this, copier);
    if (!from->getName().isEmpty())
        setName(from->getName());
    for (SoNode* part : source->m_parts.getNodes())
        m_parts.append(copier.copyOf(part));
}
