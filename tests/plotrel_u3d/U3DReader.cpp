#include "U3DReader.h"

#include "U3DData.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace u3d {

namespace {

struct Block {
    std::uint32_t type;
    std::size_t at; ///< of the data
    std::size_t size;
};

class Reader {
public:
    explicit Reader(const std::string& bytes) : m_bytes(bytes) {}
    File read();

private:
    std::vector<Block> blocksIn(std::size_t from, std::size_t to) const;
    Data dataOf(const Block& block) const
    {
        return {m_bytes, block.at, block.size, (m_file.profile & 4) == 0};
    }
    std::size_t readHeader(const Block& block);
    void declare(const Block& block);
    void chain(const Block& block);
    std::string node(const Block& block);
    void shadingModifier(const Block& block, const std::string& chainName);
    std::string generator(const Block& block);
    void shader(const Block& block);
    void material(const Block& block);
    void texture(const Block& block);
    void light(const Block& block);
    void view(const Block& block);
    void fill(const Block& block);
    void fillMesh(const Block& block);
    void fillWires(const Block& block);
    void fillTexture(const Block& block);
    void checkReferences() const;
    void checkModel(const Node& node) const;
    static void checkImage(const Texture& texture, const std::string& name);

    template <class Value>
    static void add(std::map<std::string, Value>& palette, const std::string& name, Value value,
                    std::size_t offset)
    {
        if (name.empty() || !palette.emplace(name, std::move(value)).second)
            fail(offset, "a name that is empty or taken: " + name);
    }

    const std::string& m_bytes;
    File m_file;
    std::map<std::string, std::uint32_t> m_reached; ///< resolution of line and point sets
    std::map<std::string, std::size_t> m_pictureBytes;
};

std::vector<Block> Reader::blocksIn(std::size_t from, std::size_t to) const
{
    std::vector<Block> blocks;
    while (from < to) {
        if (to - from < 12)
            fail(from, "no room for the head of a block");
        Data head(m_bytes, from, 12, false);
        Block block{head.u32(), from + 12, head.u32()};
        const std::uint32_t metadata = head.u32();
        const auto padded = [](std::size_t size) { return (size + 3) / 4 * 4; };
        const std::size_t end = block.at + padded(block.size) + padded(metadata);
        if (end > to)
            fail(from, "a block that is longer than what holds it");
        for (std::size_t i = block.at + block.size; i < block.at + padded(block.size); ++i) {
            if (m_bytes[i] != 0)
                fail(i, "padding that is not zero");
        }
        blocks.push_back(block);
        from = end;
    }
    return blocks;
}

std::size_t Reader::readHeader(const Block& block)
{
    if (block.type != 0x00443355 || (block.size != 24 && block.size != 32))
        fail(0, "no file header");
    Data data = dataOf(block);
    if (data.u32() != 0)
        fail(12, "a version that is not known");
    m_file.profile = data.u32();
    if ((m_file.profile & ~0xcu) != 0)
        fail(16, "a profile that is not known");
    const std::size_t declarations = data.u32();
    if (data.u64() != m_bytes.size())
        fail(24, "another size than that of the file");
    if (data.u32() != 106)
        fail(32, "another encoding than UTF-8");
    if (((m_file.profile & 8) != 0) != (block.size == 32))
        fail(36, "units that are not announced, or missing");
    if (block.size == 32)
        m_file.metersPerUnit = data.f64();
    data.end();
    return declarations;
}

File Reader::read()
{
    const std::vector<Block> blocks = blocksIn(0, m_bytes.size());
    if (blocks.empty())
        fail(0, "an empty file");
    const std::size_t declarations = readHeader(blocks[0]);
    bool isBoundary = false;
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        isBoundary = isBoundary || blocks[i].at - 12 == declarations;
        if (blocks[i].at < declarations)
            declare(blocks[i]);
        else
            fill(blocks[i]);
    }
    if (!isBoundary && declarations != m_bytes.size())
        fail(20, "declarations that end within a block");
    checkReferences();
    return std::move(m_file);
}

