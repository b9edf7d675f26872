#pragma once

#include <latch>
#include <thread>
#include <vector>

/// Calls function(0) to function(count - 1), each in a thread of its own, and waits for all.
template <class Function>
void inThreads(int count, Function function)
{
    std::latch start(count); // short work would be over before the next thread begins
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            function(i);
        });
    for (std::thread& thread : threads)
        thread.join();
}
