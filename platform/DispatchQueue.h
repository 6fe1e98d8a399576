#pragma once

#include <QString>

#include <functional>
#include <memory>

// Runs blocks of work away from the caller. Every queue starts its blocks in the order in which
// they were submitted; a serial queue and the main queue also end each before the next begins, the
// others run as many at once as their level of service allows. Queues are cheap: all but the main
// queue borrow threads from one pool a level. async() may be called from any thread and never
// waits.
class DispatchQueue
{
public:
    using Block = std::function<void()>;

    // High runs what may wait for the network, a disk or the game and so has threads to spare;
    // Utility computes on as many threads as there are cores; Background has one thread.
    enum class QualityOfService { High, Utility, Background };

    virtual ~DispatchQueue() = default;

    // The main thread's event loop. Blocks submitted after that loop has ended never run.
    static std::shared_ptr<DispatchQueue> main();
    // The process-wide concurrent queue of that level.
    static std::shared_ptr<DispatchQueue> global(QualityOfService qualityOfService);
    // A new queue of its own; the label is for people who debug. Blocks still waiting when the last
    // reference goes are run all the same.
    static std::shared_ptr<DispatchQueue> makeSerial(const QString &label);
    static std::shared_ptr<DispatchQueue> makeConcurrent(const QString &label,
                                                         QualityOfService qualityOfService);

    // While it lives, the block that made it does no work of its own: it only waits for something
    // that goes on without this process, so that nothing is lost when the process ends meanwhile.
    // Made and destroyed in one block, which is none of the main queue's.
    class OutsideWait
    {
    public:
        OutsideWait();
        ~OutsideWait();
        OutsideWait(const OutsideWait &) = delete;
        OutsideWait &operator=(const OutsideWait &) = delete;
    };

    // Waits until every block on all pools has ended or is in an OutsideWait, at most that long.
    // True when all have ended. For the end of the process only.
    static bool drain(int milliseconds);

    virtual void async(Block block) = 0;

    [[nodiscard]] const QString &label() const { return m_label; }
    [[nodiscard]] bool isSerial() const { return m_isSerial; }

protected:
    DispatchQueue(QString label, bool isSerial) : m_label(std::move(label)), m_isSerial(isSerial) {}

private:
    const QString m_label;
    const bool m_isSerial;
};