void Reader::declare(const Block& block)
{
    switch (block.type) {
    case 0xffffff14:
        chain(block);
        break;
    case 0xffffff21:
    case 0xffffff23:
    case 0xffffff24:
        node(block);
        break;
    case 0xffffff51:
        light(block);
        break;
    case 0xffffff52:
        view(block);
        break;
    case 0xffffff53:
        shader(block);
        break;
    case 0xffffff54:
        material(block);
        break;
    case 0xffffff55:
        texture(block);
        break;
    default:
        fail(block.at - 12, "a block that is no declaration");
    }
}

void Reader::chain(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    const std::uint32_t type = data.u32();
    if (data.u32() != 0)
        fail(data.offset(), "bounds, which nobody writes here");
    while ((data.offset() - block.at) % 4 != 0) {
        if (data.u8() != 0)
            fail(data.offset(), "padding that is not zero");
    }
    const std::uint32_t count = data.u32();
    const std::vector<Block> blocks = blocksIn(data.offset(), block.at + block.size);
    if (blocks.size() != count || blocks.empty())
        fail(block.at, "another number of modifiers than announced");
    const bool isNode = blocks[0].type == 0xffffff22;
    if (type != (isNode ? 0u : 1u))
        fail(block.at, "a chain of another type than its first block");
    if ((isNode ? node(blocks[0]) : generator(blocks[0])) != name)
        fail(block.at, "a chain of another name than its blocks");
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        if (!isNode || blocks[i].type != 0xffffff45)
            fail(blocks[i].at, "a modifier that does not belong there");
        shadingModifier(blocks[i], name);
    }
}

std::string Reader::node(const Block& block)
{
    Data data = dataOf(block);
    Node node;
    node.kind = static_cast<Node::Kind>(block.type - 0xffffff21);
    node.name = data.text();
    const std::uint32_t numParents = data.u32();
    for (std::uint32_t i = 0; i < numParents; ++i) {
        std::string parent = data.text();
        const Matrix matrix = data.matrix();
        if (!parent.empty() && m_file.nodeIndices.count(parent) == 0)
            fail(data.offset(), "a parent that is not declared yet: " + parent);
        node.parents.push_back({std::move(parent), matrix});
    }
    if (node.kind != Node::GROUP)
        node.resource = data.text();
    if (node.kind == Node::MODEL) {
        node.visibility = data.u32();
        if (node.visibility > 3)
            fail(data.offset(), "a visibility that is not known");
    }
    if (node.kind == Node::VIEW) {
        node.attributes = data.u32();
        node.nearDistance = data.f32();
        node.farDistance = data.f32();
        node.extent = data.f32();
        const auto viewport = data.floats<4>();
        if ((node.attributes & ~2u) != 0 || node.nearDistance >= node.farDistance
            || node.extent <= 0 || viewport[0] <= 0 || viewport[1] <= 0)
            fail(data.offset(), "a view that shows nothing");
        if (data.u32() != 0 || data.u32() != 0)
            fail(data.offset(), "backdrops, which nobody writes here");
    }
    data.end();
    if (node.name.empty() || !m_file.nodeIndices.emplace(node.name, m_file.nodes.size()).second)
        fail(block.at, "a name that is empty or taken: " + node.name);
    m_file.nodes.push_back(node);
    return node.name;
}

void Reader::shadingModifier(const Block& block, const std::string& chainName)
{
    Data data = dataOf(block);
    if (data.text() != chainName || data.u32() != 1)
        fail(block.at, "a modifier of another chain");
    Node& node = m_file.nodes.back();
    node.shadingFor = data.u32();
    const std::uint32_t lists = data.u32();
    for (std::uint32_t i = 0; i < lists; ++i) {
        auto& list = node.shaders.emplace_back();
        const std::uint32_t count = data.u32();
        for (std::uint32_t k = 0; k < count; ++k)
            list.push_back(data.text());
    }
    data.end();
}

