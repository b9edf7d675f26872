#pragma once

#include <cstdint>
#include <optional>
#include <string>

class SoNode;

namespace kalmyr::detail {

/// Knows, while a file is read, how many points the shapes that come next can choose from, so that
/// a stray index is told with its place in the file.
class IndexCheck {
public:
    /// Taken when a node's body begins, and given back at its end.
    using Scope = std::int64_t;
    Scope open() const { return m_points; }
    /// `node` has been read. A remark when it is a shape with an index without a point.
    std::optional<std::string> close(const SoNode* node, Scope before);
    /// What was read since stands in no shape's way.
    void leaveOut(Scope before) { m_points = before; }
    /// A node that was read before stands here again.
    void reuse(const SoNode* node);

private:
    static constexpr std::int64_t kUnknown = -1;
    void take(const SoNode* node);

    std::int64_t m_points = kUnknown;
};

} // namespace kalmyr::detail
