#pragma once

#include <unordered_map>

class SoNode;
class SoPath;

namespace kalmyr::detail {

class WrittenText;

/// The part of a graph that is written for a path: the nodes on it with the children that affect
/// the tail, and all below the tail. The whole graph without a path.
class PathCut {
public:
    void keepOnly(const SoPath& path);
    bool isKept(const SoNode* parent, const SoNode* child, int index) const;

    /// What stands in front of the head and behind it.
    static void begin(WrittenText& text);
    void end(WrittenText& text, const SoPath& path) const;

private:
    std::unordered_map<const SoNode*, int> m_onPath; ///< child index that the path takes
};

} // namespace kalmyr::detail
