#include "rendering/RenderList.h"

#include "rendering/RenderListCache.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace kalmyr::detail {

RenderList::~RenderList()
{
    if (m_cache) {
        m_cache->forget(*this);
    }
}

void RenderList::addItem(Entry&& entry)
{
    m_box.extendBy(entry.box);
    m_pixelReach = std::max(m_pixelReach, entry.pixelReach);
    m_entries.push_back(std::move(entry));
}

void RenderList::addList(Entry&& entry)
{
    entry.kind = LIST;
    entry.box =
        entry.identity ? entry.list->getBox() : transformBox(entry.list->getBox(), entry.matrix);
    m_box.extendBy(entry.box);
    entry.pixelReach = entry.list->m_pixelReach;
    m_pixelReach = std::max(m_pixelReach, entry.pixelReach);
    m_hasMarks = m_hasMarks || entry.list->hasMarks();
    m_hasLights = m_hasLights || entry.list->m_hasLights;
    m_hasFogs = m_hasFogs || entry.list->m_hasFogs;
    m_entries.push_back(std::move(entry));
}

void RenderList::addBackground(const Background& background)
{
    Entry entry;
    entry.kind = BACKGROUND;
    entry.index = static_cast<std::int32_t>(m_backgrounds.size());
    m_backgrounds.push_back(background);
    m_hasMarks = true;
    m_entries.push_back(std::move(entry));
}

void RenderList::addSelection(const SoNode* selection, const SbMatrix& matrix, int view)
{
    Entry entry;
    entry.kind = SELECTION;
    entry.index = view;
    entry.matrix = matrix;
    entry.node = selection;
    m_hasMarks = true;
    m_entries.push_back(std::move(entry));
}

void RenderList::addLight(const SoLightRecord& light)
{
    SoRef<Surroundings> one(new Surroundings);
    one->lights.push_back(light);
    Entry entry;
    entry.kind = LIGHT;
    entry.surroundings = one;
    m_hasLights = true;
    m_entries.push_back(std::move(entry));
}

void RenderList::addFog(const FogMark& fog, const SbMatrix& matrix)
{
    Entry entry;
    entry.kind = FOG;
    entry.index = static_cast<std::int32_t>(m_fogs.size());
    entry.matrix = matrix;
    m_fogs.push_back(fog);
    m_hasFogs = true;
    m_entries.push_back(std::move(entry));
}

void RenderList::findFog(const SbMatrix& toWorld, FogMark& fog) const
{
    if (!m_hasFogs) {
        return;
    }
    bool isKnown = fog.values.type != SoEnvironmentValues::NONE;
    for (const Entry& entry : m_entries) {
        if (entry.kind == LIST) {
            entry.list->findFog(entry.matrix * toWorld, fog);
        } else if (entry.kind == FOG) {
            const FogMark& here = m_fogs[static_cast<std::size_t>(entry.index)];
            if (fog.isBound || (isKnown && !here.isBound)) {
                continue;
            }
            fog = here;
            fog.values.visibility *= std::cbrt(std::abs((entry.matrix * toWorld).det3()));
        }
        isKnown = fog.values.type != SoEnvironmentValues::NONE;
    }
}

void RenderList::gatherLights(const SbMatrix& toWorld, std::vector<SoLightRecord>& lights) const
{
    if (!m_hasLights) {
        return;
    }
    for (const Entry& entry : m_entries) {
        if (entry.kind == LIGHT) {
            lights.push_back(entry.surroundings->lights.front());
            lights.back().toWorld = lights.back().toWorld * toWorld;
        } else if (entry.kind == LIST) {
            entry.list->gatherLights(entry.matrix * toWorld, lights);
        }
    }
}

bool RenderList::canTake(const RenderList& other) const
{
    return m_backgrounds.empty() && m_fogs.empty() && other.m_backgrounds.empty()
           && other.m_fogs.empty();
}

