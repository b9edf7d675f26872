#include <kalmyr/io/SoUnknownNode.h>

#include <kalmyr/actions/SoAction.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoForeignFields.h>
#include <kalmyr/core/SoNodeCopier.h>
#include <kalmyr/fields/SoSFNode.h>
#include <kalmyr/fields/SoValueFields.h>

namespace {

SoType s_unknownNodeType;

} // namespace

SoType SoUnknownNode::getClassTypeId()
{
    return s_unknownNodeType;
}

void SoUnknownNode::initClass()
{
    s_unknownNodeType =
        SoType::createType(SoGroup::getClassTypeId(), SbName("UnknownNode"),
                           []() -> void* { return static_cast<SoNode*>(new SoUnknownNode); });
}

SoUnknownNode::SoUnknownNode() : m_data(std::make_unique<SoFieldData>()) {}
SoUnknownNode::~SoUnknownNode() = default;

SoField* SoUnknownNode::declareField(const SbName& type, const SbName& name)
{
    const SoType fieldType = SoType::fromName(type);
    if (!fieldType.isDerivedFrom(SoField::getClassTypeId()) || m_data->getIndex(name) >= 0)
        return nullptr;
    auto* field = static_cast<SoField*>(fieldType.createInstance());
    if (!field)
        return nullptr;
    m_fields.emplace_back(field);
    field->setContainer(this);
    m_data->addField(this, name, field);
    m_declared = true;
    return field;
}

void SoUnknownNode::removeFields()
{
    m_data = std::make_unique<SoFieldData>();
    m_fields.clear();
    m_declared = false;
}

void SoUnknownNode::copyContents(const SoNode* from, SoNodeCopier& copier)
{
    const auto* source = static_cast<const SoUnknownNode*>(from);
    m_typeName = source->m_typeName;
    m_body = source->m_body;
    for (int i = 0; i < source->m_data->getNumFields(); ++i) {
        const SoField* original = source->m_data->getField(source, i);
        SoField* field =
            declareField(original->getTypeId().getName(), source->m_data->getFieldName(i));
        if (!field)
            continue;
        field->copyWith(copier, *original);
        field->setDefault(original->isDefault());
        field->setIgnored(original->isIgnored());
    }
    m_declared = source->m_declared;
    SoForeignFields::copy(from, this, copier);
    if (!from->getName().isEmpty())
        setName(from->getName());
    for (SoNode* child : source->getChildren()->getNodes())
        getChildren()->append(copier.copyOf(child));
    if (source->m_standIn)
        findStandIn();
}

namespace {

/// A node of the first type that is known.
SoNode* createFirst(const SoMFString& types)
{
    for (const SbString& name : types.values()) {
        const SbName known = SbName::find(name.view());
        const SoType type = known.isEmpty() ? SoType() : SoType::fromName(known);
        if (type.isDerivedFrom(SoNode::getClassTypeId()) && type.canCreateInstance())
            return SoNode::create(type);
    }
    return nullptr;
}

} // namespace

void SoUnknownNode::findStandIn()
{
    m_standIn = nullptr;
    const SoField* alternate = getField(SbName("alternateRep"));
    if (alternate && alternate->isOfType(SoSFNode::getClassTypeId()))
        m_standIn = static_cast<const SoSFNode*>(alternate)->getValue();
    const SoField* kinds = getField(SbName("isA"));
    if (m_standIn || !kinds || !kinds->isOfType(SoMFString::getClassTypeId()))
        return;
    m_standIn = createFirst(static_cast<const SoMFString&>(*kinds));
    for (int i = 0; m_standIn && i < m_data->getNumFields(); ++i) {
        const SoField* own = m_data->getField(this, i);
        SoField* common = m_standIn->getField(m_data->getFieldName(i));
        if (common && common->getTypeId() == own->getTypeId() && !own->isDefault())
            common->copyFrom(*own);
    }
    SoChildList* children = m_standIn ? m_standIn->getChildren() : nullptr;
    for (int i = 0; children && i < getNumChildren(); ++i)
        children->append(getChild(i));
}

bool SoUnknownNode::affectsState() const
{
    return m_standIn ? m_standIn->affectsState() : SoGroup::affectsState();
}

void SoUnknownNode::doAction(SoAction* action)
{
    if (m_standIn)
        action->traverse(m_standIn.get(), -1);
    else
        SoGroup::doAction(action);
}
