#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// One thread waits until another has raised it. Each raise lets one wait through.
class Signal
{
public:
    void raise()
    {
        const std::lock_guard lock(m_mutex);
        ++m_count;
        m_isRaised.notify_all();
    }

    // False when that took too long.
    [[nodiscard]] bool wait(std::chrono::milliseconds limit = DefaultLimit)
    {
        std::unique_lock lock(m_mutex);
        if (!m_isRaised.wait_for(lock, limit, [this] { return m_count > 0; }))
            return false;
        --m_count;
        return true;
    }

private:
    static constexpr std::chrono::seconds DefaultLimit{60};
    std::mutex m_mutex;
    std::condition_variable m_isRaised;
    int m_count = 0;
};
