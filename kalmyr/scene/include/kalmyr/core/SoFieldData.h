#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoContract.h>

#include <cstddef>
#include <unordered_map>
#include <vector>

class SoField;
class SoFieldContainer;

/// Names and places of the fields of a class of containers, in order of declaration.
///
/// One table serves all instances of a class: a field is found by its distance from the container.
/// Containers whose fields come from a file own a table of their own.
/// Indices out of range give the empty name and null, and post an error.
class KALMYR_API SoFieldData {
public:
    SoFieldData() = default;
    SoFieldData(const SoFieldData&) = default;

    /// Adds a field that lives in, or is owned by, `container`. Null is refused with an error.
    void addField(const SoFieldContainer* container, const SbName& name, const SoField* field);

    int getNumFields() const { return static_cast<int>(m_entries.size()); }
    SbName getFieldName(int index) const
    {
        if (!kalmyr::holds(index >= 0 && index < getNumFields(), "0 <= index < getNumFields()"))
            return SbName::empty();
        return m_entries[static_cast<std::size_t>(index)].name;
    }
    SoField* getField(const SoFieldContainer* container, int index) const;

    /// Indices of the fields whose type can hold nodes.
    const std::vector<int>& getNodeFields() const { return m_nodeFields; }

    /// Index of the field of that name, or -1. Constant time for tables of any size.
    int getIndex(const SbName& name) const;
    /// Index of `field` within `container`, or -1. Constant time, too.
    int getIndex(const SoFieldContainer* container, const SoField* field) const;

private:
    struct Entry {
        SbName name;
        std::ptrdiff_t offset;
    };
    static constexpr std::size_t kLinearLimit = 12;

    std::vector<Entry> m_entries;
    std::vector<int> m_nodeFields;
    std::unordered_map<SbName, int> m_index;
    std::unordered_map<std::ptrdiff_t, int> m_places; ///< beyond kLinearLimit fields
};
