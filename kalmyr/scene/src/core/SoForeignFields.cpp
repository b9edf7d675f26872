#include <kalmyr/core/SoForeignFields.h>

#include <atomic>
#include <mutex>
#include <unordered_map>

namespace {

/// Such fields are rare next to nodes, so they are kept beside them.
struct Table {
    std::mutex mutex; ///< files may be read in several threads
    std::unordered_map<const SoNode*, std::vector<SoForeignFields::Entry>> entries;
    std::atomic<std::size_t> size = 0; ///< asked whenever a node dies
};

Table& table()
{
    static auto* t = new Table; // never freed: nodes may outlive statics
    return *t;
}

} // namespace

void SoForeignFields::add(const SoNode* node, std::string_view name, std::string_view value)
{
    Table& t = table();
    const std::lock_guard<std::mutex> lock(t.mutex);
    t.entries[node].push_back({std::string(name), std::string(value)});
    t.size = t.entries.size();
}

std::vector<SoForeignFields::Entry> SoForeignFields::of(const SoNode* node)
{
    Table& t = table();
    if (t.size == 0)
        return {};
    const std::lock_guard<std::mutex> lock(t.mutex);
    const auto found = t.entries.find(node);
    return found == t.entries.end() ? std::vector<Entry>() : found->second;
}

void SoForeignFields::copy(const SoNode* from, const SoNode* to)
{
    for (const Entry& entry : of(from))
        add(to, entry.name, entry.value);
}

void SoForeignFields::forget(const SoNode* node)
{
    Table& t = table();
    if (t.size == 0)
        return;
    const std::lock_guard<std::mutex> lock(t.mutex);
    t.entries.erase(node);
    t.size = t.entries.size();
}
