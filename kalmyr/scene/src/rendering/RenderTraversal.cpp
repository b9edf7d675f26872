#include "rendering/RenderTraversal.h"

#include "core/ChildChanges.h"
#include "rendering/ClipPlaneElement.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLParent.h>

#include <algorithm>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kMaxRememberedTextures = 1024;

bool hasTranslucentColors(const SoGeometry& geometry)
{
    return std::any_of(geometry.colors.begin(), geometry.colors.end(),
                       [](std::uint32_t color) { return (color & 0xff) != 0xff; });
}

} // namespace

RenderTraversal::RenderTraversal(SoGLRenderAction& action)
    : m_action(action), m_state(action.getState())
{
    // Lists are relative to these, or have nothing to do with what is seen.
    for (const int index :
         {SoModelMatrixElement::getStackIndex(), SoLightElement::getStackIndex(),
          ClipPlaneElement::getStackIndex(), SoViewElement::getStackIndex(),
          SoViewportRegionElement::getStackIndex(), SoPickStyleElement::getStackIndex()}) {
        const auto i = static_cast<std::size_t>(index);
        m_notInKey.resize(std::max(m_notInKey.size(), i + 1));
        m_notInKey[i] = true;
    }
}

void RenderTraversal::setCaching(bool on)
{
    m_caching = on;
    if (!on) {
        clear();
    }
}

void RenderTraversal::clear()
{
    frame.clear();
    m_roots.clear();
    m_top.reset();
    m_list = nullptr;
}

void RenderTraversal::setStart(const SbMatrix& matrix, const RenderView& view)
{
    m_startMatrix = matrix;
    m_startView = view;
    m_hasStart = true;
}

void RenderTraversal::begin(SoNode*)
{
    ++m_frame;
    statistics = {};
    // The lists of the frame before stay with their root until the new ones have taken from them.
    m_top = new RenderList;
    m_list = m_top.get();
    m_nesting = 0;
    m_layer = 0;
    m_viewDependent = false;
    m_patches.clear();
    m_views.assign(1, m_hasStart ? m_startView : RenderView{{}, m_action.getViewportRegion()});
    m_viewIndices = {{0, 0}};
    m_state->write<SoViewportRegionElement>().set(nullptr, m_views[0].region);
    if (m_hasStart) {
        SoModelMatrixElement::set(m_state, nullptr, m_startMatrix);
        m_state->write<SoViewElement>().set(nullptr, m_startView.view);
    }
}

void RenderTraversal::end(SoNode* root)
{
    statistics.visits = m_action.getNumVisits();
    m_top->finish();
    m_list = nullptr;
    if (m_caching) {
        keepRoot(root);
    }
    m_appearances.clear();
    m_lastAppearance.reset();
    m_lastLights.reset();
    m_lastPlanes.reset();
    m_lastSurroundings.reset();
    m_cache.sweep(m_frame);
    m_styled.sweep();
}

void RenderTraversal::keepRoot(SoNode* root)
{
    std::erase_if(m_roots, [this, root](const Root& r) {
        return r.node == root || r.frame + kMaxRootAge < m_frame;
    });
    if (m_roots.size() >= kMaxRoots) {
        m_roots.erase(m_roots.begin());
    }
    m_roots.push_back({root, m_frame, m_top});
}

void RenderTraversal::updateFrame()
{
    const std::uint64_t generation = frame.generation;
    const std::size_t patched = frame.patches.size();
    kalmyr::detail::updateFrame(*m_top, m_views, m_frame, m_patches, frame);
    statistics.itemsPlaced =
        frame.generation == generation ? frame.patches.size() - patched : frame.items.size();
}

std::uint64_t RenderTraversal::stateKey()
{
    std::uint64_t key = SoElement::mix(1, static_cast<std::uint64_t>(m_action.getDrawStyle()));
    for (int i = 0; i < m_state->getNumStackIndices(); ++i) {
        if (static_cast<std::size_t>(i) < m_notInKey.size()
            && m_notInKey[static_cast<std::size_t>(i)]) {
            continue;
        }
        if (const std::uint64_t id = m_state->getValueId(i)) {
            key = SoElement::mix(key, id + static_cast<std::uint64_t>(i));
        }
    }
    return key;
}

