#include "rendering/GLBackground.h"

#include "rendering/GLDevice.h"

#include <algorithm>

namespace kalmyr::detail {

namespace {

// A side of the box as four corners. The depth is put in front of everything, so that nothing but
// what is behind the eye is cut.
constexpr const char* kSideVertex = R"(#version 330 core
uniform mat3 toEye;
uniform vec2 scale;
uniform vec2 shift;
uniform int side;
out vec2 place;
void main()
{
    place = vec2(float(gl_VertexID & 1), float(gl_VertexID >> 1));
    vec2 p = place * 2.0 - 1.0;
    vec3 corner = side == 0 ? vec3(p.x, p.y, -1.0)
                : side == 1 ? vec3(-p.x, p.y, 1.0)
                : side == 2 ? vec3(-1.0, p.y, -p.x)
                : side == 3 ? vec3(1.0, p.y, p.x)
                : side == 4 ? vec3(p.x, 1.0, p.y)
                            : vec3(p.x, -1.0, -p.y);
    vec3 eye = toEye * corner;
    gl_Position = vec4(eye.xy * scale - eye.z * shift, 0.0, -eye.z);
}
)";

// A picture on the screen.
constexpr const char* kScreenVertex = R"(#version 330 core
uniform vec4 part; // the part of the picture that fills the screen: start and size
out vec2 place;
void main()
{
    vec2 corner = vec2(float(gl_VertexID & 1), float(gl_VertexID >> 1));
    place = part.xy + part.zw * corner;
    gl_Position = vec4(corner * 2.0 - 1.0, 0.0, 1.0);
}
)";

constexpr const char* kFragment = R"(#version 330 core
uniform sampler2D image;
uniform bool repeats;
in vec2 place;
out vec4 fragment;
void main()
{
    if (!repeats && (clamp(place, 0.0, 1.0) != place)) discard;
    fragment = texture(image, place);
}
)";

/// Angle of view of a sky when nothing is seen in perspective.
constexpr float kParallelSkyScale = 1 / 0.414f;

GLint placeOf(GLuint program, const char* name)
{
    return glGetUniformLocation(program, name);
}

SoTextureValues textureOf(const SbImage& image, SoTextureValues::Wrap wrap)
{
    SoTextureValues values;
    values.image = image;
    values.wrapS = values.wrapT = wrap;
    return values;
}

/// The directions of the background's axes in the space of the eye, as columns.
void axesInEye(const SbMatrix& matrix, float (&columns)[9])
{
    for (int axis = 0; axis < 3; ++axis) {
        SbVec3f along(matrix[axis][0], matrix[axis][1], matrix[axis][2]);
        along.normalize();
        std::copy_n(along.getValue(), 3, columns + 3 * axis);
    }
}

void drawSides(GLDevice& device, const Frame& frame, const BackgroundPictures& pictures)
{
    const GLuint program =
        device.otherProgram(GLDevice::BACKGROUND_SIDES, {kSideVertex, {}, kFragment});
    if (!program) {
        return;
    }
    glUseProgram(program);
    const SoView& view = frame.views.back().view;
    const bool parallel = view.projection[2][3] == 0;
    float columns[9];
    axesInEye(frame.background.toWorld * view.viewing, columns);
    glUniformMatrix3fv(placeOf(program, "toEye"), 1, GL_FALSE, columns);
    const SbVec2s size = frame.views.back().region.getViewportSizePixels();
    const float aspect =
        static_cast<float>(size[0]) / static_cast<float>(std::max<int>(1, size[1]));
    if (parallel) {
        glUniform2f(placeOf(program, "scale"), kParallelSkyScale / aspect, kParallelSkyScale);
        glUniform2f(placeOf(program, "shift"), 0, 0);
    } else {
        glUniform2f(placeOf(program, "scale"), view.projection[0][0], view.projection[1][1]);
        glUniform2f(placeOf(program, "shift"), -view.projection[2][0], -view.projection[2][1]);
    }
    glUniform1i(placeOf(program, "repeats"), 1); // to the very edge
    for (int side = 0; side < BackgroundPictures::NUM_SIDES; ++side) {
        const GLuint texture = device.texture(
            textureOf(pictures.sides[static_cast<std::size_t>(side)], SoTextureValues::CLAMP));
        if (texture) {
            glBindTexture(GL_TEXTURE_2D, texture);
            glUniform1i(placeOf(program, "side"), side);
            glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
        }
    }
}

