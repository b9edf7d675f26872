#include "U3DNodeBlocks.h"

#include "U3DBlocks.h"
#include "U3DFormat.h"

#include <algorithm>
#include <cmath>

namespace kalmyr::detail {

namespace {

/// Whether both faces or only the front ones are seen.
enum Visibility : std::uint32_t { FRONT = 1, BOTH = 3 };

void writeNodeHead(U3DBlocks& out, const U3DScene& scene, const U3DNode& node)
{
    out.text(node.name);
    out.u32(1);
    out.text(node.parent < 0 ? std::string()
                             : scene.nodes[static_cast<std::size_t>(node.parent)].name);
    out.matrix(node.matrix);
}

void writeModel(U3DBlocks& out, const U3DScene& scene, const U3DNode& node)
{
    const U3DGenerator& generator = scene.generators[static_cast<std::size_t>(node.resource)];
    const std::size_t chain = out.begin(MODIFIER_CHAIN);
    out.text(node.name);
    out.u32(NODE_CHAIN);
    out.u32(0); // no bounds
    out.pad();
    out.u32(2); // blocks

    const std::size_t model = out.begin(MODEL_NODE);
    writeNodeHead(out, scene, node);
    out.text(generator.name);
    out.u32(node.bothSides ? BOTH : FRONT);
    out.end(model);

    constexpr std::uint32_t kOnMesh = 1;
    constexpr std::uint32_t kOnLines = 2;
    constexpr std::uint32_t kOnPoints = 4;
    const std::size_t shading = out.begin(SHADING_MODIFIER);
    out.text(node.name);
    out.u32(1); // index in the chain
    out.u32(generator.isMesh() ? kOnMesh : generator.wire.isPoints ? kOnPoints : kOnLines);
    out.u32(static_cast<std::uint32_t>(node.shaders.size()));
    for (const int shader : node.shaders) {
        out.u32(1); // passes
        out.text(scene.shaders[static_cast<std::size_t>(shader)].name);
    }
    out.end(shading);
    out.end(chain);
}

void writeView(U3DBlocks& out, const U3DScene& scene, const U3DNode& node)
{
    constexpr std::uint32_t kOrthographic = 0x2;
    constexpr float kViewportHeight = 600; // pixels; viewers take their own
    const U3DView& view = scene.views[static_cast<std::size_t>(node.resource)];
    const std::size_t start = out.begin(VIEW_NODE);
    writeNodeHead(out, scene, node);
    out.text(node.name); // of its resource
    out.u32(view.perspective ? 0 : kOrthographic);
    out.f32(view.nearDistance);
    out.f32(view.farDistance);
    out.f32(view.extent);
    out.f32(std::round(kViewportHeight * std::clamp(view.aspect, 0.01f, 100.0f)));
    out.f32(kViewportHeight);
    out.f32(0);
    out.f32(0);
    out.u32(0); // backdrops
    out.u32(0); // overlays
    out.end(start);
}

} // namespace

void writeNode(U3DBlocks& out, const U3DScene& scene, const U3DNode& node)
{
    if (node.kind == U3DNode::MODEL) {
        writeModel(out, scene, node);
        return;
    }
    if (node.kind == U3DNode::VIEW) {
        writeView(out, scene, node);
        return;
    }
    const bool isLight = node.kind == U3DNode::LIGHT;
    const std::size_t start = out.begin(isLight ? LIGHT_NODE : GROUP_NODE);
    writeNodeHead(out, scene, node);
    if (isLight)
        out.text(node.name); // of its resource
    out.end(start);
}

void writeLight(U3DBlocks& out, const std::string& name, const U3DLight& light)
{
    constexpr std::uint32_t kEnabled = 1;
    constexpr std::uint32_t kSpecular = 2;
    constexpr std::uint32_t kSpotDecay = 4;
    const std::size_t start = out.begin(LIGHT_RESOURCE);
    out.text(name);
    out.u32(kEnabled | kSpecular | (light.fades ? kSpotDecay : 0));
    out.u8(light.kind);
    out.color(light.color);
    out.f32(1);
    out.vec(light.attenuation);
    out.f32(light.spotAngle);
    out.f32(light.intensity);
    out.end(start);
}

void writeViewResource(U3DBlocks& out, const std::string& name)
{
    const std::size_t start = out.begin(VIEW_RESOURCE);
    out.text(name);
    out.u32(1);              // passes
    out.text(std::string()); // root: the world
    out.u32(0);              // no fog
    out.u32(0);
    out.color(SbColor());
    out.f32(1);
    out.f32(0);
    out.f32(1);
    out.end(start);
}

} // namespace kalmyr::detail