std::string Reader::generator(const Block& block)
{
    Data data = dataOf(block);
    Generator made;
    made.kind = block.type == 0xffffff31   ? Generator::MESH
                : block.type == 0xffffff37 ? Generator::LINES
                : block.type == 0xffffff36 ? Generator::POINTS
                                           : (fail(block.at, "no generator"), Generator::MESH);
    const std::string name = data.text();
    if (data.u32() != 0)
        fail(data.offset(), "a generator that is not first in its chain");
    made.attributes = data.u32();
    made.numItems = data.u32();
    made.numPositions = data.u32();
    made.numNormals = data.u32();
    made.numColors = data.u32();
    if (data.u32() != 0)
        fail(data.offset(), "specular colours, which nobody writes here");
    made.numTexCoords = data.u32();
    const bool isMesh = made.kind == Generator::MESH;
    if (made.numPositions == 0 || made.numItems == 0)
        fail(data.offset(), "an empty generator");
    if (made.attributes > (isMesh ? 1u : 0u)
        || (isMesh && (made.numNormals == 0) != (made.attributes == 1)))
        fail(data.offset(), "normals that are left out, or not");
    const std::uint32_t numShadings = data.u32();
    for (std::uint32_t i = 0; i < numShadings; ++i) {
        Shading& shading = made.shadings.emplace_back();
        shading.attributes = data.u32();
        const std::uint32_t numLayers = data.u32();
        if (numLayers > 8)
            fail(data.offset(), "more than 8 layers");
        shading.layers.resize(numLayers);
        for (std::uint32_t& layer : shading.layers)
            layer = data.u32();
        if (data.u32() != i)
            fail(data.offset(), "a way of shading that cannot be");
        if (((shading.attributes & 1) != 0 && made.numColors == 0)
            || (!shading.layers.empty() && made.numTexCoords == 0))
            fail(data.offset(), "shading without what it needs");
    }
    if (numShadings == 0)
        fail(data.offset(), "no way of shading");
    if (isMesh && (data.u32() != made.numPositions || data.u32() != made.numPositions))
        fail(data.offset(), "more than one resolution");
    for (int i = 0; i < 3; ++i) {
        if (data.u32() > 1000)
            fail(data.offset(), "a quality above the best");
    }
    made.positionQuantum = data.f32();
    for (int i = 0; i < 4; ++i)
        data.f32();
    if (isMesh)
        data.floats<3>();
    else if (data.u32() != 0 || data.u32() != 0 || data.u32() != 0)
        fail(data.offset(), "reserved fields in use");
    if (data.u32() != 0)
        fail(data.offset(), "bones");
    data.end();
    add(m_file.generators, name, made, block.at);
    return name;
}

void Reader::shader(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    Shader made;
    made.attributes = data.u32();
    data.f32();
    const std::uint32_t test = data.u32();
    const std::uint32_t blend = data.u32();
    if (made.attributes > 7 || test < 0x610 || test > 0x617 || blend < 0x604 || blend > 0x607
        || data.u32() != 1)
        fail(data.offset(), "a shader that cannot be");
    const std::uint32_t channels = data.u32();
    if ((data.u32() & ~channels) != 0 || channels > 0xff)
        fail(data.offset(), "texture channels that are not used");
    made.material = data.text();
    for (int i = 0; i < 8; ++i) {
        if ((channels >> i & 1) == 0)
            continue;
        Layer& layer = made.layers.emplace_back();
        layer.texture = data.text();
        data.f32();
        layer.blend = data.u8();
        if (layer.blend > 3 || data.u8() > 1)
            fail(data.offset(), "a blend function that is not known");
        data.f32();
        if (data.u8() > 4)
            fail(data.offset(), "a texture mode that is not known");
        data.matrix();
        data.matrix();
        layer.repeat = data.u8();
        if (layer.repeat > 3)
            fail(data.offset(), "a repetition that is not known");
    }
    data.end();
    add(m_file.shaders, name, made, block.at);
}