/// The part of a picture that the screen shows, in widths and heights of the picture.
void partOnScreen(const SbImage& image, BackgroundPictures::Style style, const SbVec2s& screen,
                  float (&part)[4])
{
    float size[2] = {1, 1}; // of the screen in pictures
    for (int i = 0; i < 2; ++i) {
        size[i] = static_cast<float>(screen[i])
                  / static_cast<float>(i == 0 ? image.getWidth() : image.getHeight());
    }
    const float whole = std::max(size[0], size[1]), filled = std::min(size[0], size[1]);
    for (int i = 0; i < 2; ++i) {
        switch (style) {
        case BackgroundPictures::STRETCH:
            size[i] = 1;
            break;
        case BackgroundPictures::FIT:
            size[i] /= filled;
            break;
        case BackgroundPictures::FILL:
            size[i] /= whole;
            break;
        default:
            break;
        }
        part[i] = style == BackgroundPictures::TILE ? 0 : (1 - size[i]) / 2;
        part[2 + i] = size[i];
    }
}

void drawOnScreen(GLDevice& device, const Frame& frame, const BackgroundPictures& pictures)
{
    const GLuint program =
        device.otherProgram(GLDevice::BACKGROUND_SCREEN, {kScreenVertex, {}, kFragment});
    const bool tiles = pictures.style == BackgroundPictures::TILE;
    const GLuint texture = device.texture(
        textureOf(pictures.screen, tiles ? SoTextureValues::REPEAT : SoTextureValues::CLAMP));
    if (!program || !texture) {
        return;
    }
    glUseProgram(program);
    float part[4];
    partOnScreen(pictures.screen, pictures.style, frame.views.back().region.getViewportSizePixels(),
                 part);
    glUniform4fv(placeOf(program, "part"), 1, part);
    glUniform1i(placeOf(program, "repeats"), tiles);
    glBindTexture(GL_TEXTURE_2D, texture);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
}

/// Fills the uniforms of the background's program; returns the number of vectors used.
int backgroundValues(const Frame& frame, float (&values)[kMaxBackgroundStops + 2][4])
{
    const SoView& view = frame.views.back().view;
    const bool parallel = view.projection[2][3] == 0;
    const auto& stops = frame.background.stops;
    const int count = std::min(static_cast<int>(stops.size()), kMaxBackgroundStops);
    values[0][0] = static_cast<float>(count);
    for (int axis = 0; axis < 2; ++axis) {
        const float scale = view.projection[axis][axis];
        values[0][1 + axis] = parallel || scale == 0 ? 1 / kParallelSkyScale : 1 / scale;
    }
    SbVec3f up = view.viewing.direction(frame.background.up);
    up.normalize();
    std::copy_n(up.getValue(), 3, values[1]);
    for (int i = 0; i < count; ++i) {
        const BackgroundStop& stop = stops[static_cast<std::size_t>(i)];
        std::copy_n(stop.color.getValue(), 3, values[2 + i]);
        values[2 + i][3] = stop.angle;
    }
    return count + 2;
}

void drawColors(GLDevice& device, const Frame& frame)
{
    const GLProgram* program = device.program(SHADER_BACKGROUND);
    if (!program) {
        return;
    }
    float values[kMaxBackgroundStops + 2][4] = {};
    const int count = backgroundValues(frame, values);
    glDisable(GL_DEPTH_TEST);
    glUseProgram(program->program);
    glUniform4fv(program->material, count, values[0]);
    glBindVertexArray(device.emptyVertexArray());
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glEnable(GL_DEPTH_TEST);
}

void drawPictures(GLDevice& device, const Frame& frame)
{
    const BackgroundPictures& pictures = *frame.background.pictures;
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBindVertexArray(device.emptyVertexArray());
    if (pictures.screen.isNull()) {
        drawSides(device, frame, pictures);
    } else {
        drawOnScreen(device, frame, pictures);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glUseProgram(0);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
}

} // namespace

void drawBackground(GLDevice& device, const Frame& frame)
{
    if (frame.hasBackground && !frame.background.stops.empty()) {
        drawColors(device, frame);
    }
    if (frame.hasBackground && frame.background.pictures) {
        drawPictures(device, frame);
    }
}

} // namespace kalmyr::detail
