#include "rendering/GLTextures.h"

#include <kalmyr/base/SoError.h>

namespace kalmyr::detail {

namespace {

void setWraps(const SoTextureValues& values)
{
    const auto wrap = [](SoTextureValues::Wrap w) {
        return w == SoTextureValues::CLAMP ? GL_CLAMP_TO_EDGE : GL_REPEAT;
    };
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap(values.wrapS));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap(values.wrapT));
}

void setGrey(bool withAlpha)
{
    const GLint swizzle[] = {GL_RED, GL_RED, GL_RED, withAlpha ? GL_GREEN : GL_ONE};
    glTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_SWIZZLE_RGBA, swizzle);
}

GLuint uploadTexture(const SbImage& image)
{
    constexpr GLenum kFormats[] = {GL_RED, GL_RG, GL_RGB, GL_RGBA};
    constexpr GLint kStored[] = {GL_R8, GL_RG8, GL_RGB8, GL_RGBA8};
    const int components = image.getComponents();
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    if (components < 1 || components > 4 || image.getWidth() > limit || image.getHeight() > limit) {
        SoError::post("rendering: a texture of %d by %d pixels is larger than the limit of %d",
                      image.getWidth(), image.getHeight(), limit);
        return 0;
    }
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    glTexImage2D(GL_TEXTURE_2D, 0, kStored[components - 1], image.getWidth(), image.getHeight(), 0,
                 kFormats[components - 1], GL_UNSIGNED_BYTE, image.getBytes());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    if (components < 3) {
        setGrey(components == 2);
    }
    glGenerateMipmap(GL_TEXTURE_2D);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    return name;
}

} // namespace

std::uint32_t wrapsOf(const SoTextureValues& values)
{
    return static_cast<std::uint32_t>(values.wrapS) << 16
           | static_cast<std::uint32_t>(values.wrapT);
}

GLuint GLTextures::find(const SoTextureValues& values, std::uint64_t frame)
{
    if (values.image.isNull()) {
        return 0;
    }
    const auto [found, isNew] = m_textures.try_emplace(values.image.getBytes());
    Texture& texture = found->second;
    if (isNew) {
        texture.image = values.image;
        texture.name = uploadTexture(values.image);
    }
    texture.frame = frame;
    if (texture.name && texture.wraps != wrapsOf(values)) {
        glBindTexture(GL_TEXTURE_2D, texture.name);
        setWraps(values);
        texture.wraps = wrapsOf(values);
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
    for (const auto& [bytes, texture] : m_textures) {
        glDeleteTextures(1, &texture.name);
    }
    m_textures.clear();
}

} // namespace kalmyr::detail
