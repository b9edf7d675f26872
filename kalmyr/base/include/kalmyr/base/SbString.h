#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SoContract.h>

#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <type_traits>

class SbName;
class SbString;

namespace kalmyr::detail {

/// Class types that hand out their text as a std::string_view, SbString itself excepted.
template <typename S>
concept TextClass = std::is_class_v<S> && !std::is_base_of_v<
                        SbString, S> && std::is_convertible_v<const S&, std::string_view>;

constexpr std::string_view viewOf(const char* text)
{
    return text ? std::string_view(text) : std::string_view();
}

} // namespace kalmyr::detail

/// A text in UTF-8. Lengths and positions are bytes, not characters.
/// Any bytes may be kept; invalid UTF-8 becomes U+FFFD only when it is converted.
class SbString {
public:
    /// The position that means "not found" and the length that means "to the end".
    static constexpr std::size_t npos = std::string::npos;

    SbString() = default;
    /// A null pointer stands for the empty text.
    SbString(const char* text) : m_text(kalmyr::detail::viewOf(text)) {}
    SbString(std::string text) : m_text(std::move(text)) {}
    template <kalmyr::detail::TextClass S>
    requires(!std::is_same_v<S, std::string>) SbString(const S& text)
        : m_text(std::string_view(text))
    {
    }
    /// `length` bytes starting at `text`; they may contain zeros. Empty, with an error posted, for
    /// a null pointer to some bytes.
    SbString(const char* text, std::size_t length)
    {
        if (kalmyr::holds(text || length == 0, "text of length bytes"))
            m_text.assign(text ? text : "", length);
    }
    /// A number in decimal; floats in the shortest form that reads back the same.
    explicit SbString(int number) : m_text(std::to_string(number)) {}
    explicit SbString(unsigned int number) : m_text(std::to_string(number)) {}
    explicit SbString(long long number) : m_text(std::to_string(number)) {}
    explicit SbString(std::size_t number) : m_text(std::to_string(number)) {}
    KALMYRBASE_API explicit SbString(float number);
    KALMYRBASE_API explicit SbString(double number);

    /// The bytes, terminated by a zero; valid until the text changes.
    const char* getString() const { return m_text.c_str(); }
    /// Length in bytes.
    std::size_t getLength() const { return m_text.size(); }
    bool isEmpty() const { return m_text.empty(); }
    void makeEmpty() { m_text.clear(); }
    const std::string& toStdString() const { return m_text; }
    operator std::string_view() const { return m_text; }
    std::string_view view() const { return m_text; }

    /// A byte, or the zero behind the last one; zero, with an error posted, for positions beyond.
    char operator[](std::size_t i) const
    {
        return kalmyr::holds(i <= m_text.size(), "position <= getLength()") ? m_text[i] : '\0';
    }
    /// A byte for writing. Positions at or beyond the end give a byte that stands for none.
    char& operator[](std::size_t i)
    {
        return kalmyr::holds(i < m_text.size(), "position < getLength()") ? m_text[i] : noByte();
    }

    auto begin() const { return m_text.begin(); }
    auto end() const { return m_text.end(); }

    /// The bytes from `start` to `end` inclusive, clipped to the text.
    KALMYRBASE_API SbString getSubString(std::size_t start, std::size_t end = npos) const;
    /// Removes the bytes from `start` to `end` inclusive, clipped to the text.
    KALMYRBASE_API void deleteSubString(std::size_t start, std::size_t end = npos);

    /// First position of `part` at or after `start`, or npos.
    std::size_t find(std::string_view part, std::size_t start = 0) const
    {
        return m_text.find(part, start);
    }
    /// Last position of `part`, or npos.
    std::size_t rfind(std::string_view part) const { return m_text.rfind(part); }
    bool contains(std::string_view part) const { return find(part) != npos; }
    bool startsWith(std::string_view part) const { return m_text.starts_with(part); }
    bool endsWith(std::string_view part) const { return m_text.ends_with(part); }

    /// Copies with the letters A to Z changed; all other characters stay as they are.
    KALMYRBASE_API SbString lower() const;
    KALMYRBASE_API SbString upper() const;
    /// A copy without blanks, tabs, line ends and other ASCII white space at both ends.
    KALMYRBASE_API SbString trim() const;
    /// A copy in which every `from` is replaced by `to`. An empty `from` changes nothing.
    KALMYRBASE_API SbString replaced(std::string_view from, std::string_view to) const;

    /// Conversion to UTF-16. Each maximal broken UTF-8 sequence becomes one U+FFFD.
    KALMYRBASE_API std::u16string toUtf16() const;
    /// Conversion from UTF-16. Lone surrogates become U+FFFD.
    KALMYRBASE_API static SbString fromUtf16(std::u16string_view text);
    /// Conversion to Latin-1. Characters beyond U+00FF become '?'.
    KALMYRBASE_API std::string toLatin1() const;
    KALMYRBASE_API static SbString fromLatin1(std::string_view text);
    /// Whether the bytes are well-formed UTF-8.
    KALMYRBASE_API bool isValidUtf8() const;

    /// A text written as by printf, of any length. Numbers follow the C locale's rules of the
    /// process; use SbNumber for numbers that go into files.
    KALMYRBASE_API static SbString format(const char* pattern, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 1, 2)))
#endif
        ;

    SbString& operator+=(const SbString& other)
    {
        m_text += other.m_text;
        return *this;
    }
    template <kalmyr::detail::TextClass S>
    SbString& operator+=(const S& other)
    {
        m_text += std::string_view(other);
        return *this;
    }
    SbString& operator+=(const char* other)
    {
        return *this += kalmyr::detail::viewOf(other);
    }
    SbString& operator+=(char c)
    {
        m_text += c;
        return *this;
    }

    friend SbString operator+(SbString a, const SbString& b)
    {
        return std::move(a += b);
    }
    friend SbString operator+(SbString a, const char* b)
    {
        return std::move(a += b);
    }
    friend SbString operator+(const char* a, const SbString& b)
    {
        return SbString(a) + b;
    }
    friend SbString operator+(SbString a, char b)
    {
        return std::move(a += b);
    }
    template <kalmyr::detail::TextClass S>
    friend SbString operator+(SbString a, const S& b)
    {
        return std::move(a += std::string_view(b));
    }
    template <kalmyr::detail::TextClass S>
    friend SbString operator+(const S& a, const SbString& b)
    {
        return SbString(std::string_view(a)) + b;
    }

    friend bool operator==(const SbString& a, const SbString& b)
    {
        return a.m_text == b.m_text;
    }
    friend bool operator==(const SbString& a, const char* b)
    {
        return a.m_text == kalmyr::detail::viewOf(b);
    }
    template <kalmyr::detail::TextClass S>
    requires(!std::is_same_v<S, SbName>) friend bool operator==(const SbString& a, const S& b)
    {
        return a.view() == std::string_view(b);
    }
    /// Order by byte values.
    friend std::strong_ordering operator<=>(const SbString& a, const SbString& b)
    {
        return a.m_text <=> b.m_text;
    }

    template <typename Traits>
    friend std::basic_ostream<char, Traits>& operator<<(std::basic_ostream<char, Traits>& out,
                                                        const SbString& s)
    {
        return out << s.view();
    }

private:
    static char& noByte()
    {
        thread_local char byte;
        return byte = '\0';
    }

    std::string m_text;
};

template <>
struct std::hash<SbString> {
    std::size_t operator()(const SbString& s) const noexcept
    {
        return std::hash<std::string_view>()(s.view());
    }
};