void RenderTraversal::separator(SoNode* node, bool mayCache)
{
    const std::uint64_t id = node->getChangeId();
    mayCache = mayCache && m_caching && m_action.getPathMode() == SoAction::NO_PATH;
    const RenderListCache::Seen* seen = mayCache ? m_cache.seen(node) : nullptr;
    if (!seen || seen->viewDependent) {
        return traverseInPlace(node, mayCache);
    }
    const std::uint64_t key = stateKey();
    if (RenderList* list = m_cache.find(node, id, key)) {
        ++statistics.listsReused;
        return appendList(*list);
    }
    if (patch(node, id, key)) {
        return;
    }
    if (seen->since == m_frame || (seen->changeId != id && !hasFewChanges(node, seen->changeId))) {
        return traverseInPlace(node, mayCache);
    }
    if (m_nesting >= kMaxNesting) {
        return traverseInPlace(node, false);
    }
    record(node, id, key);
}

void RenderTraversal::traverseInPlace(SoNode* node, bool mayCache)
{
    const bool outer = std::exchange(m_viewDependent, false);
    const std::uint64_t before = m_action.getNumVisits();
    visit(node);
    if (mayCache && m_action.getNumVisits() - before >= kMinVisitsToCache
        && !m_action.hasTerminated()) {
        m_cache.note(node, node->getChangeId(), m_frame, m_viewDependent);
        if (hasParts(node)) {
            ChildChanges::watch(*node);
        }
    }
    m_viewDependent |= outer;
}

void RenderTraversal::appendList(RenderList& list)
{
    if (list.getEntries().empty()) {
        return;
    }
    RenderList::Entry entry;
    entry.list = &list;
    place(entry);
    m_list->addList(std::move(entry));
}

void RenderTraversal::place(RenderList::Entry& entry)
{
    entry.matrix = SoModelMatrixElement::get(m_state);
    entry.identity = entry.matrix.isIdentity();
    entry.layer = m_layer;
    entry.index = currentView();
    entry.surroundings = surroundings();
}

int RenderTraversal::currentView()
{
    if (m_nesting > 0) {
        return -1;
    }
    const std::uint64_t id = m_state->getValueId(SoViewElement::getStackIndex());
    const auto [found, isNew] = m_viewIndices.try_emplace(id, static_cast<int>(m_views.size()));
    if (isNew) {
        m_views.push_back({SoViewElement::get(m_state), SoViewportRegionElement::get(m_state)});
    }
    return found->second;
}

SoRef<const Surroundings> RenderTraversal::surroundings()
{
    const auto& lights = m_state->get<SoLightElement>().value();
    const auto& planes = m_state->get<ClipPlaneElement>().value();
    if (!lights && !planes) {
        return nullptr;
    }
    if (!m_lastSurroundings || lights != m_lastLights || planes != m_lastPlanes) {
        SoRef<Surroundings> fresh(new Surroundings);
        if (lights) {
            fresh->lights = *lights;
        }
        if (planes) {
            fresh->clipPlanes = *planes;
        }
        m_lastLights = lights;
        m_lastPlanes = planes;
        m_lastSurroundings = fresh;
    }
    return m_lastSurroundings;
}

void RenderTraversal::annotation(SoNode* node, bool mayCache)
{
    const std::uint8_t outer = m_layer;
    m_layer = static_cast<std::uint8_t>(std::min(outer + 1, 255));
    separator(node, mayCache);
    m_layer = outer;
}

