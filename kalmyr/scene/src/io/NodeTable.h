#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

class SoNode;

namespace kalmyr::detail {

/// Maps each node of a graph to its occurrences and name in a text. Addresses are only compared.
///
/// Open addressing in many small tables, so that no insertion moves more than a part of the
/// entries: one large table of a million nodes takes 40 ms to grow.
class NodeTable {
public:
    struct Info {
        std::int32_t count = 0; ///< occurrences
        std::int32_t name = -1; ///< number of the name, given when the node is written
        bool named = false;     ///< a route or a field further down names it
        bool written = false;
    };

    /// Adds the node when it is missing. Valid until the next addition.
    Info& operator[](const SoNode* node)
    {
        Shard& shard = m_shards[shardOf(node)];
        if ((shard.count + 1) * 4 > shard.slots.size() * 3)
            grow(shard);
        Slot& slot = shard.slots[find(shard.slots, node)];
        if (!slot.node) {
            slot.node = node;
            ++shard.count;
        }
        return slot.info;
    }
    bool contains(const SoNode* node) const
    {
        const Shard& shard = m_shards[shardOf(node)];
        return !shard.slots.empty() && shard.slots[find(shard.slots, node)].node;
    }

private:
    static constexpr int kShardBits = 8;
    static constexpr std::size_t kFirstSize = 8; // a power of two
    static constexpr int kNodeBits = 6;          // of the distance of two nodes, at least

    struct Slot {
        const SoNode* node = nullptr;
        Info info;
    };
    struct Shard {
        std::vector<Slot> slots;
        std::size_t count = 0;
    };

    /// Nodes that were made one after the other are next to each other in memory, and here.
    static std::size_t shardOf(const SoNode* node)
    {
        constexpr int kBlockBits = 16;
        const std::uint64_t block = reinterpret_cast<std::uintptr_t>(node) >> kBlockBits;
        return (block * 0x9E3779B97F4A7C15u) >> (64 - kShardBits);
    }
    /// Number of the node's slot, or of the empty one where it is to go.
    static std::size_t find(const std::vector<Slot>& slots, const SoNode* node)
    {
        const std::size_t mask = slots.size() - 1;
        std::size_t at = (reinterpret_cast<std::uintptr_t>(node) >> kNodeBits) & mask;
        while (slots[at].node && slots[at].node != node)
            at = (at + 1) & mask;
        return at;
    }
    static void grow(Shard& shard)
    {
        std::vector<Slot> larger(shard.slots.empty() ? kFirstSize : shard.slots.size() * 2);
        for (const Slot& slot : shard.slots)
            if (slot.node)
                larger[find(larger, slot.node)] = slot;
        shard.slots = std::move(larger);
    }

    std::array<Shard, std::size_t(1) << kShardBits> m_shards;
};

} // namespace kalmyr::detail
