#include "core/ChildChanges.h"

#include <kalmyr/core/SoNode.h>

#include "core/WalkMarks.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>

namespace kalmyr::detail {

namespace {

struct Log {
    std::uint64_t from = 0; ///< all changes after this stamp are known
    std::vector<ChildChanges::Change> changes;
};

constexpr std::size_t kMaxChanges = 1024;

struct Logs {
    std::mutex mutex;
    std::unordered_map<const SoNode*, Log> all;
};

Logs& logs()
{
    static auto* const the = new Logs; // graphs may outlive statics
    return *the;
}

void append(Log& log, const ChildChanges::Change& change)
{
    if (log.changes.size() == kMaxChanges) {
        const auto half = log.changes.begin() + kMaxChanges / 2;
        log.from = (half - 1)->stamp;
        log.changes.erase(log.changes.begin(), half);
    }
    log.changes.push_back(change);
}

} // namespace

void ChildChanges::watch(SoNode& node)
{
    if (WalkMarks::has(node, WalkMarks::kWatchesChildren))
        return;
    Logs& the = logs();
    const std::scoped_lock lock(the.mutex);
    const auto [log, isNew] = the.all.try_emplace(&node);
    if (isNew) {
        log->second.from = node.getChangeId();
        WalkMarks::set(node, WalkMarks::kWatchesChildren);
    }
}

void ChildChanges::forget(const SoNode& node)
{
    Logs& the = logs();
    const std::scoped_lock lock(the.mutex);
    the.all.erase(&node);
}

bool ChildChanges::since(const SoNode& node, std::uint64_t changeId, std::vector<Change>& changes)
{
    Logs& the = logs();
    const std::scoped_lock lock(the.mutex);
    const auto log = the.all.find(&node);
    if (log == the.all.end() || changeId < log->second.from)
        return false;
    const std::vector<Change>& all = log->second.changes;
    const auto first =
        std::upper_bound(all.begin(), all.end(), changeId,
                         [](std::uint64_t id, const Change& change) { return id < change.stamp; });
    changes.insert(changes.end(), first, all.end());
    return true;
}

void ChildChanges::note(const SoNode& node, const SoNotification& notification)
{
    Logs& the = logs();
    const std::scoped_lock lock(the.mutex);
    const auto found = the.all.find(&node);
    if (found == the.all.end())
        return;
    Log& log = found->second;
    if (notification.chain) {
        const auto* child = static_cast<const SoNode*>(notification.chain->container);
        if (!log.changes.empty() && log.changes.back().child == child
            && log.changes.back().kind == CHANGED)
            log.changes.back().stamp = notification.stamp;
        else
            append(log, {notification.stamp, child, -1, CHANGED});
        return;
    }
    const bool isOfChildren = notification.container == &node && notification.index >= 0;
    switch (isOfChildren ? notification.kind : SoNotification::UNSPECIFIED) {
    case SoNotification::CHILD_ADDED:
    case SoNotification::CHILD_INSERTED:
        append(log, {notification.stamp, nullptr, notification.index, INSERTED});
        break;
    case SoNotification::CHILD_REMOVED:
        append(log, {notification.stamp, nullptr, notification.index, REMOVED});
        break;
    case SoNotification::CHILD_REPLACED:
        append(log, {notification.stamp, nullptr, notification.index, REPLACED});
        break;
    default:
        log.changes.clear();
        log.from = notification.stamp;
    }
}

} // namespace kalmyr::detail
