#pragma once

#include <kalmyr/base/Export.h>
#include <kalmyr/base/SbVec.h>

#include <cstddef>
#include <memory>
#include <vector>

/// A picture in memory: 1 (grey), 2 (grey, alpha), 3 (RGB) or 4 (RGBA) bytes a pixel, rows from
/// bottom to top without padding, slices of a volume one after another. Copies share their pixels
/// until one is edited.
class SbImage {
public:
    /// More bytes than this are refused.
    static constexpr std::size_t kMaxBytes = std::size_t(1) << 31;

    /// The null image: no size, no pixels.
    SbImage() = default;
    SbImage(const SbVec2i32& size, int components, const unsigned char* bytes = nullptr)
    {
        setValue(size, components, bytes);
    }

    /// Copies the pixels; without `bytes` they become 0. False, and a null image, for negative
    /// sizes, other numbers of components, or too many bytes. A size of 0 gives a null image and is
    /// no mistake.
    KALMYRBASE_API bool setValue(const SbVec2i32& size, int components,
                                 const unsigned char* bytes = nullptr);
    /// A volume; depth 0 means a flat picture.
    KALMYRBASE_API bool setValue(const SbVec3i32& size, int components,
                                 const unsigned char* bytes = nullptr);
    /// Takes over pixels that are there already; their number must fit the size.
    KALMYRBASE_API bool adopt(const SbVec3i32& size, int components,
                              std::vector<unsigned char>&& bytes);

    bool isNull() const { return !m_bytes; }
    void makeNull() { *this = SbImage(); }
    int getWidth() const { return m_size[0]; }
    int getHeight() const { return m_size[1]; }
    /// 0 for a flat picture.
    int getDepth() const { return m_size[2]; }
    int getComponents() const { return m_components; }
    SbVec2i32 getSize() const { return {m_size[0], m_size[1]}; }
    const SbVec3i32& getSize3() const { return m_size; }
    std::size_t getByteCount() const { return m_bytes ? m_bytes->size() : 0; }
    /// Whether some pixel is not fully opaque.
    KALMYRBASE_API bool hasTransparency() const;

    /// The pixels, or null for a null image. Valid until this image is changed.
    const unsigned char* getBytes() const { return m_bytes ? m_bytes->data() : nullptr; }
    const unsigned char* getValue(SbVec2i32& size, int& components) const
    {
        size = getSize();
        components = m_components;
        return getBytes();
    }
    /// The pixels for writing; parts from copies that shared them.
    KALMYRBASE_API unsigned char* edit();
    /// The address of a pixel of the first slice; unchecked, for it stands in loops over pixels.
    const unsigned char* getPixel(int x, int y) const
    {
        return getBytes() + (static_cast<std::size_t>(y) * m_size[0] + x) * m_components;
    }

    /// Same size, components and pixels.
    KALMYRBASE_API friend bool operator==(const SbImage& a, const SbImage& b);

private:
    SbVec3i32 m_size;
    int m_components = 0;
    std::shared_ptr<std::vector<unsigned char>> m_bytes;
};