void Reader::material(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    if (data.u32() != 0x3f)
        fail(data.offset(), "a material with parts missing");
    Material made;
    for (auto* color : {&made.ambient, &made.diffuse, &made.specular, &made.emissive})
        *color = data.floats<3>();
    made.shininess = data.f32();
    made.opacity = data.f32();
    data.end();
    for (const auto* color : {&made.ambient, &made.diffuse, &made.specular, &made.emissive}) {
        if (std::any_of(color->begin(), color->end(), [](float c) { return c < 0 || c > 1; }))
            fail(block.at, "a colour beyond 0 to 1");
    }
    add(m_file.materials, name, made, block.at);
}

void Reader::light(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    Light made;
    made.attributes = data.u32();
    made.type = data.u8();
    if (made.attributes > 7 || made.type > 3)
        fail(data.offset(), "a light that is not known");
    made.color = data.floats<4>();
    made.attenuation = data.floats<3>();
    made.angle = data.f32();
    made.intensity = data.f32();
    data.end();
    if (made.color[3] != 1)
        fail(block.at, "a light that is not opaque");
    add(m_file.lights, name, made, block.at);
}

void Reader::view(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    const std::uint32_t passes = data.u32();
    for (std::uint32_t i = 0; i < passes; ++i) {
        const std::string root = data.text();
        if (!root.empty() && m_file.nodeIndices.count(root) == 0)
            fail(data.offset(), "a root that is not there");
        if (data.u32() > 1 || data.u32() > 2)
            fail(data.offset(), "fog that is not known");
        data.floats<6>();
    }
    data.end();
    add(m_file.views, name, true, block.at);
}

void Reader::texture(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    Texture made;
    made.height = data.u32();
    made.width = data.u32();
    made.type = data.u8();
    if (made.type != 0x0e && made.type != 0x0f && made.type != 0x10 && made.type != 0x11)
        fail(data.offset(), "a type of texture that is not known");
    if (data.u32() != 1 || data.u8() != 2 || data.u8() != made.type || data.u16() != 0)
        fail(data.offset(), "something else than one PNG image with all channels");
    made.numBytes = data.u32();
    data.end();
    add(m_file.textures, name, made, block.at);
}

// ---- continuations

void Reader::fill(const Block& block)
{
    switch (block.type) {
    case 0xffffff3b:
        fillMesh(block);
        break;
    case 0xffffff3e:
    case 0xffffff3f:
        fillWires(block);
        break;
    case 0xffffff5c:
        fillTexture(block);
        break;
    default:
        fail(block.at - 12, "a block that is no continuation");
    }
}

void Reader::fillMesh(const Block& block)
{
    Data data = dataOf(block);
    const auto found = m_file.generators.find(data.text());
    if (found == m_file.generators.end() || found->second.kind != Generator::MESH
        || found->second.isFilled)
        fail(block.at, "a mesh that is not declared, or told twice");
    Generator& mesh = found->second;
    mesh.isFilled = true;
    if (data.u32() != 0 || data.u32() != mesh.numItems || data.u32() != mesh.numPositions
        || data.u32() != mesh.numNormals || data.u32() != mesh.numColors || data.u32() != 0
        || data.u32() != mesh.numTexCoords)
        fail(data.offset(), "other counts than declared");
    const auto vector = [&data] {
        const auto values = data.floats<3>();
        return Vec3{values[0], values[1], values[2]};
    };
    for (std::uint32_t i = 0; i < mesh.numPositions; ++i)
        mesh.positions.push_back(vector());
    for (std::uint32_t i = 0; i < mesh.numNormals; ++i)
        mesh.normals.push_back(vector());
    for (std::uint32_t i = 0; i < mesh.numColors; ++i)
        mesh.colors.push_back(data.floats<4>());
    for (std::uint32_t i = 0; i < mesh.numTexCoords; ++i)
        mesh.texCoords.push_back(data.floats<4>());
    const auto index = [&data](std::uint32_t count) {
        const std::uint32_t i = data.fixed(count);
        if (i >= count)
            fail(data.offset(), "an index beyond its array");
        return i;
    };
    for (std::uint32_t f = 0; f < mesh.numItems; ++f) {
        Face& face = mesh.faces.emplace_back();
        face.shading = data.dynamic(1, 4);
        if (face.shading >= mesh.shadings.size())
            fail(data.offset(), "a way of shading that is not declared");
        const Shading& shading = mesh.shadings[face.shading];
        for (Corner& corner : face.corners) {
            corner.position = index(mesh.numPositions);
            if (mesh.attributes == 0)
                corner.normal = index(mesh.numNormals);
            if ((shading.attributes & 1) != 0)
                corner.color = index(mesh.numColors);
            for (std::size_t i = 0; i < shading.layers.size(); ++i)
                corner.texCoord = index(mesh.numTexCoords);
        }
    }
    data.endSymbols(true);
}

