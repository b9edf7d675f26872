#include "Deflate.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>

namespace kalmyr::detail {

struct Deflater::Stream {
    z_stream zlib{};
};

Deflater::Deflater(int level) : m_stream(std::make_unique<Stream>())
{
    // The only failure, the library being the one that was compiled against.
    if (deflateInit(&m_stream->zlib, level) != Z_OK)
        throw std::bad_alloc();
}

Deflater::~Deflater()
{
    deflateEnd(&m_stream->zlib);
}

void Deflater::run(std::string_view bytes, int flush)
{
    std::array<unsigned char, 1 << 15> part;
    z_stream& zlib = m_stream->zlib;
    zlib.next_in = reinterpret_cast<unsigned char*>(const_cast<char*>(bytes.data()));
    zlib.avail_in = static_cast<uInt>(bytes.size());
    do {
        zlib.next_out = part.data();
        zlib.avail_out = static_cast<uInt>(part.size());
        deflate(&zlib, flush);
        m_packed.append(reinterpret_cast<const char*>(part.data()), part.size() - zlib.avail_out);
    } while (zlib.avail_out == 0);
}

void Deflater::add(std::string_view bytes)
{
    constexpr std::size_t kMost = std::numeric_limits<uInt>::max();
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kMost)))
        run(bytes.substr(0, kMost), Z_NO_FLUSH);
}

std::string Deflater::finish()
{
    run({}, Z_FINISH);
    return std::move(m_packed);
}

std::string deflateBytes(std::string_view bytes, int level)
{
    Deflater deflater(level);
    deflater.add(bytes);
    return deflater.finish();
}

} // namespace kalmyr::detail
