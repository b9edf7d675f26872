#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/elements/SoTextureElement.h>

#include <epoxy/gl.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace kalmyr::detail {

/// How a texture goes on beyond its edges, as one number.
std::uint32_t wrapsOf(const SoTextureValues& values);

/// The texture objects of one context, by the pixels that they show. Those that were not asked for
/// in a number of frames are freed.
class GLTextures {
public:
    /// The texture object of an image; 0 for images that cannot be textures.
    GLuint find(const SoTextureValues& values, std::uint64_t frame);
    void freeOld(std::uint64_t frame);
    void freeAll();

    std::size_t size() const { return m_textures.size(); }

    /// Frames that a texture is kept without being drawn.
    static constexpr std::uint64_t kKeptFrames = 60;

private:
    struct Texture {
        GLuint name = 0;
        SbImage image; ///< keeps the pixels, whose address is the key, from being reused
        std::uint64_t frame = 0;
        std::uint32_t wraps = 0;
    };

    std::unordered_map<const unsigned char*, Texture> m_textures;
};

} // namespace kalmyr::detail