void Reader::fillWires(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    const auto found = m_file.generators.find(name);
    const bool isLines = block.type == 0xffffff3f;
    if (found == m_file.generators.end()
        || found->second.kind != (isLines ? Generator::LINES : Generator::POINTS))
        fail(block.at, "lines or points that are not declared");
    Generator& set = found->second;
    std::uint32_t& reached = m_reached[name];
    const std::uint32_t zero = data.u32();
    const std::uint32_t from = data.u32();
    const std::uint32_t to = data.u32();
    if (zero != 0 || from != reached || to <= from || to > set.numPositions)
        fail(data.offset(), "updates out of order");
    for (std::uint32_t p = from; p < to; ++p) {
        const std::uint32_t range = std::max(p, 1u);
        const std::uint32_t split = data.fixed(range);
        if (split >= range)
            fail(data.offset(), "a position predicted from a later one");
        const std::uint32_t signs = data.dynamic(20, 1);
        Vec3 place = p == 0 ? Vec3{0, 0, 0} : set.positions[split];
        for (std::uint32_t i = 0; i < 3; ++i) {
            const double size =
                double(data.dynamic(21 + static_cast<int>(i), 4)) * set.positionQuantum;
            place[i] = static_cast<float>(place[i] + ((signs >> i & 1) != 0 ? -size : size));
        }
        set.positions.push_back(place);
        if (data.dynamic(40, 4) != 0)
            fail(data.offset(), "normals, which nobody writes here");
        const std::uint32_t count = data.dynamic(1, 4);
        for (std::uint32_t i = 0; i < count; ++i) {
            Wire& wire = set.wires.emplace_back();
            wire.end = p;
            wire.shading = data.dynamic(1, 4);
            wire.other = isLines ? data.fixed(range) : 0;
            if (wire.shading >= set.shadings.size() || (isLines && wire.other >= p))
                fail(data.offset(), "a line that cannot be");
            for (int end = 0; end < (isLines ? 2 : 1); ++end)
                data.dynamic(45, 4);
        }
    }
    data.endSymbols(false);
    reached = to;
    if (to < set.numPositions)
        return;
    set.isFilled = true;
    if (set.wires.size() != set.numItems)
        fail(block.at, "another number of lines or points than declared");
}

void Reader::fillTexture(const Block& block)
{
    Data data = dataOf(block);
    const std::string name = data.text();
    const auto found = m_file.textures.find(name);
    if (found == m_file.textures.end() || data.u32() != 0)
        fail(block.at, "a texture that is not declared");
    found->second.image += data.bytes(data.left());
}

// ---- what holds among the blocks

void Reader::checkImage(const Texture& texture, const std::string& name)
{
    const auto big = [&](std::size_t at) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i)
            value = value << 8 | static_cast<unsigned char>(texture.image[at + i]);
        return value;
    };
    if (texture.image.size() != texture.numBytes || texture.numBytes < 33)
        fail(0, "another number of bytes than declared for texture " + name);
    if (texture.image.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0 || big(16) != texture.width
        || big(20) != texture.height)
        fail(0, "no PNG image of the declared size in texture " + name);
}