void RenderTraversal::shape(SoShape* shape)
{
    const SoDrawStyleValues::Style style = SoDrawStyleElement::get(m_state).style;
    if (style == SoDrawStyleValues::INVISIBLE) {
        return;
    }
    RenderList::Entry entry;
    entry.geometry = shape->getGeometry(m_state);
    if (!entry.geometry) {
        return;
    }
    const SoGeometry& geometry = *entry.geometry;
    const bool filled = SoDrawStyleElement::get(m_state).style == SoDrawStyleValues::FILLED;
    const bool isPainted = !geometry.coverage.isNull();
    if (isPainted || (geometry.isSizedInPixels() && !filled)) {
        m_state->push();
        if (!filled) { // pictures and letters have no edges to show
            SoDrawStyleValues style = SoDrawStyleElement::get(m_state);
            style.style = SoDrawStyleValues::FILLED;
            m_state->write<SoDrawStyleElement>().set(shape, style);
        }
        if (isPainted) {
            SoTextureValues texture;
            texture.image = geometry.coverage;
            texture.wrapS = texture.wrapT = SoTextureValues::CLAMP;
            m_state->write<SoTextureElement>().set(shape, texture);
            m_state->write<SoTextureMatrixElement>().set(shape, SbMatrix::identity());
        }
        entry.appearance = appearance();
        m_state->pop();
    } else {
        entry.appearance = appearance();
    }
    entry.pixelReach = geometry.getPixelReach();
    const SoRenderAppearance& look = *entry.appearance;
    entry.transparent =
        (geometry.colors.empty() ? look.transparency > 0 : hasTranslucentColors(geometry))
        || (look.translucentTexture && !geometry.texCoords.empty());
    place(entry);
    entry.box = entry.identity ? geometry.getBox() : transformBox(geometry.getBox(), entry.matrix);
    entry.node = shape;
    if (m_action.getDrawStyle() == SoGLRenderAction::AS_IS) {
        m_list->addItem(std::move(entry));
    } else {
        addStyled(std::move(entry), style);
    }
}

void RenderTraversal::addStyled(RenderList::Entry&& entry, SoDrawStyleValues::Style ownStyle)
{
    const SoGLRenderAction::DrawStyle style = m_action.getDrawStyle();
    const bool showsFaces =
        style == SoGLRenderAction::NO_TEXTURE || style == SoGLRenderAction::FLAT;
    entry.transparent = entry.transparent && showsFaces;
    if (style == SoGLRenderAction::HIDDEN_LINE && ownStyle == SoDrawStyleValues::FILLED
        && !entry.geometry->triangles.empty()) {
        RenderList::Entry hiding = entry;
        hiding.appearance = hidingAppearance();
        m_list->addItem(std::move(hiding));
    }
    entry.geometry = m_styled.find(entry.geometry, style);
    m_list->addItem(std::move(entry));
}

void RenderTraversal::background(const SbColor& top, const SbColor& bottom)
{
    m_list->addBackground({SbVec3f(0, 0, 0), {{top, 0}, {bottom, 1}}, nullptr, {}});
}

void RenderTraversal::backgroundPicture(std::shared_ptr<const BackgroundPictures> picture)
{
    m_list->addBackground({SbVec3f(0, 0, 0), {}, std::move(picture), {}});
}

void RenderTraversal::sky(std::vector<BackgroundStop> stops,
                          std::shared_ptr<const BackgroundPictures> pictures)
{
    const SbVec3f up = SoModelMatrixElement::get(m_state).direction(SbVec3f(0, 1, 0));
    currentView(); // what the sky is seen by, should nothing else be
    m_list->addBackground(
        {up, std::move(stops), std::move(pictures), SoModelMatrixElement::get(m_state)});
}

void RenderTraversal::sceneLight(const SoLightRecord& light)
{
    m_list->addLight(light);
}

void RenderTraversal::sceneFog(const FogMark& fog)
{
    m_list->addFog(fog, SoModelMatrixElement::get(m_state));
}

void RenderTraversal::visit(SoNode* node)
{
    if (node->isOfType(SoVRMLParent::getClassTypeId()))
        static_cast<SoVRMLParent*>(node)->doActionLightsFirst(&m_action);
    else
        node->doAction(&m_action);
}

void RenderTraversal::selection(const SoNode* node)
{
    m_list->addSelection(node, SoModelMatrixElement::get(m_state), currentView());
}

