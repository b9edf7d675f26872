#pragma once

#include "rendering/GLTextures.h"
#include "rendering/Shaders.h"

#include <kalmyr/base/SbMatrix.h>
#include <kalmyr/rendering/SoRenderAppearance.h>

#include <epoxy/gl.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kalmyr::detail {

struct GLProgram {
    GLuint program = 0;
    GLint toEye = -1;
    GLint material = -1;
    GLint firstSlot = -1;      ///< of the first instance, where the context has no base instance
    GLint firstPrimitive = -1; ///< of programs with SHADER_PEEL
};

/// Compiles and links; 0, with an error posted, when the driver refuses.
GLuint linkProgram(const ShaderSource& source);
/// The same for a program of a scene: errors name its node and the line in its own text.
GLuint linkOwnProgram(const ShaderSource& source, const SoProgramValues& values);
/// Finds the places of what all programs are given.
void findProgramPlaces(GLProgram& program);

/// Puts texture coordinate sets and inputs of programs into buffers of their own and into the
/// vertex array that is bound; returns the buffers.
std::vector<GLuint> uploadExtras(const SoGeometry::Extras& extras, std::size_t numVertices);

/// Draws what has extras in one context: texture units, tests of opacity, programs of the scene's
/// own, settings of depth. Programs that were not used in a number of frames are freed.
class GLPaint {
public:
    GLPaint();
    ~GLPaint();
    GLPaint(const GLPaint&) = delete;
    GLPaint& operator=(const GLPaint&) = delete;

    /// The program that paints a look on a geometry; null when the standard one does. An own
    /// program that the driver refuses gives an error once, and the standard look.
    const GLProgram* find(const SoRenderAppearance& look, const SoGeometry& geometry,
                          unsigned features);
    /// Gives the program in use its textures and values. `viewing` leads from the world to the eye.
    void bind(const GLProgram& program, const SoRenderAppearance& look, const SoGeometry& geometry,
              const SbMatrix& viewing, GLTextures& textures);

    /// Sets depth test and offset; null for the usual ones. `writesDepth` is what holds otherwise.
    void applySettings(const SoLookExtras* extras, bool writesDepth);
    /// Called before each draw call: offsets hold for kinds of primitives.
    void offsetFor(GLenum mode) const;

    void beginFrame(std::uint64_t frame);
    /// Leaves texture units and settings as they are expected.
    void end(bool writesDepth);
    void freeAll();

    /// Texture unit of the first texture; those before are used by the standard programs.
    static constexpr int kFirstUnit = 16;

private:
    struct Program;
    struct Key {
        const SoRenderAppearance* look;
        unsigned features;
        unsigned coordinates; ///< which the geometry has, as bits
        auto operator<=>(const Key&) const = default;
    };
    Program* make(const SoRenderAppearance& look, const SoGeometry& geometry, unsigned features);
    Program* link(const ShaderSource& source, const SoProgramValues* own);
    /// `bound` is the number of texture units in use, from the first one on.
    void setUniforms(const Program& program, const SoProgramValues& values, int& bound,
                     GLTextures& textures) const;

    std::unordered_map<std::string, std::unique_ptr<Program>> m_programs; ///< by their texts
    std::map<Key, Program*> m_found; ///< of the present frame, whose looks stay where they are
    std::unordered_set<std::string> m_refused; ///< texts of own programs
    std::uint64_t m_frame = 0;
    const SoRenderAppearance* m_boundLook = nullptr;
    const GLProgram* m_boundProgram = nullptr;
    const SoLookExtras* m_settings = nullptr;
    int m_numBound = 0; ///< texture units that are in use
};

} // namespace kalmyr::detail
