#include "rendering/GLTextures.h"

#include <kalmyr/base/SoDebugError.h>

#include <algorithm>
#include <vector>

namespace kalmyr::detail {

namespace {

void setWraps(GLenum target, const SoTextureValues& values, SoTextureValues::Wrap wrapR)
{
    const auto wrap = [target](SoTextureValues::Wrap w) {
        return w == SoTextureValues::CLAMP || target == GL_TEXTURE_CUBE_MAP ? GL_CLAMP_TO_EDGE
                                                                            : GL_REPEAT;
    };
    glTexParameteri(target, GL_TEXTURE_WRAP_S, wrap(values.wrapS));
    glTexParameteri(target, GL_TEXTURE_WRAP_T, wrap(values.wrapT));
    glTexParameteri(target, GL_TEXTURE_WRAP_R, wrap(wrapR));
}

void setGrey(GLenum target, bool withAlpha)
{
    const GLint swizzle[] = {GL_RED, GL_RED, GL_RED, withAlpha ? GL_GREEN : GL_ONE};
    glTexParameteriv(target, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
}

GLint limitOf(SoTextureStage::Kind kind)
{
    GLint limit = 0;
    glGetIntegerv(kind == SoTextureStage::VOLUME ? GL_MAX_3D_TEXTURE_SIZE
                  : kind == SoTextureStage::CUBE ? GL_MAX_CUBE_MAP_TEXTURE_SIZE
                                                 : GL_MAX_TEXTURE_SIZE,
                  &limit);
    return limit;
}

/// Where the pixels of one row of `from` go that become `to`: the mean of each run of pixels.
void shrinkRow(const unsigned char* in, int from, int to, int components, std::size_t step,
               std::vector<float>& sums)
{
    for (int x = 0; x < to; ++x) {
        const auto first = static_cast<std::int64_t>(x) * from / to;
        const auto last = std::max(first + 1, (static_cast<std::int64_t>(x) + 1) * from / to);
        for (int c = 0; c < components; ++c) {
            float sum = 0;
            for (std::int64_t i = first; i < last; ++i) {
                sum += in[static_cast<std::size_t>(i) * step + static_cast<std::size_t>(c)];
            }
            sums[static_cast<std::size_t>(x * components + c)] +=
                sum / static_cast<float>(last - first);
        }
    }
}

/// The mean of the pixels that fall together.
SbImage shrink(const SbImage& image, const SbVec3i32& size)
{
    const int n = image.getComponents();
    const auto rowBytes = static_cast<std::size_t>(image.getWidth()) * static_cast<std::size_t>(n);
    std::vector<unsigned char> bytes;
    std::vector<float> sums(static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(n));
    const auto range = [](int i, int from, int to) {
        const auto first = static_cast<std::int64_t>(i) * from / to;
        return std::pair(first,
                         std::max(first + 1, (static_cast<std::int64_t>(i) + 1) * from / to));
    };
    const int slices = std::max(1, image.getDepth());
    for (int z = 0; z < std::max(1, size[2]); ++z) {
        const auto [z0, z1] = range(z, slices, std::max(1, size[2]));
        for (int y = 0; y < size[1]; ++y) {
            const auto [y0, y1] = range(y, image.getHeight(), size[1]);
            std::fill(sums.begin(), sums.end(), 0.0f);
            for (std::int64_t slice = z0; slice < z1; ++slice) {
                for (std::int64_t row = y0; row < y1; ++row) {
                    const auto at = static_cast<std::size_t>(slice * image.getHeight() + row);
                    shrinkRow(image.getBytes() + at * rowBytes, image.getWidth(), size[0], n,
                              static_cast<std::size_t>(n), sums);
                }
            }
            const auto rows = static_cast<float>((z1 - z0) * (y1 - y0));
            for (const float sum : sums) {
                bytes.push_back(static_cast<unsigned char>(sum / rows + 0.5f));
            }
        }
    }
    SbImage small;
    small.adopt(size, n, std::move(bytes));
    return small;
}

/// The image itself, or, beyond the limit of the context, a smaller one.
SbImage fitted(const SbImage& image, SoTextureStage::Kind kind)
{
    const GLint limit = limitOf(kind);
    SbVec3i32 size = image.getSize3();
    for (int i = 0; i < 3; ++i) {
        if (i < 2 || kind == SoTextureStage::VOLUME) {
            size[i] = std::min(size[i], limit);
        }
    }
    if (size == image.getSize3()) {
        return image;
    }
    static std::map<const unsigned char*, SbVec3i32> told; // drawing is one thread's at a time
    if (told.try_emplace(image.getBytes(), image.getSize3()).second) {
        SoDebugError::postWarning("rendering",
                                  "a texture of %d by %d pixels is shown with %d by %d, the limit "
                                  "of the graphics card",
                                  image.getWidth(), image.getHeight(), size[0], size[1]);
    }
    return shrink(image, size);
}

constexpr GLenum kFormats[] = {GL_RED, GL_RG, GL_RGB, GL_RGBA};
constexpr GLint kStored[] = {GL_R8, GL_RG8, GL_RGB8, GL_RGBA8};

/// Coordinates of cube maps run as if the sides were seen from outside, so that upright pictures
/// seen from the middle go in reverse; those of top and bottom fit.
void uploadSides(const SbImage& image)
{
    const auto n = static_cast<std::size_t>(image.getComponents());
    const std::size_t pixels =
        static_cast<std::size_t>(image.getWidth()) * static_cast<std::size_t>(image.getHeight());
    std::vector<unsigned char> turned(pixels * n);
    for (unsigned side = 0; side < 6; ++side) {
        const unsigned char* from = image.getBytes() + side * pixels * n;
        const bool isUpright = side < 2 || side > 3;
        for (std::size_t i = 0; i < pixels; ++i) {
            const std::size_t at = isUpright ? pixels - 1 - i : i;
            std::copy_n(from + at * n, n, turned.data() + i * n);
        }
        glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + side, 0, kStored[n - 1], image.getWidth(),
                     image.getHeight(), 0, kFormats[n - 1], GL_UNSIGNED_BYTE, turned.data());
    }
}

void uploadLevels(const SbImage& image, SoTextureStage::Kind kind)
{
    const auto i = static_cast<std::size_t>(image.getComponents() - 1);
    switch (kind) {
    case SoTextureStage::VOLUME:
        glTexImage3D(GL_TEXTURE_3D, 0, kStored[i], image.getWidth(), image.getHeight(),
                     std::max(1, image.getDepth()), 0, kFormats[i], GL_UNSIGNED_BYTE,
                     image.getBytes());
        break;
    case SoTextureStage::CUBE:
        uploadSides(image);
        break;
    default:
        glTexImage2D(GL_TEXTURE_2D, 0, kStored[i], image.getWidth(), image.getHeight(), 0,
                     kFormats[i], GL_UNSIGNED_BYTE, image.getBytes());
    }
    glGenerateMipmap(targetOf(kind));
}

GLuint uploadTexture(const SbImage& given, SoTextureStage::Kind kind)
{
    if (given.getComponents() < 1 || given.getComponents() > 4
        || (kind == SoTextureStage::CUBE && given.getDepth() != 6)) {
        return 0;
    }
    const SbImage image = fitted(given, kind);
    const GLenum target = targetOf(kind);
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(target, name);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    uploadLevels(image, kind);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    if (image.getComponents() < 3) {
        setGrey(target, image.getComponents() == 2);
    }
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    return name;
}

} // namespace

std::uint32_t wrapsOf(const SoTextureValues& values, SoTextureValues::Wrap wrapR)
{
    const auto bit = [](SoTextureValues::Wrap wrap) {
        return wrap == SoTextureValues::CLAMP ? 1u : 0u;
    };
    return 8u | bit(values.wrapS) << 2 | bit(values.wrapT) << 1 | bit(wrapR);
}

GLenum targetOf(SoTextureStage::Kind kind)
{
    return kind == SoTextureStage::VOLUME ? GL_TEXTURE_3D
           : kind == SoTextureStage::CUBE ? GL_TEXTURE_CUBE_MAP
                                          : GL_TEXTURE_2D;
}

GLuint GLTextures::find(const SoTextureValues& values, std::uint64_t frame,
                        SoTextureStage::Kind kind, SoTextureValues::Wrap wrapR)
{
    if (values.image.isNull()) {
        return 0;
    }
    const auto [found, isNew] = m_textures.try_emplace({values.image.getBytes(), kind});
    Texture& texture = found->second;
    if (isNew) {
        texture.image = values.image;
        texture.name = uploadTexture(values.image, kind);
    }
    texture.frame = frame;
    const std::uint32_t wraps = wrapsOf(values, wrapR);
    if (texture.name && texture.wraps != wraps) {
        glBindTexture(targetOf(kind), texture.name);
        setWraps(targetOf(kind), values, wrapR);
        texture.wraps = wraps;
    }
    return texture.name;
}

void GLTextures::freeOld(std::uint64_t frame)
{
    std::erase_if(m_textures, [frame](const auto& entry) {
        const bool old = entry.second.frame + kKeptFrames < frame;
        if (old) {
            glDeleteTextures(1, &entry.second.name);
        }
        return old;
    });
}

void GLTextures::freeAll()
{
    for (const auto& [key, texture] : m_textures) {
        glDeleteTextures(1, &texture.name);
    }
    m_textures.clear();
}

} // namespace kalmyr::detail
