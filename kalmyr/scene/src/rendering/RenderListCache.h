#pragma once

#include "rendering/RenderList.h"

#include <cstdint>
#include <unordered_map>

namespace kalmyr::detail {

/// Finds the lists of separators again, and remembers which separators kept still.
///
/// The cache owns no list: a list lives as long as a list above it or the top list of a root, so
/// what is out of the scene is gone with the next frame. Node addresses are only compared; as
/// change ids are never used twice, a new node at an old address is never taken for the old one.
class RenderListCache {
public:
    /// What was seen of a separator in an earlier frame.
    struct Seen {
        std::uint64_t changeId = 0;
        std::uint64_t frame = 0; ///< when it was last met
        std::uint64_t since = 0; ///< when it was first met with that change id
        int lists = 0;           ///< registered for the node
        bool viewDependent = false;
    };

    RenderListCache() = default;
    ~RenderListCache();
    RenderListCache(const RenderListCache&) = delete;
    RenderListCache& operator=(const RenderListCache&) = delete;

    /// The list of `node` in that state, or null.
    RenderList* find(const SoNode* node, std::uint64_t changeId, std::uint64_t stateKey) const;
    /// The list of `node` in that state, whatever the node's change id was then, or null.
    RenderList* findOld(const SoNode* node, std::uint64_t stateKey) const;
    void add(RenderList& list, const SoNode* node, std::uint64_t changeId, std::uint64_t stateKey);
    void forget(RenderList& list);

    /// Null for a separator that was not noted.
    const Seen* seen(const SoNode* node) const;
    void note(const SoNode* node, std::uint64_t changeId, std::uint64_t frame, bool viewDependent);
    /// Called once a frame: drops notes of separators that have no list and were not met for long.
    void sweep(std::uint64_t frame);

    std::size_t getNumLists() const { return m_lists.size(); }
    std::size_t getNumNotes() const { return m_seen.size(); }

private:
    static constexpr std::uint64_t kKeptFrames = 120;
    static constexpr std::size_t kSweepThreshold = 256;

    struct Key {
        const SoNode* node;
        std::uint64_t state;
        bool operator==(const Key&) const = default;
    };
    struct Hash {
        std::size_t operator()(const Key& key) const
        {
            const auto a = reinterpret_cast<std::uintptr_t>(key.node) * 0x9E3779B97F4A7C15ull;
            return static_cast<std::size_t>((a ^ (a >> 29)) + key.state * 0xBF58476D1CE4E5B9ull);
        }
    };
    std::unordered_map<Key, RenderList*, Hash> m_lists;
    std::unordered_map<const SoNode*, Seen> m_seen;
    std::size_t m_sweepAt = kSweepThreshold;
};

} // namespace kalmyr::detail
