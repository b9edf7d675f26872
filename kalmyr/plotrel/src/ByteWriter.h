#pragma once

#include <kalmyr/base/Export.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace kalmyr::detail {

/// Collects bytes on their way into a file. Failures of the file are kept: after the first one
/// nothing more is written.
class PLOTREL_API ByteWriter {
public:
    /// `file` is not owned; null: the bytes stay in memory, see take().
    explicit ByteWriter(std::FILE* file) : m_file(file) {}
    ~ByteWriter() { flush(); }
    ByteWriter(const ByteWriter&) = delete;
    ByteWriter& operator=(const ByteWriter&) = delete;

    void write(std::string_view bytes)
    {
        m_buffer.append(bytes);
        m_written += bytes.size();
        if (m_file && m_buffer.size() >= kBufferSize)
            flush();
    }
    /// A number in the locale-free shortest form with at most `decimals` decimals and no exponent.
    /// Values that are not finite are written as 0: the formats have no form for them.
    void number(double value, int decimals = 3);
    void integer(long long value);

    /// Binary numbers, the low or the high byte first.
    template <class T>
    void little(T value)
    {
        put(value, false);
    }
    template <class T>
    void big(T value)
    {
        put(value, true);
    }

    /// Bytes written so far, from the first one on.
    std::size_t position() const { return m_written; }
    /// Brings everything into the file. False when that, or an earlier writing, failed.
    bool flush();
    /// Returns the bytes written into memory, and forgets them.
    std::string take() { return std::move(m_buffer); }

private:
    static constexpr std::size_t kBufferSize = 1 << 16;

    template <class T>
    void put(T value, bool bigEndian)
    {
        std::array<char, sizeof(T)> bytes;
        std::memcpy(bytes.data(), &value, sizeof(T));
        if (bigEndian)
            for (std::size_t i = 0; i < sizeof(T) / 2; ++i)
                std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
        write({bytes.data(), bytes.size()});
    }

    std::FILE* m_file; // Not owned.
    std::string m_buffer;
    std::size_t m_written = 0;
    bool m_failed = false;
};

} // namespace kalmyr::detail
