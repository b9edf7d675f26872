#pragma once

#include <kalmyr/base/SbBox.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class SoNode;

namespace kalmyr::detail {

/// The box around a row of boxes, which are kept elsewhere: exchanging one takes logarithmic time.
/// `boxAt(i)` gives the box at place i.
class BoxTree {
public:
    template <class BoxAt>
    void build(std::size_t count, const BoxAt& boxAt)
    {
        m_count = count;
        m_levels.clear();
        do {
            const std::size_t below = m_levels.empty() ? count : m_levels.back().size();
            m_levels.emplace_back((below + kFan - 1) / kFan);
            for (std::size_t i = 0; i < m_levels.back().size(); ++i)
                join(m_levels.size() - 1, i, boxAt);
        } while (m_levels.back().size() > 1);
    }

    /// One more box stands at the end; exchanged() is to be called for it.
    void extend()
    {
        std::size_t below = ++m_count;
        for (auto& level : m_levels) {
            below = (below + kFan - 1) / kFan;
            level.resize(below);
        }
        if (below > 1)
            m_levels.emplace_back(1);
    }

    template <class BoxAt>
    void exchanged(std::size_t place, const BoxAt& boxAt)
    {
        for (std::size_t level = 0; level < m_levels.size(); ++level)
            join(level, place /= kFan, boxAt);
    }

    const SbBox3f& get() const { return m_levels.back().front(); }

private:
    static constexpr std::size_t kFan = 16;

    template <class BoxAt>
    void join(std::size_t level, std::size_t place, const BoxAt& boxAt)
    {
        const std::size_t below = level ? m_levels[level - 1].size() : m_count;
        const std::size_t end = std::min((place + 1) * kFan, below);
        SbBox3f all;
        for (std::size_t i = place * kFan; i < end; ++i)
            all.extendBy(level ? m_levels[level - 1][i] : boxAt(i));
        m_levels[level][place] = all;
    }

    std::size_t m_count = 0;
    std::vector<std::vector<SbBox3f>> m_levels; ///< boxes of kFan of the level before each
};

/// The state by which many children, all with known bounds up to the last, are measured by those
/// alone that changed: which these are, where they stand, and the box around all.
struct BoundsRun {
    int first = 0;
    int numChildren = 0;
    std::uint64_t stateKey = 0;
    bool broken = false; ///< more changed than can be told one by one
    BoxTree boxes;
    std::vector<std::pair<const SoNode*, int>> places; ///< sorted; a child may stand at several
    std::vector<std::pair<const SoNode*, int>> added;  ///< the same, of children that came later
    std::vector<const SoNode*> changed;                ///< since the box was right

    /// More, and going through all children is as good.
    static constexpr std::size_t kMaxChanged = 512;

    void note(const SoNode* child)
    {
        if (broken || (!changed.empty() && changed.back() == child))
            return;
        broken = changed.size() == kMaxChanged;
        if (!broken)
            changed.push_back(child);
    }

    /// A child came last.
    void append(const SoNode* child)
    {
        note(child);
        broken = broken || added.size() == kMaxChanged;
        if (broken)
            return;
        added.emplace_back(child, numChildren++);
        boxes.extend();
    }

    /// Appends the places of a child.
    void collectPlaces(const SoNode* child, std::vector<int>& out) const
    {
        for (auto at = std::lower_bound(places.begin(), places.end(), std::pair{child, 0});
             at != places.end() && at->first == child; ++at)
            out.push_back(at->second);
        for (const auto& [node, place] : added)
            if (node == child)
                out.push_back(place);
    }
};

} // namespace kalmyr::detail
