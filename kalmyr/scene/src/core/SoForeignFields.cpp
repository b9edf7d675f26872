#include <kalmyr/core/SoForeignFields.h>

#include <kalmyr/core/SoNodeCopier.h>

#include "core/LastRites.h"

#include <atomic>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace {

struct Kept {
    std::vector<SoForeignFields::Entry> entries;
    std::vector<SoForeignFields::Use> uses;
};

/// Such fields are rare next to nodes, so they are kept beside them.
struct Table {
    std::mutex mutex; ///< files may be read in several threads
    std::unordered_map<const SoNode*, Kept> kept;
    std::unordered_multimap<const SoNode*, const SoNode*> users; ///< by the node that they use
    std::atomic<std::size_t> size = 0;                           ///< asked whenever a node dies
};

Table& table()
{
    static auto* t = new Table; // never freed: nodes may outlive statics
    return *t;
}

void addEntry(const SoNode* node, SoForeignFields::Entry entry)
{
    Table& t = table();
    const std::lock_guard<std::mutex> lock(t.mutex);
    t.kept[node].entries.push_back(std::move(entry));
    t.size = t.kept.size();
}

Kept keptOf(const SoNode* node)
{
    Table& t = table();
    if (t.size == 0)
        return {};
    const std::lock_guard<std::mutex> lock(t.mutex);
    const auto found = t.kept.find(node);
    return found == t.kept.end() ? Kept() : found->second;
}

void dropUsesOf(Table& t, const SoNode* node)
{
    const auto [first, last] = t.users.equal_range(node);
    for (auto user = first; user != last; ++user)
        if (const auto found = t.kept.find(user->second); found != t.kept.end())
            std::erase_if(found->second.uses,
                          [node](const SoForeignFields::Use& use) { return use.node == node; });
    t.users.erase(first, last);
}

/// One after the other, so that nodes nested deeply in such fields die on a small stack.
void release(std::vector<SoForeignFields::Entry>& entries)
{
    for (SoForeignFields::Entry& entry : entries) {
        for (SoRef<SoNode>& node : entry.nodes) {
            if (!node)
                continue;
            const SoNode* held = node.get();
            held->ref();
            node.reset();
            kalmyr::detail::releaseInTurn(held);
        }
    }
}

void dropUser(Table& t, const SoNode* user, const SoNode* used)
{
    const auto [first, last] = t.users.equal_range(used);
    for (auto one = first; one != last;)
        one = one->second == user ? t.users.erase(one) : std::next(one);
}

} // namespace

void SoForeignFields::add(const SoNode* node, std::string_view name, std::string_view value)
{
    addEntry(node, {std::string(name), std::string(value), {}, false});
}

void SoForeignFields::add(const SoNode* node, std::string_view name,
                          std::vector<SoRef<SoNode>> nodes, bool isList)
{
    addEntry(node, {std::string(name), {}, std::move(nodes), isList});
}

void SoForeignFields::addUse(const SoNode* node, const Use& use)
{
    Table& t = table();
    const std::lock_guard<std::mutex> lock(t.mutex);
    t.kept[node].uses.push_back(use);
    t.users.emplace(use.node, node);
    t.size = t.kept.size();
}

std::vector<SoForeignFields::Entry> SoForeignFields::of(const SoNode* node)
{
    return keptOf(node).entries;
}

std::vector<SoForeignFields::Use> SoForeignFields::usesIn(const SoNode* node)
{
    return keptOf(node).uses;
}

void SoForeignFields::copy(const SoNode* from, const SoNode* to, SoNodeCopier& copier)
{
    Kept kept = keptOf(from);
    for (Entry& entry : kept.entries) {
        for (SoRef<SoNode>& node : entry.nodes)
            node = copier.copyOf(node.get());
        addEntry(to, std::move(entry));
    }
    for (const Use& use : kept.uses)
        addUse(to, {use.field, use.index, copier.resolve(use.node)});
}

void SoForeignFields::forget(const SoNode* node)
{
    Table& t = table();
    if (t.size == 0)
        return;
    Kept gone;
    {
        const std::lock_guard<std::mutex> lock(t.mutex);
        if (!t.users.empty())
            dropUsesOf(t, node);
        const auto found = t.kept.find(node);
        if (found == t.kept.end())
            return;
        for (const Use& use : found->second.uses)
            dropUser(t, node, use.node);
        gone = std::move(found->second);
        t.kept.erase(found);
        t.size = t.kept.size();
    }
    release(gone.entries); // whose calls take the lock
}
