#include <kalmyr/base/SbImage.h>

#include <algorithm>
#include <utility>

namespace {

// 0 for sizes that no image has.
std::size_t bytesFor(const SbVec3i32& size, int components)
{
    if (components < 1 || components > 4) {
        return 0;
    }
    std::size_t bytes = components;
    for (int i = 0; i < 3; ++i) {
        const int n = i == 2 && size[i] == 0 ? 1 : size[i];
        if (n <= 0 || bytes > SbImage::kMaxBytes / n) {
            return 0;
        }
        bytes *= n;
    }
    return bytes;
}

bool isEmptySize(const SbVec3i32& size, int components)
{
    const bool sane =
        size[0] >= 0 && size[1] >= 0 && size[2] >= 0 && components >= 0 && components <= 4;
    return sane && (size[0] == 0 || size[1] == 0);
}

} // namespace

bool SbImage::setValue(const SbVec2i32& size, int components, const unsigned char* bytes)
{
    return setValue(SbVec3i32(size, 0), components, bytes);
}

bool SbImage::setValue(const SbVec3i32& size, int components, const unsigned char* bytes)
{
    const std::size_t count = bytesFor(size, components);
    std::vector<unsigned char> copy;
    if (bytes) {
        copy.assign(bytes, bytes + count);
    } else {
        copy.resize(count);
    }
    return adopt(size, components, std::move(copy));
}

bool SbImage::adopt(const SbVec3i32& size, int components, std::vector<unsigned char>&& bytes)
{
    const std::size_t count = bytesFor(size, components);
    makeNull();
    if (count == 0 || bytes.size() != count) {
        return isEmptySize(size, components) && bytes.empty();
    }
    m_bytes = std::make_shared<std::vector<unsigned char>>(std::move(bytes));
    m_size = size;
    m_components = components;
    return true;
}

bool SbImage::hasTransparency() const
{
    if (m_components != 2 && m_components != 4) {
        return false;
    }
    for (std::size_t i = m_components - 1; i < m_bytes->size(); i += m_components) {
        if ((*m_bytes)[i] != 255) {
            return true;
        }
    }
    return false;
}

unsigned char* SbImage::edit()
{
    if (m_bytes && m_bytes.use_count() > 1) {
        m_bytes = std::make_shared<std::vector<unsigned char>>(*m_bytes);
    }
    return m_bytes ? m_bytes->data() : nullptr;
}

bool operator==(const SbImage& a, const SbImage& b)
{
    return a.m_size == b.m_size && a.m_components == b.m_components
           && (a.m_bytes == b.m_bytes || (a.m_bytes && b.m_bytes && *a.m_bytes == *b.m_bytes));
}
