#pragma once

#include <kalmyr/io/SoWriteLock.h>

#include <latch>
#include <thread>

namespace support {

/// Another thread that holds the write lock from its making until release() or its end.
class WriteLocked {
public:
    WriteLocked()
        : m_thread([this] {
              const SoWriteLock lock;
              m_began.count_down();
              m_end.wait();
          })
    {
        m_began.wait();
    }
    ~WriteLocked() { release(); }
    WriteLocked(const WriteLocked&) = delete;
    WriteLocked& operator=(const WriteLocked&) = delete;

    void release()
    {
        if (!m_thread.joinable())
            return;
        m_end.count_down();
        m_thread.join();
    }

private:
    std::latch m_began{1};
    std::latch m_end{1};
    std::thread m_thread;
};

} // namespace support
