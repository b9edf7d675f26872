#pragma once

#include "NodeTable.h"
#include "WriteDialect.h"

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_set>

namespace kalmyr::detail {

/// The nodes of a text, and the names that they get in it: each a name that no other has.
class WrittenNames {
public:
    using Info = NodeTable::Info;
    explicit WrittenNames(const WriteDialect& dialect) : m_dialect(dialect) {}

    /// What is known of the node. Valid until another one is asked for.
    Info& operator[](const SoNode* node) { return m_nodes[node]; }
    bool contains(const SoNode* node) const { return m_nodes.contains(node); }

    /// Counts one more occurrence; whether it is the first. All are counted before the first name
    /// is given.
    bool count(const SoNode* node);
    /// The node's own name, followed by a number where another node has that.
    const std::string& of(const SoNode* node, Info& info);
    const std::string& of(const SoNode* node) { return of(node, m_nodes[node]); }
    /// A name for anything else: `own`, or the fallback and a number where that is not free.
    std::string take(std::string_view own, std::string_view fallback);

private:
    const WriteDialect& m_dialect;
    NodeTable m_nodes;
    std::deque<std::string> m_given;          ///< in order
    std::unordered_set<std::string> m_wanted; ///< the own names of nodes
    std::unordered_set<std::string> m_taken;
    int m_nextInstance = 0;
};

} // namespace kalmyr::detail
