#pragma once

#include <kalmyr/base/SbImage.h>
#include <kalmyr/elements/SoTextureUnits.h>

#include <epoxy/gl.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>

namespace kalmyr::detail {

/// How a texture goes on beyond its edges, as one number that is not 0.
std::uint32_t wrapsOf(const SoTextureValues& values,
                      SoTextureValues::Wrap wrapR = SoTextureValues::REPEAT);

/// The target that textures of a kind are bound to.
GLenum targetOf(SoTextureStage::Kind kind);

/// The texture objects of one context, by the pixels that they show. Images beyond the limits of
/// the context are scaled down, which is told once for each. Those that were not asked for
/// in a number of frames are freed.
class GLTextures {
public:
    /// The texture object of an image; 0 for images that cannot be textures.
    GLuint find(const SoTextureValues& values, std::uint64_t frame,
                SoTextureStage::Kind kind = SoTextureStage::FLAT,
                SoTextureValues::Wrap wrapR = SoTextureValues::REPEAT);
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

    /// The pixels and the kind: one image may be shown as several.
    using Key = std::pair<const unsigned char*, int>;
    std::map<Key, Texture> m_textures;
};

} // namespace kalmyr::detail
