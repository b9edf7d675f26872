#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbString.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string_view>

/// An interned text: a handle of one pointer whose comparison costs one instruction.
/// Texts are kept for the life of the process. Making and reading names is safe in any thread;
/// making a name that exists already takes no lock and allocates nothing.
class SbName {
public:
    /// The empty name.
    constexpr SbName() = default;
    /// A null pointer stands for the empty name.
    SbName(const char* text) : m_entry(intern(kalmyr::detail::viewOf(text))) {}
    SbName(const SbString& text) : m_entry(intern(text.view())) {}
    template <kalmyr::detail::TextClass S>
    requires(!std::is_same_v<S, SbName>) SbName(const S& text)
        : m_entry(intern(std::string_view(text)))
    {
    }

    static constexpr SbName empty() { return SbName(); }

    /// The name with this text if anybody has made it so far, else the empty name. Never allocates.
    static SbName find(std::string_view text) { return SbName(lookUp(text)); }

    /// The text, terminated by a zero; valid for the life of the process.
    const char* getString() const { return m_entry ? m_entry->text() : ""; }
    /// Length in bytes.
    std::size_t getLength() const { return m_entry ? m_entry->length : 0; }
    bool isEmpty() const { return !m_entry; }
    /// True for a name that is not empty.
    explicit operator bool() const { return m_entry; }
    std::string_view view() const
    {
        return m_entry ? std::string_view(m_entry->text(), m_entry->length) : std::string_view("");
    }
    operator std::string_view() const { return view(); }

    /// Characters of identifiers such as type, field and part names: letters, digits (not first),
    /// underscore.
    static constexpr bool isIdentStartChar(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    }
    static constexpr bool isIdentChar(char c) { return isIdentStartChar(c) || isDigit(c); }
    /// Characters of names given to nodes, as files can carry them: anything visible except digits
    /// (not first) and `" # ' + , - . \ [ ] { }`, of which `+ -` are allowed after the first. Bytes
    /// of multi-byte UTF-8 characters are allowed.
    static constexpr bool isBaseNameStartChar(char c)
    {
        return isBaseNameChar(c) && !isDigit(c) && c != '+' && c != '-';
    }
    static constexpr bool isBaseNameChar(char c)
    {
        const auto u = static_cast<unsigned char>(c);
        return u > 0x20 && u != 0x7f
               && std::string_view("\"#',.\\[]{}").find(c) == std::string_view::npos;
    }

    /// A number that is equal for equal names, stable while the process lives.
    std::size_t hash() const { return m_entry ? m_entry->hash : 0; }

    friend constexpr bool operator==(SbName a, SbName b) { return a.m_entry == b.m_entry; }
    friend bool operator==(SbName a, const char* b)
    {
        return a.view() == kalmyr::detail::viewOf(b);
    }
    friend bool operator==(SbName a, const SbString& b) { return a.view() == b.view(); }
    template <kalmyr::detail::TextClass S>
    requires(!std::is_same_v<S, SbName>) friend bool operator==(SbName a, const S& b)
    {
        return a.view() == std::string_view(b);
    }
    /// Alphabetical order by byte values, the same in every run.
    friend bool operator<(SbName a, SbName b)
    {
        return a.m_entry != b.m_entry && a.view() < b.view();
    }

    template <typename Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                                        SbName n)
    {
        return out << n.view();
    }

private:
    friend class SbNameTable;

    struct Entry {
        std::size_t hash;
        std::uint32_t length;
        const char* text() const { return reinterpret_cast<const char*>(this + 1); }
    };

    explicit constexpr SbName(const Entry* entry) : m_entry(entry) {}
    static constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
    KALMYRBASE_API static const Entry* intern(std::string_view text);
    KALMYRBASE_API static const Entry* lookUp(std::string_view text);

    // Null for the empty name. Not owned; the table keeps it for ever.
    const Entry* m_entry = nullptr;
};

template <>
struct std::hash<SbName> {
    std::size_t operator()(SbName n) const noexcept { return n.hash(); }
};
