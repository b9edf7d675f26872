// The plan of a frame: opaque items with equal state become draw calls of one batch.
#include "rendering/GLRenderer.h"
#include "rendering/PaintShaders.h"

#include <kalmyr/actions/SoGLRenderAction.h>

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace kalmyr::detail {

namespace {

struct BatchHash {
    std::size_t operator()(const GLBatchKey& key) const
    {
        std::uint64_t hash = key.vertexArray;
        for (const std::uint64_t part :
             {std::uint64_t{key.mode} << 32 | key.features,
              std::uint64_t{key.surroundings} << 32 | std::uint64_t{key.view} << 2
                  | std::uint64_t{key.mirrored} << 1 | std::uint64_t{key.solid},
              static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(key.image))}) {
            hash = (hash ^ part) * 0x9E3779B97F4A7C15ull;
            hash ^= hash >> 29;
        }
        return static_cast<std::size_t>(hash);
    }
};

bool isWide(const SoDrawStyleValues& style)
{
    return style.lineWidth > 1 || style.linePattern != 0xffff;
}

/// Geometries with more indices of triangles are drawn by themselves: a call more is nothing beside
/// the tables that each vertex of a batch looks its place and material up in.
constexpr std::size_t kMaxBatchedIndices = 30000;

/// Whether everything of the item is drawn by draw calls that need no state but a batch's.
bool goesInBatches(const RenderList::Entry& entry)
{
    const SoGeometry& geometry = *entry.geometry;
    const SoDrawStyleValues& style = entry.appearance->drawStyle;
    return !hasOwnState(*entry.appearance) && geometry.triangles.size() < kMaxBatchedIndices
           && (geometry.triangles.empty() || style.style == SoDrawStyleValues::FILLED)
           && (geometry.lines.empty()
               || (!isWide(style) && style.style != SoDrawStyleValues::POINTS));
}

} // namespace

/// Collects the draw calls of a plan, then lays them out batch by batch.
class GLRenderer::Planner {
public:
    Planner(GLRenderer& renderer, GLDrawPlan& plan) : m_renderer(renderer), m_plan(plan)
    {
        const std::size_t texels =
            static_cast<std::size_t>(renderer.m_device.capabilities().maxBufferTexels);
        m_maxSlots = texels / (sizeof(GLInstance) / (4 * sizeof(float)));
        m_maxLooks = texels / NUM_MATERIAL_SLOTS / 2; // half of them in reserve for changes
    }

    /// False when the item has to be drawn by itself.
    bool add(std::uint32_t item);
    /// Lays out the batches of a layer.
    void finishLayer(GLDrawPlan::Layer& layer);
    void upload();

private:
    struct Call {
        std::uint32_t item;
        std::uint32_t numIndices;
        std::uint32_t firstIndex;
        GLint firstVertex;
    };
    struct Open {
        GLBatchKey key;
        std::vector<Call> calls;
    };
    void addCall(std::uint32_t item, const GLGeometry& buffers, GLenum mode, std::uint32_t first,
                 GLsizei count);
    float lookOf(const SoRenderAppearance& look);

    GLRenderer& m_renderer;
    GLDrawPlan& m_plan;
    std::size_t m_maxSlots;
    std::size_t m_maxLooks;
    std::size_t m_numCalls = 0;
    std::vector<Open> m_open;
    std::unordered_map<GLBatchKey, std::size_t, BatchHash> m_places;
    std::size_t m_latest = 0; ///< batch of the call before
    std::vector<GLInstance> m_instances;
    std::vector<float> m_looks;
    std::unordered_map<const SoRenderAppearance*, float> m_lookPlaces;
};

bool GLRenderer::Planner::add(std::uint32_t index)
{
    const FrameItem& item = m_renderer.m_frame.items[index];
    const RenderList::Entry& entry = *item.entry;
    if (!goesInBatches(entry) || m_numCalls + 3 > m_maxSlots || m_lookPlaces.size() >= m_maxLooks) {
        return false;
    }
    const GLGeometry& buffers = m_renderer.m_device.geometry(*entry.geometry);
    addCall(index, buffers, GL_TRIANGLES, buffers.firstIndex, buffers.numTriangleIndices);
    addCall(index, buffers, GL_LINES, buffers.firstLineIndex(), buffers.numLineIndices);
    addCall(index, buffers, GL_POINTS, buffers.firstPointIndex(), buffers.numPointIndices);
    return true;
}

void GLRenderer::Planner::addCall(std::uint32_t index, const GLGeometry& buffers, GLenum mode,
                                  std::uint32_t first, GLsizei count)
{
    if (count == 0) {
        return;
    }
    const FrameItem& item = m_renderer.m_frame.items[index];
    const SoRenderAppearance& look = *item.entry->appearance;
    GLBatchKey key;
    key.vertexArray = buffers.vertexArray;
    key.mode = mode;
    key.features = m_renderer.featuresOf(item);
    key.surroundings = item.surroundings;
    key.view = item.view;
    if (mode == GL_TRIANGLES) {
        key.mirrored = item.mirrored;
        key.solid = item.entry->geometry->solid;
    } else if (mode == GL_POINTS) {
        key.pointSize = std::max(1.0f, look.drawStyle.pointSize);
    }
    if (key.features & SHADER_TEXTURE) {
        key.image = look.texture.image.getBytes();
        key.wraps = wrapsOf(look.texture);
    }
    if (m_open.empty() || m_open[m_latest].key != key) {
        const auto [place, isNew] = m_places.try_emplace(key, m_open.size());
        if (isNew) {
            m_open.push_back({key, {}});
        }
        m_latest = place->second;
    }
    m_open[m_latest].calls.push_back(
        {index, static_cast<std::uint32_t>(count), first, buffers.firstVertex});
    m_lookPlaces.try_emplace(&look, -1.0f);
    ++m_numCalls;
}

