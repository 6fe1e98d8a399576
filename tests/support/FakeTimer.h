#pragma once

#include "platform/DispatchQueue.h"
#include "platform/Timer.h"

#include <mutex>
#include <vector>

// A timer whose time passes only when the test says so.
class FakeTimer final : public Timer
{
public:
    void asyncAfter(std::chrono::milliseconds delay, std::function<void()> block) override
    {
        const std::lock_guard lock(m_mutex);
        m_blocks.push_back({m_now + delay, std::move(block)});
    }

    // Runs what falls due meanwhile, on the calling thread.
    void pass(std::chrono::milliseconds time)
    {
        std::vector<Entry> due;
        {
            const std::lock_guard lock(m_mutex);
            m_now += time;
            for (auto entry = m_blocks.begin(); entry != m_blocks.end();) {
                if (entry->due > m_now) {
                    ++entry;
                    continue;
                }
                due.push_back(std::move(*entry));
                entry = m_blocks.erase(entry);
            }
        }
        for (const Entry &entry : due)
            entry.block();
    }

    // Forgets all blocks.
    void clear()
    {
        const std::lock_guard lock(m_mutex);
        m_blocks.clear();
    }

    [[nodiscard]] bool isWaiting() const
    {
        const std::lock_guard lock(m_mutex);
        return !m_blocks.empty();
    }

private:
    struct Entry
    {
        std::chrono::milliseconds due;
        std::function<void()> block;
    };

    mutable std::mutex m_mutex;
    std::chrono::milliseconds m_now{0};
    std::vector<Entry> m_blocks;
};
