#include "core/LastRites.h"

#include <kalmyr/core/SoNode.h>

#include <vector>

namespace {

using Waiting = std::vector<const SoRefCounter*>;

/// The objects that the outermost call of this thread still has to release; null when there is
/// none.
thread_local Waiting* t_waiting = nullptr;

void releaseNow(const SoRefCounter* object, Waiting& waiting)
{
    object->unref();
    while (!waiting.empty()) {
        const SoRefCounter* next = waiting.back();
        waiting.pop_back();
        next->unref();
    }
}

} // namespace

void kalmyr::detail::releaseInTurn(const SoRefCounter* object)
{
    if (t_waiting) {
        t_waiting->push_back(object);
        return;
    }
    Waiting waiting;
    t_waiting = &waiting;
    releaseNow(object, waiting);
    t_waiting = nullptr;
}

void kalmyr::detail::releaseInTurn(std::span<SoNode* const> nodes)
{
    if (t_waiting) {
        t_waiting->insert(t_waiting->end(), nodes.rbegin(), nodes.rend());
        return;
    }
    Waiting waiting;
    t_waiting = &waiting;
    for (const SoNode* node : nodes)
        releaseNow(node, waiting);
    t_waiting = nullptr;
}
