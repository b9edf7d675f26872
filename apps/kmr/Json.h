#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Writes one JSON value without line breaks. Text that is no UTF-8 is taken as Latin-1, byte by
/// byte.
class Json {
public:
    Json& beginObject() { return open('{'); }
    Json& endObject() { return close('}'); }
    Json& beginArray() { return open('['); }
    Json& endArray() { return close(']'); }
    Json& key(std::string_view name);
    Json& value(std::string_view text);
    Json& value(const char* text) { return value(std::string_view(text)); }
    Json& value(bool on) { return raw(on ? "true" : "false"); }
    Json& value(std::uint64_t number) { return raw(std::to_string(number)); }
    Json& value(int number) { return raw(std::to_string(number)); }
    /// Infinities and what is no number become null.
    Json& value(double number);
    Json& null() { return raw("null"); }

    const std::string& text() const { return m_text; }

private:
    Json& open(char c);
    Json& close(char c);
    Json& raw(std::string_view text);
    void separate();
    void appendString(std::string_view text);

    std::string m_text;
    bool m_first = true;
};