float GLRenderer::Planner::lookOf(const SoRenderAppearance& look)
{
    float& place = m_lookPlaces[&look];
    if (place < 0) {
        place = static_cast<float>(m_looks.size() / (4 * NUM_MATERIAL_SLOTS));
        const MaterialValues values = m_renderer.materialValues(look, ~0u);
        for (const auto& slot : values) {
            m_looks.insert(m_looks.end(), slot.begin(), slot.end());
        }
    }
    return place;
}

GLInstance GLRenderer::instanceOf(const FrameItem& item, float look)
{
    GLInstance out{};
    for (int axis = 0; axis < 3; ++axis) {
        std::copy_n(item.toEye.m + 4 * axis, 3, out.columns[axis]);
        out.columns[axis][3] = item.toEye.m[12 + axis];
    }
    out.look = look;
    out.normalSign = item.mirrored ? -1.0f : 1.0f;
    return out;
}

/// Neighbours with the same geometry become one draw call of several instances.
void GLRenderer::Planner::finishLayer(GLDrawPlan::Layer& layer)
{
    layer.firstBatch = static_cast<std::uint32_t>(m_plan.batches.size());
    for (const Open& open : m_open) {
        GLBatch batch{open.key, open.calls.front().item,
                      static_cast<std::uint32_t>(m_plan.commands.size()), 0};
        const Call* before = nullptr;
        for (const Call& call : open.calls) {
            const auto slot = static_cast<std::uint32_t>(m_instances.size());
            const FrameItem& item = m_renderer.m_frame.items[call.item];
            m_instances.push_back(instanceOf(item, lookOf(*item.entry->appearance)));
            std::uint32_t& known = m_plan.slots[call.item];
            known = known == GLDrawPlan::kNoSlot ? slot : GLDrawPlan::kSeveralSlots;
            if (before && before->firstIndex == call.firstIndex
                && before->firstVertex == call.firstVertex
                && before->numIndices == call.numIndices) {
                ++m_plan.commands.back().numInstances;
            } else {
                m_plan.commands.push_back(
                    {call.numIndices, 1, call.firstIndex, call.firstVertex, slot});
            }
            before = &call;
        }
        batch.numCommands = static_cast<std::uint32_t>(m_plan.commands.size()) - batch.firstCommand;
        m_plan.batches.push_back(batch);
    }
    layer.numBatches = static_cast<std::uint32_t>(m_plan.batches.size()) - layer.firstBatch;
    m_open.clear();
    m_places.clear();
    m_latest = 0;
}

void GLRenderer::Planner::upload()
{
    m_renderer.m_device.reserveSlots(m_instances.size());
    m_plan.upload(m_instances, std::move(m_looks));
}

void GLRenderer::makePlan(GLDrawPlan& plan)
{
    plan.clear();
    plan.layers.resize(static_cast<std::size_t>(m_frame.numLayers));
    plan.slots.assign(m_frame.items.size(), GLDrawPlan::kNoSlot);
    Planner planner(*this, plan);
    for (int layer = 0; layer < m_frame.numLayers; ++layer) {
        GLDrawPlan::Layer& planned = plan.layers[static_cast<std::size_t>(layer)];
        std::vector<std::uint32_t> opaque;
        splitLayer(layer, opaque, planned);
        for (const std::uint32_t i : inDrawingOrder(opaque)) {
            const bool holes =
                m_frame.items[i].entry->transparent && m_type == SoGLRenderAction::SCREEN_DOOR;
            if (holes || !planner.add(i)) {
                planned.singles.push_back(i);
            }
        }
        planner.finishLayer(planned);
    }
    planner.upload();
    plan.generation = m_frame.generation;
    plan.transparencyType = m_type;
    plan.numPatches = m_frame.patches.size();
}

bool GLRenderer::patchPlan(GLDrawPlan& plan) const
{
    for (; plan.numPatches < m_frame.patches.size(); ++plan.numPatches) {
        const ItemPatch& patch = m_frame.patches[plan.numPatches];
        const std::uint32_t slot = plan.slots[patch.item];
        if (slot == GLDrawPlan::kSeveralSlots) {
            return false;
        }
        if (slot == GLDrawPlan::kNoSlot) {
            continue;
        }
        const FrameItem& item = m_frame.items[patch.item];
        float look = 0;
        if (patch.hasNewLook) {
            const std::optional<std::uint32_t> place = plan.ownLook(slot);
            if (!place) {
                return false;
            }
            plan.setLook(*place, materialValues(*item.entry->appearance, ~0u).front().data());
            look = static_cast<float>(*place);
        }
        plan.setInstance(slot, instanceOf(item, look), patch.hasNewLook);
    }
    return true;
}

void GLRenderer::drawBatch(const GLDrawPlan& plan, const GLBatch& batch)
{
    const FrameItem& item = m_frame.items[batch.item];
    unsigned features = batch.key.features | SHADER_INSTANCED;
    const GLProgram* program = useProgram(*item.entry->appearance, features);
    if (!program) {
        return;
    }
    bindVertexArray(batch.key.vertexArray);
    if (m_view != item.view) {
        bindView(item.view);
    }
    bindSurroundings(item, features);
    if (batch.key.mode == GL_TRIANGLES) {
        setFaces(item);
    } else {
        setCulling(GL_NONE);
        glPointSize(batch.key.pointSize);
    }
    m_device.paint().applySettings(nullptr, m_writesDepth);
    ++m_statistics.drawCalls;
    plan.draw(batch, m_device.capabilities(), program->firstSlot);
}

} // namespace kalmyr::detail
