#pragma once

#include "AttributeLookup.h"
#include "PrimitiveRuns.h"

#include <memory>

class SoDetail;

namespace kalmyr::detail {

/// Finds a face, segment or point of a shape among its coordinate indices by its number.
///
/// Remembers where every sixteenth run begins, and the indices where the shape has none of its
/// own: made for the first detail that is asked for, and kept with the geometry.
class PrimitiveIndex {
public:
    /// Takes the list of generated indices away.
    explicit PrimitiveIndex(ShapeSource& source);

    /// The detail of a face, segment or point. `source` is that of the same shape, at least its
    /// numbers. Null when there is no such primitive.
    std::unique_ptr<SoDetail> createDetail(const ShapeSource& source, std::uint32_t number) const;

    /// Memory in use, bytes.
    std::size_t getSize() const;

private:
    struct Entry {
        std::uint32_t slot, number; ///< of the first corner and primitive of the run
    };
    static constexpr std::uint32_t kRunsPerEntry = 16;

    std::span<const std::int32_t> indicesOf(const ShapeSource& source) const
    {
        return m_made.empty() ? source.input.coordIndex : m_made;
    }

    PrimitiveRuns m_runs;
    Counts m_counts;
    std::vector<Entry> m_entries;
    std::vector<std::int32_t> m_made;
};

} // namespace kalmyr::detail
