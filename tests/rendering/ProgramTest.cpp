#include "RenderedScene.h"

#include <kalmyr/fields/SoBufferObject.h>
#include <kalmyr/nodes/SoFragmentShader.h>
#include <kalmyr/nodes/SoShaderParameters.h>
#include <kalmyr/nodes/SoVertexBuffer.h>

#include "support/Program.h"

#include <cstring>
#include <fstream>

namespace {

constexpr const char* kSquare = "Coordinate3 { point [ -1 -1 0, 1 -1 0, 1 1 0, -1 1 0 ] } "
                                "TextureCoordinate2 { point [ 0 0, 1 0, 1 1, 0 1 ] } "
                                "FaceSet { numVertices 4 } ";
const SbColor kRed(1, 0, 0), kGreen(0, 1, 0), kBlue(0, 0, 1);

class Programs : public RenderedScene {
protected:
    static std::string program(const std::string& fragment, const std::string& parameters = "",
                               const std::string& more = "")
    {
        return "ShaderProgram { shaderObject [ DEF Fragment FragmentShader { source \"" + fragment
               + "\" parameter [ " + parameters + " ] } " + more + " ] } ";
    }
};

TEST_F(Programs, ParametersOfAllKindsReachTheirUniforms)
{
    const struct {
        const char* type;
        const char* parameter;
        const char* use; ///< is (0.2, 0.4, 0.6)
    } kCases[] = {
        {"float x", "Float { name \\\"x\\\" value .2 }", "vec3(x, 2.0 * x, 3.0 * x)"},
        {"float x[3]", "Float { name \\\"x\\\" value [ .2 .4 .6 ] }", "vec3(x[0], x[1], x[2])"},
        {"vec2 x", "Vec2f { name \\\"x\\\" value .2 .4 }", "vec3(x, .6)"},
        {"vec3 x", "Vec3f { name \\\"x\\\" value .2 .4 .6 }", "x"},
        {"vec3 x[2]", "Vec3f { name \\\"x\\\" value [ 1 1 1, .2 .4 .6 ] }", "x[1]"},
        {"vec4 x", "Vec4f { name \\\"x\\\" value 0 .2 .4 .6 }", "x.yzw"},
        {"vec3 x", "Color { name \\\"x\\\" value .2 .4 .6 }", "x"},
        {"int x", "Int32 { name \\\"x\\\" value 2 }", "vec3(.1, .2, .3) * x"},
        {"bool x", "Int32 { name \\\"x\\\" value 1 }", "x ? vec3(.2, .4, .6) : vec3(1.0)"},
        {"ivec2 x", "Vec2i32 { name \\\"x\\\" value 2 4 }", "vec3(x, 6) / 10.0"},
        {"ivec3 x", "Vec3i32 { name \\\"x\\\" value 2 4 6 }", "vec3(x) / 10.0"},
        {"ivec4 x", "Vec4i32 { name \\\"x\\\" value 9 2 4 6 }", "vec3(x.yzw) / 10.0"},
        {"mat4 x", "Matrix { name \\\"x\\\" value 1 0 0 0 0 1 0 0 0 0 1 0 .2 .4 .6 1 }",
         "(x * vec4(0.0, 0.0, 0.0, 1.0)).xyz"},
        {"sampler2D x", "Texture { name \\\"x\\\" value Texture2 { image 1 1 3 0x336699 } }",
         "texture(x, v.texCoord).rgb"},
        {"sampler3D x",
         "Texture { name \\\"x\\\" value Texture3 { wrapR CLAMP images VOLUME 1 1 2 3 0x336699 0 } "
         "}",
         "texture(x, vec3(0.0)).rgb"},
        {"samplerCube x",
         "Texture { name \\\"x\\\" value TextureCubeMap { images VOLUME 1 1 6 3 0 0 0 0 0x336699 0 "
         "} }",
         "texture(x, vec3(0.0, 0.0, 1.0)).rgb"},
    };
    for (const auto& one : kCases) {
        std::string parameter = one.parameter;
        for (std::size_t at = parameter.find("\\\""); at != std::string::npos;
             at = parameter.find("\\\""))
            parameter.replace(at, 2, "\"");
        draw(program(std::string("uniform ") + one.type + "; void main() { fragment = vec4("
                         + one.use + ", 1.0); }",
                     "ShaderParameter" + parameter)
             + kSquare);
        expectColor(0, 0, SbColor(0.2f, 0.4f, 0.6f), one.type);
        expectColor(1.5f, 0, SbColor(0, 0, 0), one.type);
    }
}

TEST_F(Programs, StandardLookCanBeTakenUp)
{
    // What the standard look gives, with red and blue exchanged.
    const std::string lit = "Separator { DirectionalLight { direction -.3 -.2 -1 } Material { "
                            "diffuseColor .9 .5 .1 specularColor .2 .2 .2 } ";
    const std::string texture = "Texture2 { image 2 2 3 0xff0000 0x00ff00 0x0000ff 0xffffff } ";
    const std::string swap = program("void main() { fragment = standardColor().bgra; }");
    for (const std::string& content :
         {std::string("Sphere { }"), texture + kSquare,
          texture
              + "TextureUnit { unit 1 mode ADD } Texture2 { image 1 1 3 0x102030 } TextureUnit { "
                "} "
              + kSquare}) {
        drawText("#Kalmyr V1.0 ascii\n" + lit + content + " }");
        SbColor plain[3];
        const float places[3][2] = {{0, 0}, {-0.5f, 0.5f}, {0.5f, 0.3f}};
        for (int i = 0; i < 3; ++i) {
            const unsigned char* p = pixelAt(places[i][0], places[i][1]);
            plain[i] = SbColor(p[2] / 255.0f, p[1] / 255.0f, p[0] / 255.0f);
        }
        drawText("#Kalmyr V1.0 ascii\n" + lit + swap + content + " }");
        for (int i = 0; i < 3; ++i)
            expectColor(places[i][0], places[i][1], plain[i], content, 1.5);
    }
}

TEST_F(Programs, StagesMoveAndMakeVertices)
{
    draw("Material { diffuseColor 1 0 0 } "
         + program("", "",
                   "VertexShader { source \"uniform float by; void main() { "
                   "standardVertex(position + vec3(by, 0.0, 0.0), normal); }\" parameter "
                   "ShaderParameterFloat { name \"by\" value 1 } }")
         + kSquare);
    expectColor(-0.5f, 0, SbColor(0, 0, 0), "moved away");
    expectColor(1.5f, 0, kRed, "moved there");
    // Each triangle smaller, about its middle.
    draw(
        "Material { diffuseColor 0 1 0 } "
        + program("void main() { fragment = vec4(0.0, 1.0, 0.0, 1.0); }", "",
                  "VertexShader { source \"void main() { standardVertex(position, normal); }\" } "
                  "GeometryShader { source \"layout(triangles) in; layout(triangle_strip, "
                  "max_vertices = 3) out; void main() { vec4 m = (gl_in[0].gl_Position + "
                  "gl_in[1].gl_Position + gl_in[2].gl_Position) / 3.0; for (int i = 0; i < 3; ++i) "
                  "{ gl_Position = mix(m, gl_in[i].gl_Position, 0.5); EmitVertex(); } }\" }")
        + kSquare);
    expectColor(0.33f, -0.33f, kGreen, "middle");
    expectColor(0.03f, 0.03f, SbColor(0, 0, 0), "between the triangles");
}

TEST_F(Programs, InputsGoByCoordinates)
{
    const std::string input =
        "VertexAttribute { name \"tint\" components 3 value [ 1 0 0, 1 0 0, 0 0 "
        "1, 0 0 1 ] } ";
    const std::string vertex = "VertexShader { source \"out vec3 seen; void main() { seen = tint; "
                               "standardVertex(position, normal); }\" } ";
    const std::string shade =
        program("in vec3 seen; void main() { fragment = vec4(seen, 1.0); }", "", vertex);
    draw(input + shade + kSquare);
    expectColor(0, -0.95f, kRed, "lower corners", 12);
    expectColor(0, 0.95f, kBlue, "upper corners", 12);
    // Through indices, in another order.
    draw(input + shade
         + "Coordinate3 { point [ 1 1 0, -1 1 0, -1 -1 0, 1 -1 0 ] } IndexedFaceSet { coordIndex [ "
           "2 "
           "3 0 1 -1 ] }");
    expectColor(0, 0.95f, kRed, "first coordinates", 12);
    expectColor(0, -0.95f, kBlue, "last coordinates", 12);
}

TEST_F(Programs, BuffersHoldArraysForManyShapes)
{
    // Interleaved: position, then texture coordinates.
    const float values[] = {-1, -1, 0, 0, 0, 1, -1, 0, 1, 0, 1, 1, 0, 1, 1, -1, 1, 0, 0, 1};
    const SoRef<SoBufferObject> buffer(new SoBufferObject);
    buffer->setBytes(std::as_bytes(std::span(values)));
    const auto bufferNode = [&](int content, int offset, int stride) {
        auto* node = new SoVertexBuffer;
        node->buffer.setValue(buffer.get());
        node->content = content;
        node->offset = offset;
        node->stride = stride;
        return node;
    };
    const SoRef<SoSeparator> scene(new SoSeparator);
    auto* content = new SoSeparator;
    const SoRef<SoNode> looks =
        read("#Kalmyr V1.0 ascii\nTexture2 { model REPLACE wrapS CLAMP wrapT "
             "CLAMP image 2 1 3 0xff0000 0x0000ff }");
    content->addChild(static_cast<SoSeparator*>(looks.get())->getChild(0));
    content->addChild(bufferNode(SoVertexBuffer::COORDINATES, 0, 20));
    content->addChild(bufferNode(SoVertexBuffer::TEXTURE_COORDINATES, 12, 20));
    const SoRef<SoNode> faces = read("#Kalmyr V1.0 ascii\nFaceSet { numVertices 4 }");
    content->addChild(static_cast<SoSeparator*>(faces.get())->getChild(0));
    scene->addChild(content);
    setUp(scene.get());
    for (int frame = 0; frame < 3; ++frame)
        redraw();
    expectColor(-0.9f, 0, kRed, "left", 4);
    expectColor(0.9f, 0, kBlue, "right", 4);
    // An edit of the buffer is seen by all that hold it.
    float moved[20];
    std::memcpy(moved, values, sizeof moved);
    for (int i = 0; i < 4; ++i)
        moved[5 * i] /= 4;
    buffer->setBytes(std::as_bytes(std::span(moved)));
    redraw();
    expectColor(-0.9f, 0, SbColor(0, 0, 0), "narrower");
    expectColor(-0.2f, 0, kRed, "narrower", 12);
}

TEST_F(Programs, ErrorsNameTheNodeAndTheLine)
{
    {
        const support::ErrorScope errors = support::expectErrors();
        draw("Material { diffuseColor 0 1 0 } "
             + program("void main()\n{\n    fragment = unknownName;\n}\n") + kSquare);
        EXPECT_EQ(errors.count(), 1u) << "told once";
        EXPECT_TRUE(errors.contains("FragmentShader \"Fragment\":3")) << errors.texts().at(0);
        EXPECT_TRUE(errors.contains("unknownName"));
    }
    expectColor(0, 0, kGreen, "the standard look");
    auto* shader = static_cast<SoFragmentShader*>(SoNode::getByName(SbName("Fragment")));
    shader->source.setValue("void main() { fragment = vec4(0.0, 0.0, 1.0, 1.0); }");
    redraw();
    expectColor(0, 0, kBlue, "mended");
    shader->isActive = false;
    redraw();
    expectColor(0, 0, kGreen, "switched off");
}

TEST_F(Programs, FilesAreReadAgainWhenTheyChange)
{
    const support::TempFolder folder;
    const std::string path = folder.path("tint.glsl");
    const auto write = [&](const char* color) {
        std::ofstream(path) << "void main() { fragment = vec4(" << color << ", 1.0); }\n";
    };
    write("1.0, 0.0, 0.0");
    draw("ShaderProgram { shaderObject DEF FromFile FragmentShader { filename \"" + path + "\" } } "
         + kSquare);
    expectColor(0, 0, kRed, "first text");
    write("0.0, 0.0, 1.0");
    static_cast<SoFragmentShader*>(SoNode::getByName(SbName("FromFile")))->reload();
    redraw();
    expectColor(0, 0, kBlue, "second text");
    const support::ErrorScope errors = support::expectErrors();
    draw("Material { diffuseColor 0 1 0 } ShaderProgram { shaderObject FragmentShader { filename "
         "\"nowhere.glsl\" } } "
         + std::string(kSquare));
    EXPECT_TRUE(errors.contains("nowhere.glsl"));
    expectColor(0, 0, kGreen, "no file, no program");
}

} // namespace
