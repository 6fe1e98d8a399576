#include "platform/Timer.h"

#include "platform/DispatchQueue.h"

#include <QCoreApplication>
#include <QTimer>

void SystemTimer::asyncAfter(std::chrono::milliseconds delay, std::function<void()> block)
{
    DispatchQueue::main()->async([delay, block = std::move(block)] {
        // A coarse timer may be 5 % early.
        QTimer::singleShot(delay, Qt::PreciseTimer, QCoreApplication::instance(), block);
    });
}
