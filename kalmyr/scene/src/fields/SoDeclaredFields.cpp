#include <kalmyr/fields/SoDeclaredFields.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNodeCopier.h>

SoDeclaredFields::~SoDeclaredFields() = default;

void SoDeclaredFields::add(const SbName& name, SoField* field)
{
    if (!kalmyr::holds(field, "a field"))
        return;
    field->setContainer(m_owner);
    m_data.addField(m_owner, name, field);
    ++m_numOwn;
}

SoField* SoDeclaredFields::declare(const SbName& type, const SbName& name, SoField::FieldType kind)
{
    const SoType fieldType = SoType::fromName(type);
    if (!fieldType.isDerivedFrom(SoField::getClassTypeId()) || m_data.getIndex(name) >= 0)
        return nullptr;
    auto* field = static_cast<SoField*>(fieldType.createInstance());
    if (!field)
        return nullptr;
    m_fields.emplace_back(field);
    field->setContainer(m_owner);
    field->setFieldType(kind);
    m_data.addField(m_owner, name, field);
    return field;
}

void SoDeclaredFields::copy(const SoDeclaredFields& from, SoNodeCopier& copier)
{
    for (int i = 0; i < from.m_data.getNumFields(); ++i) {
        const SoField* original = from.m_data.getField(from.m_owner, i);
        SoField* field = i < m_numOwn
                             ? m_data.getField(m_owner, i)
                             : declare(original->getTypeId().getName(), from.m_data.getFieldName(i),
                                       original->getFieldType());
        if (!field)
            continue;
        if (!original->isDefault() || original->isIgnored() || i >= m_numOwn)
            field->copyWith(copier, *original);
        field->setDefault(original->isDefault());
        field->setIgnored(original->isIgnored());
    }
}
