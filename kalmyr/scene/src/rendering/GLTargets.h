#pragma once

#include "rendering/PixelBox.h"

#include <epoxy/gl.h>

namespace kalmyr::detail {

/// Puts back what is bound for drawing and reading, the viewport and the scissor box.
class SavedTarget {
public:
    SavedTarget();
    ~SavedTarget();
    SavedTarget(const SavedTarget&) = delete;
    SavedTarget& operator=(const SavedTarget&) = delete;

    /// Clips a box to the scissor box.
    PixelBox limit(const PixelBox& box) const;
    GLuint getDrawn() const { return static_cast<GLuint>(m_draw); }
    /// Binds for drawing what was bound at first, with its viewport and scissor box.
    void bind() const;

private:
    GLint m_draw = 0;
    GLint m_read = 0;
    GLint m_box[4] = {};
    GLint m_viewport[4] = {};
    GLboolean m_scissored = GL_FALSE;
};

/// Turns the scissor test on for a box.
void limitTo(const PixelBox& box);

/// A texture without filtering or smaller levels. With `samples` above 0 it has several samples a
/// pixel, `layout` and `type` counting for nothing.
GLuint makeTexture(GLint format, GLenum layout, GLenum type, int width, int height,
                   GLint samples = 0);
GLuint makeDepthTexture(GLenum format, int width, int height, GLint samples = 0);

/// Attaches a texture to a framebuffer, which is made when it is 0 and left bound. Whether it is
/// complete.
bool attachTexture(GLuint& framebuffer, GLenum attachment, GLuint texture, GLint samples = 0);
/// A framebuffer with one texture.
bool makeFramebuffer(GLuint& name, GLenum attachment, GLuint texture);
void deleteTarget(GLuint& framebuffer, GLuint& texture);

/// The depth format of what is bound for drawing into, which is `framebuffer`: depths are copied
/// between equal formats only. GL_NONE: there are none.
GLenum boundDepthFormat(GLuint framebuffer);
bool hasStencil(GLenum depthFormat);
/// The number of samples a pixel of what is bound for drawing into; 0 or 1 without several.
GLint boundSamples();
/// Takes what errors are pending; no more than a broken driver could have.
void clearErrors();

} // namespace kalmyr::detail