void RenderTraversal::clipPlane(const SoNode* node, const SbVec4f& plane)
{
    const SbMatrix toObject = SoModelMatrixElement::get(m_state).inverse();
    SbVec4f here;
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 4; ++column) {
            here[row] += toObject[row][column] * plane[column];
        }
    }
    auto& element = m_state->write<ClipPlaneElement>();
    auto planes = element.value() ? *element.value() : std::vector<SbVec4f>();
    planes.push_back(here);
    element.value() = std::make_shared<const std::vector<SbVec4f>>(std::move(planes));
    element.accumulatedBy(node);
    element.mixValueId(m_state->getValueId(SoModelMatrixElement::getStackIndex()));
}

std::size_t RenderTraversal::AppearanceHash::operator()(const AppearanceKey& key) const
{
    std::uint64_t hash = 0;
    for (const std::uint64_t id : key) {
        hash = (hash ^ id) * 0x9E3779B97F4A7C15ull;
        hash ^= hash >> 32;
    }
    return static_cast<std::size_t>(hash);
}

SoRef<const SoRenderAppearance> RenderTraversal::appearance()
{
    const AppearanceKey key{m_state->getValueId(SoMaterialElement::getStackIndex()),
                            m_state->getValueId(SoLightModelElement::getStackIndex()),
                            m_state->getValueId(SoDrawStyleElement::getStackIndex()),
                            m_state->getValueId(SoTextureElement::getStackIndex()),
                            m_state->getValueId(SoTextureMatrixElement::getStackIndex()),
                            m_state->getValueId(SoEnvironmentElement::getStackIndex()),
                            m_state->getValueId(SoLookExtrasElement::getStackIndex())};
    if (m_lastAppearance && key == m_lastKey) {
        return m_lastAppearance;
    }
    SoRef<const SoRenderAppearance>& known = m_appearances[key];
    if (!known) {
        known = makeAppearance();
    }
    m_lastKey = key;
    m_lastAppearance = known;
    return known;
}

SoRef<const SoRenderAppearance> RenderTraversal::makeAppearance()
{
    SoRef<SoRenderAppearance> look(new SoRenderAppearance);
    const SoMaterialValues& material = SoMaterialElement::get(m_state);
    look->diffuse = material.getDiffuse();
    look->ambient = material.ambient;
    look->specular = material.specular;
    look->emissive = material.emissive;
    look->shininess = material.shininess;
    look->transparency = material.getTransparency();
    look->lit = m_state->get<SoLightModelElement>().value().model != SoLightModelValue::BASE_COLOR;
    look->drawStyle = SoDrawStyleElement::get(m_state);
    look->texture = m_state->get<SoTextureElement>().value();
    look->textureMatrix = SoTextureMatrixElement::get(m_state);
    look->environment = m_state->get<SoEnvironmentElement>().value();
    look->extras = m_state->get<SoLookExtrasElement>().value();
    if (!material.takesEnvironment) {
        look->environment.ambientIntensity = 0;
    }
    look->translucentTexture =
        isTranslucent(look->texture, m_state->getValueId(SoTextureElement::getStackIndex()));
    for (std::size_t unit = 1; look->extras && unit < look->extras->stages.size(); ++unit) {
        const std::uint64_t id = m_state->getValueId(SoLookExtrasElement::getStackIndex()) + unit;
        look->translucentTexture |= isTranslucent(look->extras->stages[unit].texture, id);
    }
    restyle(*look, m_action.getDrawStyle());
    return look;
}

bool RenderTraversal::isTranslucent(const SoTextureValues& texture, std::uint64_t valueId)
{
    const int components = texture.image.getComponents();
    if (texture.image.isNull() || (components != 2 && components != 4)
        || texture.model == SoTextureValues::DECAL) {
        return false;
    }
    if (m_translucentTextures.size() > kMaxRememberedTextures) {
        m_translucentTextures.clear();
    }
    const auto [found, isNew] = m_translucentTextures.try_emplace(valueId, false);
    if (isNew) {
        found->second = texture.image.hasTransparency();
    }
    return found->second;
}

} // namespace kalmyr::detail
