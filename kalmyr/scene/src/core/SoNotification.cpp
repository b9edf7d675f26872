#include <kalmyr/core/SoNotification.h>

#include <kalmyr/core/SoEngine.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>

#include "core/Threads.h"

#include <atomic>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

struct Follower {
    SoField* field; ///< null once it died
    std::uint64_t origin;
};

struct Input {
    SoEngine* engine; ///< null once it died
    SoField* field;   ///< null where it is not known, or died
};

/// The auditors that are notified after the walk proper; in a fixed order, first come first served.
struct Deferred {
    std::vector<Follower> followers;
    std::vector<Input> inputs;
    std::size_t nextFollower = 0;
    std::size_t nextInput = 0;
};

std::atomic<std::uint64_t> s_stamp{0};
/// The latest stamp when somebody last asked for an id, or began to listen. Never falls.
std::atomic<std::uint64_t> s_repeatedUpTo{0};
/// Asked for by every change, so it is one plain object; what is rarely needed stands aside.
struct Walks {
    int depth = 0;
    bool anyDeferred = false;
};
constinit thread_local Walks t_walks;
/// Null until something waits. A thread's last edits may come after its other objects have gone.
constinit thread_local Deferred* t_deferred = nullptr;
void (*s_afterWalk)() = nullptr;

Deferred& deferred()
{
    if (!t_deferred) {
        kalmyr::detail::threadNumber(); // from now on its end is noticed
        t_deferred = new Deferred;
    }
    return *t_deferred;
}

} // namespace

void kalmyr::detail::initNotification()
{
    addHandOver([](HandOver how) {
        if (how == HandOver::END && t_walks.depth == 0)
            delete std::exchange(t_deferred, nullptr);
    });
}

std::uint64_t SoNotification::nextStamp()
{
    return s_stamp.fetch_add(1, std::memory_order_relaxed) + 1;
}

void SoNotification::repeatWalks()
{
    const std::uint64_t now = s_stamp.load(std::memory_order_relaxed);
    std::uint64_t before = s_repeatedUpTo.load(std::memory_order_relaxed);
    while (before < now
           && !s_repeatedUpTo.compare_exchange_weak(before, now, std::memory_order_relaxed)) {
    }
}

bool SoNotification::isRepeated(std::uint64_t stamp)
{
    return stamp <= s_repeatedUpTo.load(std::memory_order_relaxed);
}

bool SoNotification::isWalking()
{
    return t_walks.depth > 0;
}

void SoNotification::setAfterWalk(void (*function)())
{
    s_afterWalk = function;
}

void SoNotification::defer(SoField* follower, std::uint64_t origin)
{
    deferred().followers.push_back({follower, origin});
    t_walks.anyDeferred = true;
}

void SoNotification::defer(SoEngine* engine, SoField* input)
{
    deferred().inputs.push_back({engine, input});
    t_walks.anyDeferred = true;
}

void SoNotification::forget(const SoField* field)
{
    if (!t_deferred)
        return;
    for (Follower& follower : t_deferred->followers)
        if (follower.field == field)
            follower.field = nullptr;
    for (Input& input : t_deferred->inputs)
        if (input.field == field)
            input.field = nullptr;
}

void SoNotification::forget(const SoEngine* engine)
{
    if (!t_deferred)
        return;
    for (Input& input : t_deferred->inputs)
        if (input.engine == engine)
            input.engine = nullptr;
}

/// Followers first: an engine that reacts finds everything told that its inputs depend on.
void SoNotification::tellDeferred()
{
    Deferred& d = deferred();
    for (;;) {
        if (d.nextFollower < d.followers.size()) {
            const Follower next = d.followers[d.nextFollower++];
            if (next.field)
                next.field->tellFollowing(next.origin);
        } else if (d.nextInput < d.inputs.size()) {
            const Input next = d.inputs[d.nextInput++];
            if (next.engine)
                next.engine->inputChanged(next.field);
        } else {
            break;
        }
    }
    d.followers.clear();
    d.inputs.clear();
    d.nextFollower = d.nextInput = 0;
    t_walks.anyDeferred = false;
}

void SoNotification::finishWalk()
{
    Walks& walks = t_walks;
    const bool outermost = walks.depth == 1;
    if (outermost && walks.anyDeferred)
        tellDeferred();
    --walks.depth;
    if (outermost && s_afterWalk)
        s_afterWalk();
}

void SoNotification::send(SoFieldContainer* start)
{
    if (!start)
        return;
    origin = stamp = nextStamp();
    ++t_walks.depth;
    start->notify(*this);
    finishWalk();
}

void SoNotification::sendFrom(SoField* start)
{
    origin = stamp = nextStamp();
    ++t_walks.depth;
    start->pass(*this);
    finishWalk();
}

void SoNotification::sendOutputs(SoEngine* engine)
{
    origin = stamp = nextStamp();
    ++t_walks.depth;
    engine->tellOutputs(origin);
    finishWalk();
}
