#include "U3DFile.h"

#include "U3DBlocks.h"
#include "U3DContent.h"
#include "U3DFormat.h"
#include "U3DLookBlocks.h"
#include "U3DMeshLayout.h"
#include "U3DNodeBlocks.h"

#include <kalmyr/core/SoImageFile.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

namespace kalmyr::detail {

namespace {

// Places of sizes in the file.
constexpr std::size_t kDeclarationSizeAt = 20;
constexpr std::size_t kFileSizeAt = 24;

/// The sizes are entered when they are known.
void writeHeader(U3DBlocks& out, const U3DOptions& options)
{
    constexpr std::uint32_t kNoCompression = 0x4;
    constexpr std::uint32_t kDefinedUnits = 0x8;
    constexpr std::uint32_t kUtf8 = 106;
    const bool hasUnits = options.metersPerUnit > 0;
    const std::size_t start = out.begin(FILE_HEADER);
    out.u32(0); // version
    out.u32((options.compressed ? 0 : kNoCompression) | (hasUnits ? kDefinedUnits : 0));
    out.u32(0); // size of the declarations
    out.u64(0); // size of the file
    out.u32(kUtf8);
    if (hasUnits)
        out.f64(options.metersPerUnit);
    out.end(start);
}

/// The layouts that declarations and content share, computed once.
struct Prepared {
    Prepared(const U3DScene& scene, bool compressed);

    std::vector<std::unique_ptr<U3DMeshLayout>> layouts; ///< by generator; null: not a mesh
    std::vector<std::string> pictures;                   ///< of the textures
    std::size_t numBytes = 0;                            ///< of meshes, about
};

Prepared::Prepared(const U3DScene& scene, bool compressed)
{
    for (const U3DGenerator& generator : scene.generators) {
        layouts.emplace_back();
        if (!generator.isMesh())
            continue;
        layouts.back() = std::make_unique<U3DMeshLayout>(generator.mesh, compressed);
        numBytes += layouts.back()->getNumBytes(generator.mesh.numFaces);
    }
    for (const U3DTexture& texture : scene.textures)
        SoImageFile::writePngMemory(texture.image, pictures.emplace_back());
}

void declareGenerator(U3DBlocks& out, const U3DGenerator& generator, const U3DMeshLayout* layout)
{
    const std::size_t chain = out.begin(MODIFIER_CHAIN);
    out.text(generator.name);
    out.u32(MODEL_CHAIN);
    out.u32(0); // no bounds
    out.pad();
    out.u32(1); // blocks
    layout ? declareMesh(out, generator, *layout) : declareWire(out, generator);
    out.end(chain);
}

/// Nodes in front of what they refer to, parents in front of their children.
void writeDeclarations(U3DBlocks& out, const U3DScene& scene, const Prepared& prepared)
{
    for (const U3DNode& node : scene.nodes)
        writeNode(out, scene, node);
    for (std::size_t i = 0; i < scene.generators.size(); ++i)
        declareGenerator(out, scene.generators[i], prepared.layouts[i].get());
    for (std::size_t i = 0; i < scene.textures.size(); ++i)
        declareTexture(out, scene.textures[i], prepared.pictures[i]);
    for (const U3DShader& shader : scene.shaders)
        writeShader(out, scene, shader);
    for (const U3DMaterial& material : scene.materials)
        writeMaterial(out, material);
    for (const U3DNode& node : scene.nodes) {
        if (node.kind == U3DNode::LIGHT)
            writeLight(out, node.name, scene.lights[static_cast<std::size_t>(node.resource)]);
    }
    for (const U3DNode& node : scene.nodes) {
        if (node.kind == U3DNode::VIEW)
            writeViewResource(out, node.name);
    }
}

/// How far the work has got.
class Progress {
public:
    Progress(const U3DScene& scene, const U3DOptions& options) : m_callback(options.progress)
    {
        for (const U3DGenerator& generator : scene.generators)
            m_total += generator.mesh.numFaces + generator.wire.positions.size();
    }
    /// Asks now and then whether to go on.
    bool advance(std::size_t work)
    {
        constexpr std::size_t kWorkPerCall = 50'000;
        m_done += work;
        if (!m_callback || m_done - m_asked < kWorkPerCall)
            return true;
        m_asked = m_done;
        return m_callback(std::min(1.0f, static_cast<float>(m_done) / static_cast<float>(m_total)));
    }
    bool finish() const { return !m_callback || m_callback(1); }

private:
    const std::function<bool(float)>& m_callback;
    std::size_t m_total = 1;
    std::size_t m_done = 0;
    std::size_t m_asked = 0;
};

/// False when stopped.
bool writeContent(U3DBlocks& out, const U3DScene& scene, const Prepared& prepared,
                  const U3DContentOptions& options)
{
    for (std::size_t i = 0; i < scene.generators.size(); ++i) {
        const U3DGenerator& generator = scene.generators[i];
        const U3DMeshLayout* layout = prepared.layouts[i].get();
        if (!(layout ? writeMesh(out, generator, *layout, options)
                     : writeWire(out, generator, options)))
            return false;
    }
    for (std::size_t i = 0; i < scene.textures.size(); ++i)
        writeTexture(out, scene.textures[i], prepared.pictures[i]);
    return true;
}

} // namespace

U3DResult writeU3D(const U3DScene& scene, const U3DOptions& options, std::string& bytes)
{
    bytes.clear();
    U3DBlocks out(bytes);
    Progress progress(scene, options);
    const Prepared prepared(scene, options.compressed);
    bytes.reserve(prepared.numBytes);
    writeHeader(out, options);
    writeDeclarations(out, scene, prepared);
    const std::size_t declarationSize = out.getSize();
    if (declarationSize > std::numeric_limits<std::uint32_t>::max())
        return U3DResult::TOO_LARGE;
    const auto advance = [&progress](std::size_t work) { return progress.advance(work); };
    if (!writeContent(out, scene, prepared, {options.compressed, advance}))
        return U3DResult::STOPPED;
    out.setU32(kDeclarationSizeAt, static_cast<std::uint32_t>(declarationSize));
    out.setU64(kFileSizeAt, out.getSize());
    if (!out.isValid())
        return U3DResult::TOO_LARGE;
    return progress.finish() ? U3DResult::DONE : U3DResult::STOPPED;
}

} // namespace kalmyr::detail
