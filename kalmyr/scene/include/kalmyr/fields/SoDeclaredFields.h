#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldData.h>

#include <memory>
#include <vector>

class SoFieldContainer;
class SoNodeCopier;

/// The fields of one container whose table is its own, because a file declares some of them.
class KALMYR_API SoDeclaredFields {
public:
    /// `owner` holds this object and all of its fields.
    explicit SoDeclaredFields(SoFieldContainer* owner) : m_owner(owner) {}
    ~SoDeclaredFields();
    SoDeclaredFields(const SoDeclaredFields&) = delete;
    SoDeclaredFields& operator=(const SoDeclaredFields&) = delete;

    /// A field that the owner's class has anyway; null is refused with an error.
    void add(const SbName& name, SoField* field);
    /// A new field of a registered field type. Null when there is no such type, or when there is a
    /// field of that name already.
    SoField* declare(const SbName& type, const SbName& name,
                     SoField::FieldType kind = SoField::ORDINARY);
    /// Takes the values of a table of the same class, and declares what that declares.
    void copy(const SoDeclaredFields& from, SoNodeCopier& copier);

    const SoFieldData* getData() const { return &m_data; }
    int getNumDeclared() const { return static_cast<int>(m_fields.size()); }
    /// Null, and the empty name, for an index out of range.
    SoField* getDeclared(int index) const
    {
        if (!kalmyr::holds(index >= 0 && index < getNumDeclared(), "0 <= index < getNumDeclared()"))
            return nullptr;
        return m_fields[static_cast<std::size_t>(index)].get();
    }
    SbName getDeclaredName(int index) const { return m_data.getFieldName(m_numOwn + index); }

private:
    SoFieldContainer* m_owner; // Not owned; it owns us.
    SoFieldData m_data;
    std::vector<std::unique_ptr<SoField>> m_fields;
    int m_numOwn = 0;
};
