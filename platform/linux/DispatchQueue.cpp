#include "platform/DispatchQueue.h"

#include "platform/linux/Post.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <QThreadPool>

#include <array>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

using QualityOfService = DispatchQueue::QualityOfService;

namespace {

constexpr std::array AllLevels{QualityOfService::High, QualityOfService::Utility,
                               QualityOfService::Background};

// Enough for every wait the launcher can have at once (a fetch, a check, a running game).
constexpr int WaitingThreads = 16;

// The threads of one level. Blocks change hands under a mutex of ours: a thread sanitizer sees
// nothing of what happens inside Qt.
class Pool
{
public:
    explicit Pool(QualityOfService qualityOfService)
    {
        switch (qualityOfService) {
        case QualityOfService::High:
            m_threads.setMaxThreadCount(WaitingThreads);
            break;
        case QualityOfService::Utility:
            m_threads.setMaxThreadCount(QThread::idealThreadCount());
            m_threads.setThreadPriority(QThread::LowPriority);
            break;
        case QualityOfService::Background:
            m_threads.setMaxThreadCount(1);
            m_threads.setThreadPriority(QThread::LowestPriority);
            break;
        }
    }

    void start(DispatchQueue::Block block)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_blocks.push_back(std::move(block));
            ++m_unfinished;
        }
        m_threads.start([this] { runNext(); });
    }

    // True when nothing is left at all.
    bool waitUntilNobodyWorks(std::chrono::milliseconds limit)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait_for(lock, limit, [this] { return m_unfinished == m_waitingOutside; });
        return m_unfinished == 0;
    }

    // Says that a block waits outside (1) or no longer does (-1).
    void addWaitingOutside(int number)
    {
        const std::lock_guard lock(m_mutex);
        m_waitingOutside += number;
        m_changed.notify_all();
    }

    // The one whose block runs on this thread.
    static Pool *current() { return s_current; }

private:
    void runNext()
    {
        s_current = this;
        std::unique_lock lock(m_mutex);
        DispatchQueue::Block block = std::move(m_blocks.front());
        m_blocks.pop_front();
        lock.unlock();
        block();
        block = nullptr; // what it holds goes before anybody is told that it has ended
        lock.lock();
        --m_unfinished;
        m_changed.notify_all();
    }

    static thread_local Pool *s_current;

    QThreadPool m_threads;
    std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    std::deque<DispatchQueue::Block> m_blocks;
    qint64 m_unfinished = 0;
    qint64 m_waitingOutside = 0;
};

thread_local Pool *Pool::s_current = nullptr;

// The pools are never destroyed: their destructor would wait for a game that outlives the launcher.
Pool &pool(QualityOfService qualityOfService)
{
    static const std::array pools{new Pool(QualityOfService::High),
                                  new Pool(QualityOfService::Utility),
                                  new Pool(QualityOfService::Background)};
    return *pools[size_t(qualityOfService)];
}

class MainQueue final : public DispatchQueue
{
public:
    MainQueue() : DispatchQueue(QStringLiteral("main"), true) {}

    void async(Block block) override
    {
        if (QCoreApplication *application = QCoreApplication::instance())
            postTo(application, std::move(block));
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
    Pool &m_pool;
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

DispatchQueue::OutsideWait::OutsideWait() { Pool::current()->addWaitingOutside(1); }

DispatchQueue::OutsideWait::~OutsideWait() { Pool::current()->addWaitingOutside(-1); }

bool DispatchQueue::drain(int milliseconds)
{
    const QDeadlineTimer deadline(milliseconds);
    bool isIdle = true;
    for (const QualityOfService level : AllLevels)
        isIdle &=
            pool(level).waitUntilNobodyWorks(std::chrono::milliseconds(deadline.remainingTime()));
    return isIdle;
}
