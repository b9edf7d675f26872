#pragma once

#include <kalmyr/shapes/FaceBuilder.h>

#include <algorithm>
#include <cstddef>

namespace kalmyr::detail {

/// Where a corner stands: what bindings count by.
struct Place {
    std::uint32_t slot; ///< place in the coordinate indices
    std::uint32_t run;  ///< runs (faces, strips, lines) that end before it
    std::uint32_t face; ///< what PER_FACE counts
    std::uint32_t part; ///< what PER_PART counts
};

/// How many of each thing a shape has, to tell whether there are enough values.
struct Counts {
    std::uint32_t positions = 0; ///< one more than the highest index used
    std::uint32_t corners = 0;
    std::uint32_t faces = 0;
    std::uint32_t parts = 0;
};

/// An index that is out of range, for the warning.
struct Fault {
    const char* field = nullptr; ///< null while there is none
    long long index = 0;
    std::size_t limit = 0;
    std::size_t place = 0; ///< where in the field

    void record(const char* name, long long value, std::size_t size, std::size_t at)
    {
        if (!field)
            *this = {name, value, size, at};
    }
};

/// Posts one warning for the first fault of a shape, if there was one.
void warnOf(const Fault& fault, const SoNode* node);

/// Finds the value of an attribute that a corner takes.
class AttributeLookup {
public:
    template <class T>
    AttributeLookup(const Attribute<T>& attribute, std::span<const std::int32_t> coordIndex)
        : m_size(attribute.getCount()), m_field(attribute.indexField)
    {
        if (m_size == 0)
            return;
        const bool indexed = !attribute.indices.empty()
                             && !(attribute.indices.size() == 1 && attribute.indices[0] < 0);
        chooseMode(attribute.binding, indexed);
        if (m_explicit)
            m_indices = attribute.indices;
        if (m_mode == COORDINATE) {
            m_indices = coordIndex;
            m_firstCoord = attribute.firstCoord;
        }
    }

    bool isGiven() const { return m_mode != NONE; }
    /// Every corner has the same value.
    bool isConstant() const { return m_mode == NONE || m_mode == FIRST; }
    /// Corners at one position always have the same value.
    bool followsPosition() const { return isConstant() || m_mode == COORDINATE; }
    void drop() { m_mode = NONE; }

    /// Whether implicit numbers stay within the values; explicit indices are checked corner by
    /// corner.
    bool hasEnough(const Counts& counts) const;

    /// The value's number, kept below the number of values; -1 for an explicit index that is out of
    /// range, which `fault` then records.
    std::int64_t at(const Place& place, Fault& fault) const
    {
        std::size_t i = number(place);
        if (m_mode != COORDINATE && !m_explicit)
            return static_cast<std::int64_t>(std::min(i, m_size - 1));
        const std::int64_t value = i < m_indices.size() ? m_indices[i] : -1;
        if (!m_explicit)
            return std::min(value - m_firstCoord, static_cast<std::int64_t>(m_size) - 1);
        if (value >= 0 && value < static_cast<std::int64_t>(m_size))
            return value;
        fault.record(m_field, value, m_size, i);
        return -1;
    }

private:
    enum Mode { NONE, FIRST, FACE, PART, CORNER, SLOT, COORDINATE };
    void chooseMode(int binding, bool indexed);
    std::size_t number(const Place& place) const
    {
        switch (m_mode) {
        case FACE:
            return place.face;
        case PART:
            return place.part;
        case CORNER:
            return place.slot - place.run; // every earlier run has one -1
        case SLOT:
        case COORDINATE:
            return place.slot;
        default:
            return 0;
        }
    }

    Mode m_mode = NONE;
    bool m_explicit = false;
    std::int64_t m_firstCoord = 0;
    std::size_t m_size = 0;
    std::span<const std::int32_t> m_indices;
    const char* m_field = nullptr;
};

} // namespace kalmyr::detail
