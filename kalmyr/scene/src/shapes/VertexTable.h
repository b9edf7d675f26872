#pragma once

#include <cstdint>
#include <vector>

namespace kalmyr::detail {

/// Gives equal combinations of position and attributes one vertex number, in linear time.
///
/// The vertices of a position form a chain. Where a position has very many different ones (the tip
/// of a fan with a colour per face) only the youngest few are looked at: a few vertices more, but
/// never quadratic time.
class VertexTable {
public:
    struct Key {
        std::uint32_t position;
        std::int32_t normal, texCoord, color;
    };

    VertexTable(std::size_t numPositions, std::size_t expected) : m_head(numPositions, kNone)
    {
        m_vertices.reserve(expected);
    }

    std::uint32_t add(const Key& key)
    {
        std::uint32_t& head = m_head[key.position];
        int steps = 0;
        for (std::uint32_t v = head; v != kNone && steps < kMaxSteps;
             v = m_vertices[v].next, ++steps) {
            const Key& k = m_vertices[v].key;
            if (k.normal == key.normal && k.texCoord == key.texCoord && k.color == key.color)
                return v;
        }
        const auto v = static_cast<std::uint32_t>(m_vertices.size());
        m_vertices.push_back({key, head});
        head = v;
        return v;
    }

    std::size_t size() const { return m_vertices.size(); }
    const Key& operator[](std::size_t i) const { return m_vertices[i].key; }

private:
    static constexpr std::uint32_t kNone = 0xffffffff;
    static constexpr int kMaxSteps = 24;
    struct Vertex {
        Key key;
        std::uint32_t next;
    };
    std::vector<std::uint32_t> m_head;
    std::vector<Vertex> m_vertices;
};

} // namespace kalmyr::detail
