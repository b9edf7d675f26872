#include <kalmyr/core/SoNotification.h>

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>

#include <atomic>

namespace {

std::atomic<std::uint64_t> s_stamp{0};
thread_local int t_walks = 0;
void (*s_afterWalk)() = nullptr;

} // namespace

std::uint64_t SoNotification::nextStamp()
{
    return s_stamp.fetch_add(1, std::memory_order_relaxed) + 1;
}

bool SoNotification::isWalking()
{
    return t_walks > 0;
}

void SoNotification::setAfterWalk(void (*function)())
{
    s_afterWalk = function;
}

void SoNotification::send(SoFieldContainer* start)
{
    if (!start)
        return;
    stamp = nextStamp();
    ++t_walks;
    start->notify(*this);
    --t_walks;
    if (t_walks == 0 && s_afterWalk)
        s_afterWalk();
}

void SoNotification::sendFrom(SoField* start)
{
    stamp = nextStamp();
    ++t_walks;
    start->pass(*this);
    --t_walks;
    if (t_walks == 0 && s_afterWalk)
        s_afterWalk();
}
