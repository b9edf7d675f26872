#include <kalmyr/core/SoFieldData.h>

#include <kalmyr/base/SoContract.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>

#include "core/NodeFields.h"

namespace {

std::ptrdiff_t distance(const SoFieldContainer* container, const SoField* field)
{
    return reinterpret_cast<const char*>(field) - reinterpret_cast<const char*>(container);
}

} // namespace

void SoFieldData::addField(const SoFieldContainer* container, const SbName& name,
                           const SoField* field)
{
    if (!kalmyr::holds(container && field, "a container and its field"))
        return;
    if (kalmyr::detail::isNodeField(field->getTypeId()))
        m_nodeFields.push_back(getNumFields());
    m_index.emplace(name, getNumFields());
    m_entries.push_back({name, distance(container, field)});
    if (m_entries.size() <= kLinearLimit)
        return;
    for (std::size_t i = m_places.size(); i < m_entries.size(); ++i)
        m_places.emplace(m_entries[i].offset, static_cast<int>(i));
}

SoField* SoFieldData::getField(const SoFieldContainer* container, int index) const
{
    if (!kalmyr::holds(container && index >= 0 && index < getNumFields(),
                       "a container, and 0 <= index < getNumFields()"))
        return nullptr;
    const std::ptrdiff_t offset = m_entries[static_cast<std::size_t>(index)].offset;
    return reinterpret_cast<SoField*>(const_cast<char*>(reinterpret_cast<const char*>(container))
                                      + offset);
}

int SoFieldData::getIndex(const SbName& name) const
{
    // A handful of names is compared faster than hashed.
    if (m_entries.size() <= kLinearLimit) {
        for (std::size_t i = 0; i < m_entries.size(); ++i)
            if (m_entries[i].name == name)
                return static_cast<int>(i);
        return -1;
    }
    const auto at = m_index.find(name);
    return at == m_index.end() ? -1 : at->second;
}

int SoFieldData::getIndex(const SoFieldContainer* container, const SoField* field) const
{
    const std::ptrdiff_t offset = distance(container, field);
    if (m_entries.size() > kLinearLimit) {
        const auto at = m_places.find(offset);
        return at == m_places.end() ? -1 : at->second;
    }
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        if (m_entries[i].offset == offset)
            return static_cast<int>(i);
    return -1;
}
