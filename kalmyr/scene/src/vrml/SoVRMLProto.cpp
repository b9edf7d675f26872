#include <kalmyr/vrml/SoVRMLProto.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/core/SoNodeCopier.h>

#include <utility>

namespace {

SoType s_instanceType;

} // namespace

SoVRMLProto::~SoVRMLProto()
{
    // One after the other: a file may declare so many that the stack would not hold a call for
    // each.
    SoRef<SoVRMLProto> next = std::move(previous);
    while (next && next->getRefCount() == 1) {
        SoRef<SoVRMLProto> further = std::move(next->previous);
        next = std::move(further);
    }
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
}

SoVRMLProtoInstance::SoVRMLProtoInstance() : m_declared(this), m_parts(this) {}
SoVRMLProtoInstance::~SoVRMLProtoInstance() = default;

void SoVRMLProtoInstance::setProto(SoVRMLProto* proto)
{
    m_proto = proto;
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
    m_proto = source->m_proto;
    m_declared.copy(source->m_declared, copier);
    SoForeignFields::copy(from, this);
    if (!from->getName().isEmpty())
        setName(from->getName());
    for (SoNode* part : source->m_parts.getNodes())
        m_parts.append(copier.copyOf(part));
}
