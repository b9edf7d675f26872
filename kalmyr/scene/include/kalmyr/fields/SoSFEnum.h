#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbName.h>
#include <kalmyr/base/SoContract.h>
#include <kalmyr/fields/SoMFValue.h>
#include <kalmyr/fields/SoSFValue.h>

#include <span>

/// One named value. Names are string constants; tables of them live as long as the process.
struct SoEnumEntry {
    const char* name;
    int value;
};

namespace kalmyr {

/// Value of a name; false when there is none.
KALMYR_API bool findEnumValue(std::span<const SoEnumEntry> enums, std::string_view name,
                              int& value);
/// Value and name number `index`; 0 and the empty name, with an error posted, out of range.
KALMYR_API int enumAt(std::span<const SoEnumEntry> enums, int index, SbName& name);
/// First name of a value, or null.
KALMYR_API const char* findEnumName(std::span<const SoEnumEntry> enums, int value);

/// By name, or as a number.
KALMYR_API bool readEnum(SoTokenizer& in, std::span<const SoEnumEntry> enums, int& value);
/// The name, or the number of a value without one.
KALMYR_API void writeEnum(std::string& out, std::span<const SoEnumEntry> enums, int value);
/// A name or number, or several as "(A | B)". NONE is 0, and ALL every named bit.
KALMYR_API bool readBitMask(SoTokenizer& in, std::span<const SoEnumEntry> enums, int& value);
KALMYR_API void writeBitMask(std::string& out, std::span<const SoEnumEntry> enums, int value);

} // namespace kalmyr

/// Base of single-value fields with named values: their table of names.
template <class Derived>
class SoNamedValue : public SoSFValue<Derived, int> {
public:
    /// Gives the values names; the table is not copied. Not a change of the field.
    /// A table of 65,536 names or more is refused with an error.
    void setEnums(std::span<const SoEnumEntry> enums)
    {
        if (!kalmyr::holds(enums.size() < (1u << (32 - kCountShift)), "fewer than 65536 names"))
            return;
        m_enums = enums.data();
        this->changeFlags(~((1u << kCountShift) - 1), static_cast<std::uint32_t>(enums.size())
                                                          << kCountShift);
    }
    std::span<const SoEnumEntry> getEnums() const
    {
        return {m_enums, this->flags() >> kCountShift};
    }
    int getNumEnums() const { return static_cast<int>(getEnums().size()); }
    /// Value and name number `index`, in the order of the table; 0 and the empty name, with an
    /// error posted, for an index out of range.
    int getEnum(int index, SbName& name) const { return kalmyr::enumAt(getEnums(), index, name); }
    /// False for an unknown name.
    bool findEnumValue(const SbName& name, int& value) const
    {
        return kalmyr::findEnumValue(getEnums(), name.view(), value);
    }

    using SoSFValue<Derived, int>::operator=;
    using SoSFValue<Derived, int>::setValue;
    /// An unknown name leaves the field as it is and is false.
    bool setValue(const SbName& name)
    {
        int value = 0;
        if (!findEnumValue(name, value)) {
            return false;
        }
        setValue(value);
        return true;
    }

protected:
    void prepareTwin(SoField& twin) const override
    {
        static_cast<Derived&>(twin).setEnums(getEnums());
    }

private:
    // The number of names has its place above the flags: nodes have many such fields.
    static constexpr int kCountShift = 16;

    const SoEnumEntry* m_enums = nullptr; // Not owned; a constant table.
};

/// One of a set of named values. Without a table it holds plain numbers.
class KALMYR_API SoSFEnum final : public SoNamedValue<SoSFEnum> {
    SO_FIELD_HEADER(SoSFEnum)
    SO_FIELD_ASSIGNMENT(SoSFEnum, SoNamedValue)

    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;
};

/// Any combination of a set of named bits.
class KALMYR_API SoSFBitMask final : public SoNamedValue<SoSFBitMask> {
    SO_FIELD_HEADER(SoSFBitMask)
    SO_FIELD_ASSIGNMENT(SoSFBitMask, SoNamedValue)

    bool readValue(SoFieldReader& in) override;
    void writeValue(SoFieldWriter& out) const override;
};

/// Several of a set of named values.
class KALMYR_API SoMFEnum final : public SoMFValue<SoMFEnum, int> {
    SO_FIELD_HEADER(SoMFEnum)
    SO_FIELD_ASSIGNMENT(SoMFEnum, SoMFValue)

    /// Gives the values names; the table is not copied. Not a change of the field.
    void setEnums(std::span<const SoEnumEntry> enums) { m_enums = enums; }
    std::span<const SoEnumEntry> getEnums() const { return m_enums; }
    int getNumEnums() const { return static_cast<int>(m_enums.size()); }
    /// Value and name number `index`, in the order of the table; 0 and the empty name, with an
    /// error posted, for an index out of range.
    int getEnum(int index, SbName& name) const { return kalmyr::enumAt(m_enums, index, name); }
    /// False for an unknown name.
    bool findEnumValue(const SbName& name, int& value) const
    {
        return kalmyr::findEnumValue(m_enums, name.view(), value);
    }

protected:
    void prepareTwin(SoField& twin) const override;

private:
    friend class SoMFValue<SoMFEnum, int>;
    static constexpr bool kOwnText = true;
    bool readItem(SoFieldReader& in, int& value) const;
    void writeItem(SoFieldWriter& out, int value) const;

    std::span<const SoEnumEntry> m_enums;
};