void Reader::checkModel(const Node& node) const
{
    const auto found = m_file.generators.find(node.resource);
    if (found == m_file.generators.end())
        fail(0, "no generator " + node.resource);
    const Generator& generator = found->second;
    const std::uint32_t wanted[] = {1, 2, 4};
    if (node.shadingFor != wanted[generator.kind])
        fail(0, "shading for something else than model " + node.name);
    if (node.shaders.size() != generator.shadings.size())
        fail(0, "another number of shader lists than ways of shading for " + node.name);
    for (std::size_t i = 0; i < node.shaders.size(); ++i) {
        for (const std::string& name : node.shaders[i]) {
            const auto shader = m_file.shaders.find(name);
            if (shader == m_file.shaders.end())
                fail(0, "no shader " + name);
            const Shading& shading = generator.shadings[i];
            if (shader->second.layers.size() > shading.layers.size()
                || ((shader->second.attributes & 4) != 0 && (shading.attributes & 1) == 0))
                fail(0, "a shader that needs what the mesh does not have: " + name);
        }
    }
}

void Reader::checkReferences() const
{
    for (const auto& [name, generator] : m_file.generators) {
        if (!generator.isFilled)
            fail(0, "a generator without content: " + name);
    }
    for (const auto& [name, texture] : m_file.textures)
        checkImage(texture, name);
    for (const auto& [name, shader] : m_file.shaders) {
        if (m_file.materials.count(shader.material) == 0)
            fail(0, "no material " + shader.material);
        for (const Layer& layer : shader.layers) {
            if (m_file.textures.count(layer.texture) == 0)
                fail(0, "no texture " + layer.texture);
        }
    }
    for (const Node& node : m_file.nodes) {
        if (node.kind == Node::MODEL)
            checkModel(node);
        else if (node.kind == Node::LIGHT && m_file.lights.count(node.resource) == 0)
            fail(0, "no light " + node.resource);
        else if (node.kind == Node::VIEW && m_file.views.count(node.resource) == 0)
            fail(0, "no view " + node.resource);
    }
}

} // namespace

const Node* File::find(const std::string& name) const
{
    const auto at = nodeIndices.find(name);
    return at != nodeIndices.end() ? &nodes[at->second] : nullptr;
}

int File::count(Node::Kind kind) const
{
    return static_cast<int>(std::count_if(nodes.begin(), nodes.end(),
                                          [kind](const Node& node) { return node.kind == kind; }));
}

Matrix File::toWorld(const Node& node) const
{
    std::array<double, 16> result;
    std::copy(node.parents[0].matrix.begin(), node.parents[0].matrix.end(), result.begin());
    for (const Node* at = &node; !at->parents[0].name.empty();) {
        at = find(at->parents[0].name);
        const Matrix& outer = at->parents[0].matrix;
        std::array<double, 16> product{};
        for (std::size_t column = 0; column < 4; ++column) {
            for (std::size_t row = 0; row < 4; ++row) {
                for (std::size_t k = 0; k < 4; ++k)
                    product[column * 4 + row] +=
                        double(outer[k * 4 + row]) * result[column * 4 + k];
            }
        }
        result = product;
    }
    Matrix matrix;
    std::transform(result.begin(), result.end(), matrix.begin(),
                   [](double value) { return static_cast<float>(value); });
    return matrix;
}

Vec3 File::transformed(const Matrix& matrix, const Vec3& point)
{
    Vec3 result;
    for (std::size_t row = 0; row < 3; ++row)
        result[row] = matrix[row] * point[0] + matrix[4 + row] * point[1]
                      + matrix[8 + row] * point[2] + matrix[12 + row];
    return result;
}

File read(const std::string& bytes)
{
    return Reader(bytes).read();
}

} // namespace u3d
