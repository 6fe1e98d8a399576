#include "platform/Timer.h"

#include "platform/DispatchQueue.h"

#include <QTimer>

void SystemTimer::asyncAfter(std::chrono::milliseconds delay, std::function<void()> block)
{
    DispatchQueue::main()->async(
        [delay, block = std::move(block)] { QTimer::singleShot(delay, block); });
}
