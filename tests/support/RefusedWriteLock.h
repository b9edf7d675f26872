#pragma once

#include <kalmyr/io/SoReadLock.h>
#include <kalmyr/io/SoWriteLock.h>

#include <optional>
#include <thread>

namespace support {

/// While it lives the thread that made it is refused the write lock: it reads, and so does another
/// thread that waits to become the writer.
class RefusedWriteLock {
public:
    RefusedWriteLock()
    {
        m_reading.emplace();
        m_writer = std::thread([] {
            const SoReadLock reading;
            const SoWriteLock waits;
        });
        while (mayStillRead())
            std::this_thread::yield();
    }
    ~RefusedWriteLock()
    {
        m_reading.reset();
        m_writer.join();
    }
    RefusedWriteLock(const RefusedWriteLock&) = delete;
    RefusedWriteLock& operator=(const RefusedWriteLock&) = delete;

private:
    /// New readers are kept out from the moment on when somebody waits to write.
    static bool mayStillRead()
    {
        bool may = false;
        std::thread([&may] {
            may = SoDB::tryReadlock();
            if (may)
                SoDB::readunlock();
        }).join();
        return may;
    }

    std::optional<SoReadLock> m_reading;
    std::thread m_writer;
};

} // namespace support
