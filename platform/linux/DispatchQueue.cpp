#include "platform/DispatchQueue.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QThreadPool>

#include <array>
#include <deque>
#include <mutex>

using QualityOfService = DispatchQueue::QualityOfService;

namespace {

constexpr std::array AllLevels{QualityOfService::High, QualityOfService::Utility,
                               QualityOfService::Background};

// Enough for every wait the launcher can have at once (a fetch, a check, a running game).
constexpr int WaitingThreads = 16;

QThreadPool *makePool(QualityOfService qualityOfService)
{
    auto *pool = new QThreadPool;
    switch (qualityOfService) {
    case QualityOfService::High:
        pool->setMaxThreadCount(WaitingThreads);
        break;
    case QualityOfService::Utility:
        pool->setMaxThreadCount(QThread::idealThreadCount());
        pool->setThreadPriority(QThread::LowPriority);
        break;
    case QualityOfService::Background:
        pool->setMaxThreadCount(1);
        pool->setThreadPriority(QThread::LowestPriority);
        break;
    }
    return pool;
}

// The pools are never destroyed: their destructor would wait for a game that outlives the launcher.
QThreadPool &pool(QualityOfService qualityOfService)
{
    static const std::array pools{makePool(QualityOfService::High),
                                  makePool(QualityOfService::Utility),
                                  makePool(QualityOfService::Background)};
    return *pools[size_t(qualityOfService)];
}

class MainQueue final : public DispatchQueue
{
public:
    MainQueue() : DispatchQueue(QStringLiteral("main"), true) {}

    void async(Block block) override
    {
        if (QCoreApplication *application = QCoreApplication::instance())
            QMetaObject::invokeMethod(application, std::move(block), Qt::QueuedConnection);
    }
};

class ConcurrentQueue final : public DispatchQueue
{
public:
    ConcurrentQueue(const QString &label, QualityOfService qualityOfService)
        : DispatchQueue(label, false), m_pool(pool(qualityOfService))
    {
    }

    void async(Block block) override { m_pool.start(std::move(block)); }

private:
    QThreadPool &m_pool;
};

// A row of blocks that borrows one thread of the pool while it has work. A thread of its own would
// have to be joined by whoever drops the queue, and that may be one of its own blocks.
class SerialQueue final : public DispatchQueue, public std::enable_shared_from_this<SerialQueue>
{
public:
    explicit SerialQueue(const QString &label) : DispatchQueue(label, true) {}

    void async(Block block) override
    {
        const std::lock_guard lock(m_mutex);
        m_blocks.push_back(std::move(block));
        if (!std::exchange(m_isRunning, true))
            pool(QualityOfService::Utility).start([self = shared_from_this()] { self->run(); });
    }

private:
    void run()
    {
        while (Block block = next())
            block();
    }

    Block next()
    {
        const std::lock_guard lock(m_mutex);
        if (m_blocks.empty()) {
            m_isRunning = false;
            return {};
        }
        Block block = std::move(m_blocks.front());
        m_blocks.pop_front();
        return block;
    }

    std::mutex m_mutex;
    std::deque<Block> m_blocks;
    bool m_isRunning = false;
};

} // namespace

std::shared_ptr<DispatchQueue> DispatchQueue::main()
{
    static const auto queue = std::make_shared<MainQueue>();
    return queue;
}

std::shared_ptr<DispatchQueue> DispatchQueue::global(QualityOfService qualityOfService)
{
    static const std::array queues{
        std::make_shared<ConcurrentQueue>(QStringLiteral("global.high"), QualityOfService::High),
        std::make_shared<ConcurrentQueue>(QStringLiteral("global.utility"),
                                          QualityOfService::Utility),
        std::make_shared<ConcurrentQueue>(QStringLiteral("global.background"),
                                          QualityOfService::Background)};
    return queues[size_t(qualityOfService)];
}

std::shared_ptr<DispatchQueue> DispatchQueue::makeSerial(const QString &label)
{
    return std::make_shared<SerialQueue>(label);
}

std::shared_ptr<DispatchQueue> DispatchQueue::makeConcurrent(const QString &label,
                                                             QualityOfService qualityOfService)
{
    return std::make_shared<ConcurrentQueue>(label, qualityOfService);
}

bool DispatchQueue::drain(int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    bool isIdle = true;
    for (const QualityOfService level : AllLevels)
        isIdle &= pool(level).waitForDone(int(deadline.remainingTime()));
    return isIdle;
}
