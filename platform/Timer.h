#pragma once

#include <chrono>
#include <functional>

// Runs a block on the main thread after a while. Any thread may ask; blocks that are due after the
// main loop has ended never run.
class Timer
{
public:
    virtual ~Timer() = default;
    virtual void asyncAfter(std::chrono::milliseconds delay, std::function<void()> block) = 0;
};

// The timer of the running clock.
class SystemTimer final : public Timer
{
public:
    void asyncAfter(std::chrono::milliseconds delay, std::function<void()> block) override;
};
