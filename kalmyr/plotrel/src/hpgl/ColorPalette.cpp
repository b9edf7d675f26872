#include "ColorPalette.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <queue>
#include <span>

namespace kalmyr::detail {

namespace {

struct Use {
    PackedColor color;
    double area;
};

std::uint8_t component(PackedColor color, int shift)
{
    return static_cast<std::uint8_t>(color >> shift);
}

/// Uses that get one colour.
struct Part {
    std::span<Use> uses;
    int shift = 0;   ///< of the component that spreads most
    double cost = 0; ///< of leaving it as it is

    explicit Part(std::span<Use> members) : uses(members)
    {
        double weight = 0;
        for (const Use& use : uses)
            weight += use.area;
        for (const int candidate : {0, 8, 16}) {
            const auto [least, most] =
                std::minmax_element(uses.begin(), uses.end(), [&](const Use& a, const Use& b) {
                    return component(a.color, candidate) < component(b.color, candidate);
                });
            const int spread =
                component(most->color, candidate) - component(least->color, candidate);
            const double by = spread * std::sqrt(weight);
            if (by > cost) {
                cost = by;
                shift = candidate;
            }
        }
    }
    bool operator<(const Part& other) const { return cost < other.cost; }

    /// Sorts the uses and returns the index at which to divide them.
    std::size_t divide() const
    {
        std::sort(uses.begin(), uses.end(), [this](const Use& a, const Use& b) {
            return component(a.color, shift) < component(b.color, shift);
        });
        const int least = component(uses.front().color, shift);
        const int most = component(uses.back().color, shift);
        const auto half = std::partition_point(uses.begin(), uses.end(), [&](const Use& use) {
            return component(use.color, shift) * 2 <= least + most;
        });
        return static_cast<std::size_t>(half - uses.begin());
    }

    PackedColor mean() const
    {
        std::array<double, 3> sums{};
        double weight = 0;
        for (const Use& use : uses) {
            weight += use.area;
            for (int i = 0; i < 3; ++i)
                sums[static_cast<std::size_t>(i)] += use.area * component(use.color, 16 - 8 * i);
        }
        PackedColor color = 0;
        for (const double sum : sums)
            color = color << 8 | static_cast<PackedColor>(std::lround(sum / weight));
        return color;
    }
};

} // namespace

void ColorPalette::choose(std::size_t size)
{
    std::vector<Use> uses;
    for (const auto& [color, area] : m_uses)
        uses.push_back({color, area});
    // The same file for the same drawing, whatever the order of the table.
    std::sort(uses.begin(), uses.end(),
              [](const Use& a, const Use& b) { return a.color < b.color; });
    std::priority_queue<Part> open;
    std::vector<Part> parts;
    if (!uses.empty())
        open.emplace(std::span(uses));
    while (!open.empty()) {
        const Part part = open.top();
        open.pop();
        if (part.cost <= 0 || parts.size() + open.size() + 2 > size) {
            parts.push_back(part);
            continue;
        }
        const std::size_t half = part.divide();
        open.emplace(part.uses.first(half));
        open.emplace(part.uses.subspan(half));
    }
    m_colors.clear();
    m_indices.clear();
    for (const Part& part : parts) {
        for (const Use& use : part.uses)
            m_indices[use.color] = m_colors.size();
        m_colors.push_back(part.mean());
    }
}

} // namespace kalmyr::detail
