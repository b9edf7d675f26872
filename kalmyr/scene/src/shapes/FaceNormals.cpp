#include "FaceNormals.h"

#include <bit>
#include <cmath>
#include <numbers>

namespace kalmyr::detail {

namespace {

/// Smaller crease angles leave every edge sharp.
constexpr float kFlatAngle = 1e-3f;
/// Faces around one position that are compared pair by pair, one bit each.
constexpr std::size_t kMaxPairs = 64;
/// Groups of faces that a position with more of them is divided into at most.
constexpr std::size_t kMaxGroups = 64;

struct FaceNormal {
    SbVec3f unit;
    float weight; ///< twice the area
};

SbVec3f normalOr(const SbVec3f& sum, const SbVec3f& fallback)
{
    SbVec3f n = sum;
    if (n.normalize() > 0)
        return n;
    return fallback == SbVec3f() ? SbVec3f(0, 0, 1) : fallback;
}

std::vector<FaceNormal> faceNormals(const FaceMesh& mesh, const FaceInput& input)
{
    std::vector<FaceNormal> normals(mesh.numFaces());
    const float sign = input.clockwise ? -1.0f : 1.0f;
    const auto at = [&](std::uint32_t corner) -> const SbVec3f& {
        return input.positions[static_cast<std::size_t>(input.coordIndex[mesh.slots[corner]])];
    };
    for (std::size_t f = 0; f < normals.size(); ++f) {
        const std::uint32_t first = mesh.faces[f].first, end = mesh.faces[f + 1].first;
        const SbVec3f& origin = at(first);
        SbVec3f sum;
        for (std::uint32_t c = first + 1; c + 1 < end; ++c)
            sum += (at(c) - origin).cross(at(c + 1) - origin);
        const float length = std::sqrt(sum.sqrLength());
        normals[f] =
            length > 0 ? FaceNormal{sum * (sign / length), length} : FaceNormal{SbVec3f(), 0};
    }
    return normals;
}

/// Corners by position, as one list with the beginning of each position's part.
struct Adjacency {
    std::vector<std::uint32_t> begin;
    std::vector<std::uint32_t> corners;
    std::vector<std::uint32_t> faces; ///< of the corners

    Adjacency(const FaceMesh& mesh, const FaceInput& input)
        : begin(input.positions.size() + 1), corners(mesh.slots.size()), faces(mesh.slots.size())
    {
        for (const std::uint32_t slot : mesh.slots)
            ++begin[static_cast<std::size_t>(input.coordIndex[slot])];
        std::uint32_t sum = 0;
        for (std::uint32_t& b : begin)
            b = sum += b;
        // Filled from the back, which turns the ends into beginnings.
        for (std::size_t f = mesh.numFaces(); f-- > 0;) {
            for (std::uint32_t c = mesh.faces[f + 1].first; c-- > mesh.faces[f].first;) {
                const std::uint32_t place =
                    --begin[static_cast<std::size_t>(input.coordIndex[mesh.slots[c]])];
                corners[place] = c;
                faces[place] = static_cast<std::uint32_t>(f);
            }
        }
    }
};

/// The normals of the corners around one position after another.
class Creaser {
public:
    Creaser(const std::vector<FaceNormal>& faces, float creaseAngle, FaceNormals& out)
        : m_faces(faces),
          m_limit(std::cos(creaseAngle)),
          m_halfLimit(std::cos(creaseAngle / 2)),
          m_out(out)
    {
    }

    void addPosition(const std::uint32_t* corners, const std::uint32_t* faces, std::size_t count)
    {
        m_around.resize(count);
        SbVec3f sum;
        for (std::size_t i = 0; i < count; ++i) {
            m_around[i] = m_faces[faces[i]];
            sum += m_around[i].unit * m_around[i].weight;
        }
        if (isSmooth(sum)) {
            const std::int32_t number = add(sum, m_around[0].unit);
            for (std::size_t i = 0; i < count; ++i)
                m_out.ofCorner[corners[i]] = number;
        } else if (count <= kMaxPairs) {
            comparePairs(corners);
        } else {
            group(corners);
        }
    }

private:
    std::int32_t add(const SbVec3f& sum, const SbVec3f& fallback)
    {
        m_out.values.push_back(normalOr(sum, fallback));
        return static_cast<std::int32_t>(m_out.values.size() - 1);
    }

    /// All faces lie within half the crease angle of the middle, so any two within the whole angle.
    bool isSmooth(const SbVec3f& sum) const
    {
        const float limit = m_halfLimit * std::sqrt(sum.sqrLength());
        for (const FaceNormal& n : m_around) {
            if (n.weight > 0 && n.unit.dot(sum) < limit)
                return false;
        }
        return true;
    }

