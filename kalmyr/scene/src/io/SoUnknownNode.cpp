#include <kalmyr/io/SoUnknownNode.h>

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoNodeCopier.h>

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
    if (!from->getName().isEmpty())
        setName(from->getName());
    for (SoNode* child : source->getChildren()->getNodes())
        getChildren()->append(copier.copyOf(child));
}