void RenderList::replace(std::size_t first, std::size_t count, RenderList& from)
{
    const auto start = m_entries.begin() + static_cast<std::ptrdiff_t>(first);
    const std::size_t numSame = std::min(count, from.m_entries.size());
    const auto split = from.m_entries.begin() + static_cast<std::ptrdiff_t>(numSame);
    std::move(from.m_entries.begin(), split, start);
    const auto end = start + static_cast<std::ptrdiff_t>(numSame);
    if (count > numSame) {
        m_entries.erase(end, end + static_cast<std::ptrdiff_t>(count - numSame));
    } else {
        m_entries.insert(end, std::move_iterator(split), std::move_iterator(from.m_entries.end()));
    }
    m_hasMarks = m_hasMarks || from.m_hasMarks;
    m_hasLights = m_hasLights || from.m_hasLights;
    m_hasFogs = m_hasFogs || from.m_hasFogs;
    m_box.extendBy(from.m_box);
    if (m_parts && ++m_parts->numEdits > m_entries.size() / 16) {
        m_parts->numEdits = 0;
        m_box.makeEmpty();
        for (const Entry& entry : m_entries) {
            m_box.extendBy(entry.box);
        }
    }
}

namespace {

template <class T>
bool areEqual(const SoRef<T>& a, const SoRef<T>& b)
{
    return a == b || (a && b && *a == *b);
}

bool isBlack(const SbColor& color)
{
    return color == SbColor(0, 0, 0);
}

/// Whether the looks differ by no more than an entry in a table of looks: neither by the program
/// that draws them nor by the state that it needs.
bool differByColors(const SoRenderAppearance& a, const SoRenderAppearance& b)
{
    const auto colorless = [](const SoRenderAppearance& look) {
        SoRef<SoRenderAppearance> same(new SoRenderAppearance);
        same->lit = look.lit;
        same->translucentTexture = look.translucentTexture;
        same->hiding = look.hiding;
        same->drawStyle = look.drawStyle;
        same->texture = look.texture;
        same->texture.blendColor = SbColor();
        same->environment.fogType = look.environment.fogType;
        same->extras = look.extras;
        return same;
    };
    return isBlack(a.specular) == isBlack(b.specular)
           && a.translucentTexture == b.translucentTexture && *colorless(a) == *colorless(b);
}

} // namespace

bool RenderList::areOfOneKind(const Entry& a, const Entry& b, bool& hasNewLook)
{
    if (a.kind != b.kind || a.transparent != b.transparent || a.layer != b.layer
        || a.index != b.index || a.geometry != b.geometry || a.list != b.list || a.node != b.node
        || !areEqual(a.surroundings, b.surroundings)) {
        return false;
    }
    if (areEqual(a.appearance, b.appearance)) {
        return true;
    }
    hasNewLook = true;
    return a.appearance && b.appearance && differByColors(*a.appearance, *b.appearance);
}

bool RenderList::isSameAs(const RenderList& other) const
{
    return canTake(other)
           && std::equal(m_entries.begin(), m_entries.end(), other.m_entries.begin(),
                         other.m_entries.end(), [](const Entry& a, const Entry& b) {
                             bool hasNewLook = false;
                             return areOfOneKind(a, b, hasNewLook) && !hasNewLook
                                    && a.matrix == b.matrix && (a.kind == LIST || a.box == b.box);
                         });
}

SbBox3f transformBox(const SbBox3f& box, const SbMatrix& matrix)
{
    if (box.isEmpty()) {
        return box;
    }
    SbBox3f out;
    if (!matrix.isAffine()) {
        for (int i = 0; i < 8; ++i) {
            const SbVec3f corner((i & 1 ? box.getMax() : box.getMin())[0],
                                 (i & 2 ? box.getMax() : box.getMin())[1],
                                 (i & 4 ? box.getMax() : box.getMin())[2]);
            out.extendBy(matrix.point(corner));
        }
        return out;
    }
    SbVec3f low(matrix[3][0], matrix[3][1], matrix[3][2]);
    SbVec3f high = low;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            const float a = box.getMin()[row] * matrix[row][column];
            const float b = box.getMax()[row] * matrix[row][column];
            low[column] += std::fmin(a, b);
            high[column] += std::fmax(a, b);
        }
    }
    out.setBounds(low, high);
    return out;
}

} // namespace kalmyr::detail
