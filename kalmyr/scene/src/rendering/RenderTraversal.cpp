#include "rendering/RenderTraversal.h"

#include "core/ChildChanges.h"
#include "rendering/ClipPlaneElement.h"

#include <kalmyr/actions/SoGLRenderAction.h>
#include <kalmyr/core/SoChildList.h>
#include <kalmyr/elements/SoMaterialElement.h>
#include <kalmyr/elements/SoMatrixElements.h>
#include <kalmyr/nodes/SoSelection.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/shapes/SoShape.h>
#include <kalmyr/vrml/SoVRMLParent.h>

#include <algorithm>
#include <numeric>
#include <unordered_set>

namespace kalmyr::detail {

namespace {

constexpr std::size_t kMaxRememberedTextures = 1024;
/// Lists of nodes with fewer children are made as a whole.
constexpr int kMinParts = 16;
/// Children with effects on the others are visited for each patch; no more than so many.
constexpr int kMaxPrefix = 32;

bool hasTranslucentColors(const SoGeometry& geometry)
{
    return std::any_of(geometry.colors.begin(), geometry.colors.end(),
                       [](std::uint32_t color) { return (color & 0xff) != 0xff; });
}

/// Whether the node's entries can be told apart by its children: it visits them one by one between
/// a push and a pop, and does nothing else.
bool hasParts(const SoNode* node)
{
    const SoType type = node->getTypeId();
    return (type == SoSeparator::getClassTypeId() || type == SoSelection::getClassTypeId())
           && node->getChildren()->getLength() >= kMinParts;
}

/// Whether a list of the node would serve although something below it changes in every frame: few
/// of many children do.
bool hasFewChanges(const SoNode* node, std::uint64_t changeId)
{
    constexpr std::size_t kChildrenPerChange = 8;
    std::vector<ChildChanges::Change> changes;
    return hasParts(node) && ChildChanges::since(*node, changeId, changes)
           && changes.size() * kChildrenPerChange
                  <= static_cast<std::size_t>(node->getChildren()->getLength());
}

/// Adds where those children stand, in order; those that left are ignored. False when one of them
/// has an effect on others.
bool findPlaces(const SoChildList& children, int firstFree,
                const std::unordered_set<const SoNode*>& below, std::vector<int>& places)
{
    for (const SoNode* child : below) {
        const int first = children.find(child);
        if (first < 0) {
            continue;
        }
        if (first < firstFree) {
            return false;
        }
        places.push_back(first);
        // Whoever holds it may hold it twice.
        if (child->getAuditors().getLength() > 1) {
            for (int i = first + 1; i < children.getLength(); ++i) {
                if (children[i] == child) {
                    places.push_back(i);
                }
            }
        }
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return true;
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

/// Visits the node's content as it stands in a list of its own: in the node's space, without lights
/// and planes from outside.
template <class Visit>
void RenderTraversal::visitApart(SoNode* node, RenderList& into, const Visit& visitContent)
{
    RenderList* const outerList = std::exchange(m_list, &into);
    const std::uint8_t outerLayer = std::exchange(m_layer, 0);
    ++m_nesting;
    m_state->push();
    SoModelMatrixElement::makeIdentity(m_state, node);
    m_state->write<SoLightElement>().set(node, nullptr);
    m_state->write<ClipPlaneElement>().set(node, nullptr);
    visitContent();
    m_state->pop();
    --m_nesting;
    m_layer = outerLayer;
    m_list = outerList;
}

void RenderTraversal::record(SoNode* node, std::uint64_t changeId, std::uint64_t stateKey)
{
    const SoRef<RenderList> fresh(new RenderList);
    const bool outer = std::exchange(m_viewDependent, false);
    visitApart(node, *fresh, [&] {
        if (hasParts(node)) {
            visitInParts(node, *fresh);
        } else {
            visit(node);
        }
    });
    fresh->finish();
    ++statistics.listsBuilt;
    const bool unchanged = node->getChangeId() == changeId && !m_action.hasTerminated();
    if (unchanged && !m_viewDependent) {
        m_cache.add(*fresh, node, changeId, stateKey);
    }
    m_cache.note(node, node->getChangeId(), m_frame, m_viewDependent);
    appendList(*fresh);
    m_viewDependent |= outer;
}

/// As the node does it itself.
void RenderTraversal::visitInParts(SoNode* node, RenderList& list)
{
    ChildChanges::watch(*node);
    auto parts = std::make_unique<RenderList::Parts>();
    const SoChildList& children = *node->getChildren();
    m_state->push();
    for (int i = 0; i < children.getLength() && !m_action.hasTerminated(); ++i) {
        const std::size_t before = list.m_entries.size();
        SoNode* const child = children[i];
        m_action.traverse(child, i);
        parts->counts.push_back(static_cast<std::uint32_t>(list.m_entries.size() - before));
        if (child->affectsState()) {
            parts->firstFree = i + 1;
        }
    }
    m_state->pop();
    if (parts->firstFree <= kMaxPrefix) {
        list.m_parts = std::move(parts);
    }
}

/// Makes the changes of the list of children to the parts, and returns in `changed` which children
/// are to be visited, in order. False when a child has an effect on others.
bool RenderTraversal::findChanged(const SoNode& node, RenderList& list, std::vector<int>& changed)
{
    std::vector<ChildChanges::Change> changes;
    if (!ChildChanges::since(node, list.m_changeId, changes)) {
        return false;
    }
    const SoChildList& children = *node.getChildren();
    RenderList::Parts& parts = *list.m_parts;
    std::unordered_set<const SoNode*> below;
    std::vector<char> isNew;
    for (const ChildChanges::Change& change : changes) {
        if (change.kind == ChildChanges::CHANGED) {
            below.insert(change.child);
            continue;
        }
        isNew.resize(parts.counts.size());
        const auto at = static_cast<std::ptrdiff_t>(change.index);
        if (change.index < parts.firstFree) {
            return false;
        }
        if (change.kind == ChildChanges::INSERTED) {
            parts.counts.insert(parts.counts.begin() + at, 0);
            isNew.insert(isNew.begin() + at, 1);
        } else if (change.kind == ChildChanges::REPLACED) {
            isNew[static_cast<std::size_t>(at)] = 1;
        } else {
            clearPart(list, change.index);
            parts.counts.erase(parts.counts.begin() + at);
            isNew.erase(isNew.begin() + at);
        }
    }
    if (children.getLength() != static_cast<int>(parts.counts.size())) {
        return false;
    }
    for (std::size_t i = 0; i < isNew.size(); ++i) {
        if (isNew[i]) {
            changed.push_back(static_cast<int>(i));
        }
    }
    return findPlaces(children, parts.firstFree, below, changed);
}

/// Brings the node's list up to date by visiting only the children that changed.
bool RenderTraversal::patch(SoNode* node, std::uint64_t changeId, std::uint64_t stateKey)
{
    RenderList* const list = m_cache.findOld(node, stateKey);
    if (!list || !list->m_parts || m_nesting >= kMaxNesting) {
        return false;
    }
    const SoRef<RenderList> held(list);
    const bool outer = std::exchange(m_viewDependent, false);
    std::vector<int> changed;
    bool isDone = findChanged(*node, *list, changed);
    if (isDone) {
        const SoRef<RenderList> beside(new RenderList);
        visitApart(node, *beside, [&] { isDone = replaceParts(node, *list, changed); });
    }
    isDone =
        isDone && node->getChangeId() == changeId && !m_action.hasTerminated() && !m_viewDependent;
    m_viewDependent |= outer;
    if (!isDone) {
        m_cache.forget(*list);
        m_patches.push_back({list, 0, 0, false});
        return false;
    }
    list->m_changeId = changeId;
    ++statistics.listsPatched;
    m_cache.note(node, changeId, m_frame, false);
    appendList(*list);
    return true;
}

bool RenderTraversal::replaceParts(SoNode* node, RenderList& list, const std::vector<int>& changed)
{
    const SoChildList& children = *node->getChildren();
    m_state->push();
    // What the first children set is seen by the others.
    for (int i = 0; i < list.m_parts->firstFree && !m_action.hasTerminated(); ++i) {
        m_action.traverse(children[i], i);
    }
    const bool isDone = std::all_of(changed.begin(), changed.end(),
                                    [&](int index) { return replacePart(node, list, index); });
    m_state->pop();
    return isDone;
}

bool RenderTraversal::replacePart(SoNode* node, RenderList& list, int index)
{
    SoNode* const child = (*node->getChildren())[index];
    const SoRef<RenderList> fresh(new RenderList);
    RenderList* const outer = std::exchange(m_list, fresh.get());
    m_action.traverse(child, index);
    m_list = outer;
    if (child->affectsState() || !list.canTake(*fresh)) {
        return false;
    }
    const std::size_t first = list.m_parts->firstEntry(index);
    std::uint32_t& count = list.m_parts->counts[static_cast<std::size_t>(index)];
    const auto old = list.m_entries.begin() + static_cast<std::ptrdiff_t>(first);
    const bool isSameKind = std::equal(old, old + count, fresh->m_entries.begin(),
                                       fresh->m_entries.end(), RenderList::differByPlace);
    const std::size_t numNew = fresh->m_entries.size();
    list.replace(first, count, *fresh);
    count = static_cast<std::uint32_t>(numNew);
    m_patches.push_back({&list, first, numNew, isSameKind});
    return true;
}

void RenderTraversal::clearPart(RenderList& list, int index)
{
    const SoRef<RenderList> nothing(new RenderList);
    std::uint32_t& count = list.m_parts->counts[static_cast<std::size_t>(index)];
    list.replace(list.m_parts->firstEntry(index), count, *nothing);
    count = 0;
    m_patches.push_back({&list, 0, 0, false});
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