    bool areSmooth(const FaceNormal& a, const FaceNormal& b) const
    {
        return a.weight == 0 || b.weight == 0 || a.unit.dot(b.unit) >= m_limit;
    }

    void comparePairs(const std::uint32_t* corners)
    {
        const std::size_t count = m_around.size();
        m_masks.assign(count, 0);
        for (std::size_t i = 0; i < count; ++i) {
            m_masks[i] |= std::uint64_t(1) << i;
            for (std::size_t j = i + 1; j < count; ++j) {
                if (!areSmooth(m_around[i], m_around[j]))
                    continue;
                m_masks[i] |= std::uint64_t(1) << j;
                m_masks[j] |= std::uint64_t(1) << i;
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::size_t same = 0;
            while (m_masks[same] != m_masks[i])
                ++same;
            m_out.ofCorner[corners[i]] =
                same < i ? m_out.ofCorner[corners[same]] : add(sumOf(m_masks[i]), m_around[i].unit);
        }
    }

    SbVec3f sumOf(std::uint64_t mask) const
    {
        SbVec3f sum;
        for (; mask; mask &= mask - 1) {
            const FaceNormal& n = m_around[static_cast<std::size_t>(std::countr_zero(mask))];
            sum += n.unit * n.weight;
        }
        return sum;
    }

    /// With very many faces: each joins the first group whose first face it is smooth with.
    void group(const std::uint32_t* corners)
    {
        m_groups.clear();
        m_groupOf.resize(m_around.size());
        for (std::size_t i = 0; i < m_around.size(); ++i) {
            const FaceNormal& n = m_around[i];
            std::size_t g = 0;
            while (g < m_groups.size() && !areSmooth(m_groups[g].leader, n))
                ++g;
            if (g == m_groups.size() && g < kMaxGroups)
                m_groups.push_back({n, SbVec3f()});
            g = std::min(g, m_groups.size() - 1);
            m_groups[g].sum += n.unit * n.weight;
            m_groupOf[i] = g;
        }
        const auto base = static_cast<std::int32_t>(m_out.values.size());
        for (const Group& g : m_groups)
            add(g.sum, g.leader.unit);
        for (std::size_t i = 0; i < m_around.size(); ++i) {
            m_out.ofCorner[corners[i]] = base + static_cast<std::int32_t>(m_groupOf[i]);
        }
    }

    struct Group {
        FaceNormal leader;
        SbVec3f sum;
    };
    const std::vector<FaceNormal>& m_faces;
    float m_limit, m_halfLimit;
    FaceNormals& m_out;
    std::vector<FaceNormal> m_around;
    std::vector<std::uint64_t> m_masks;
    std::vector<Group> m_groups;
    std::vector<std::size_t> m_groupOf;
};

void sumByPosition(const FaceMesh& mesh, const FaceInput& input,
                   const std::vector<FaceNormal>& faces, std::vector<SbVec3f>& sums)
{
    sums.assign(input.positions.size(), SbVec3f());
    for (std::size_t f = 0; f < mesh.numFaces(); ++f) {
        const SbVec3f n = faces[f].unit * faces[f].weight;
        for (std::uint32_t c = mesh.faces[f].first; c < mesh.faces[f + 1].first; ++c) {
            sums[static_cast<std::size_t>(input.coordIndex[mesh.slots[c]])] += n;
        }
    }
    for (SbVec3f& sum : sums)
        sum = normalOr(sum, SbVec3f());
}

} // namespace

void FaceNormals::compute(const FaceMesh& mesh, const FaceInput& input)
{
    const std::vector<FaceNormal> faces = faceNormals(mesh, input);
    if (input.creaseAngle < kFlatAngle) {
        mode = BY_FACE;
        values.reserve(faces.size());
        for (const FaceNormal& n : faces)
            values.push_back(normalOr(n.unit, SbVec3f()));
        return;
    }
    if (input.creaseAngle >= std::numbers::pi_v<float> - kFlatAngle) {
        mode = BY_POSITION;
        sumByPosition(mesh, input, faces, values);
        return;
    }
    mode = BY_CORNER;
    ofCorner.resize(mesh.slots.size());
    values.reserve(input.positions.size());
    const Adjacency adjacency(mesh, input);
    Creaser creaser(faces, input.creaseAngle, *this);
    for (std::size_t p = 0; p + 1 < adjacency.begin.size(); ++p) {
        const std::uint32_t first = adjacency.begin[p];
        const std::size_t count = adjacency.begin[p + 1] - first;
        if (count)
            creaser.addPosition(&adjacency.corners[first], &adjacency.faces[first], count);
    }
}

} // namespace kalmyr::detail
