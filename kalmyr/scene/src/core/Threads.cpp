#include "core/Threads.h"

#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoRecursiveRWLock.h>

#include <algorithm>
#include <atomic>
#include <vector>

namespace kalmyr::detail {

namespace {

constinit thread_local std::uint32_t t_number = 0;
constinit thread_local int t_writeDepth = 0;
constinit thread_local bool t_serving = false;

SoType s_globalType;
SoField* (*s_choose)(SoField*) = nullptr;

/// Filled while there is one thread.
std::vector<void (*)(HandOver)>& handOvers()
{
    static auto* list = new std::vector<void (*)(HandOver)>; // threads may end after statics
    return *list;
}

/// Dies with its thread.
struct ThreadEnd {
    ~ThreadEnd() { handOver(HandOver::END); }
};

} // namespace

std::uint32_t threadNumber()
{
    if (t_number == 0) {
        static constinit std::atomic<std::uint32_t> s_last{0};
        t_number = s_last.fetch_add(1, std::memory_order_relaxed) + 1;
        static thread_local ThreadEnd t_end;
        static_cast<void>(t_end);
    }
    return t_number;
}

SoRecursiveRWLock& sceneLock()
{
    static auto* lock = new SoRecursiveRWLock; // threads may still hold it while the process ends
    return *lock;
}

bool writeLock()
{
    const bool locked = sceneLock().writeLock();
    t_writeDepth += locked;
    return locked;
}

bool tryWriteLock()
{
    const bool locked = sceneLock().tryWriteLock();
    t_writeDepth += locked;
    return locked;
}

bool writeUnlock()
{
    if (t_writeDepth == 0)
        return false;
    if (t_writeDepth == 1 && !t_serving)
        handOver(HandOver::UNLOCK);
    --t_writeDepth;
    return sceneLock().writeUnlock();
}

bool isServing()
{
    return t_serving;
}

void setServing(bool on)
{
    t_serving = on;
}

void setGlobalFields(SoType type, SoField* (*choose)(SoField*))
{
    s_globalType = type;
    s_choose = choose;
}

bool isGlobal(const SoFieldContainer* container)
{
    return container && container->getTypeId() == s_globalType;
}

SoField* chooseMaster(SoField* master)
{
    return isGlobal(master->getContainer()) ? s_choose(master) : master;
}

bool isEditingShared()
{
    return t_writeDepth > 0;
}

void addHandOver(void (*function)(HandOver))
{
    auto& list = handOvers();
    if (std::find(list.begin(), list.end(), function) == list.end())
        list.push_back(function);
}

void handOver(HandOver how)
{
    for (const auto function : handOvers())
        function(how);
}

SharedEdit::SharedEdit(bool isApplication)
    : m_locked(isApplication && tryWriteLock()), m_may(m_locked || !isApplication)
{
}

SharedEdit::~SharedEdit()
{
    if (m_locked)
        writeUnlock();
}

} // namespace kalmyr::detail
