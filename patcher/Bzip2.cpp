#include "patcher/Bzip2.h"

#include "patcher/Bzip2Blocks.h"
#include "patcher/Bzip2Decoder.h"

#include <QThread>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

constexpr qsizetype BytesPerLevel = 100'000;

// How many cores have nothing of ours to decode.
class IdleCores
{
public:
    static IdleCores &shared()
    {
        static IdleCores cores;
        return cores;
    }

    void occupy() { --m_count; }
    void release() { ++m_count; }
    [[nodiscard]] bool tryOccupy()
    {
        int count = m_count;
        while (count > 0) {
            if (m_count.compare_exchange_weak(count, count - 1))
                return true;
        }
        return false;
    }

private:
    std::atomic<int> m_count = QThread::idealThreadCount();
};

// What a stream may use while it is decoded.
struct Surroundings
{
    qint64 largestContents;
    Bzip2Decoder::BeforeGrowth beforeGrowth;
    // Asked whether one more helper may join; each yes is given back with `leave`.
    std::function<bool()> mayJoin;
    std::function<void()> leave;
};

// Decodes the blocks of one stream on the calling thread and on helpers that join while there are
// cores for them. What is decoded ahead of the one that comes next is limited to a few blocks a
// thread.
class BlockwiseDecoder
{
public:
    BlockwiseDecoder(const QByteArray &stream, const std::vector<Bzip2Block> &blocks,
                     const Surroundings &around)
        : m_stream(stream), m_blocks(blocks), m_around(around), m_results(blocks.size())
    {
    }

    // Nothing when any block is not what it should be.
    std::optional<QByteArray> decode()
    {
        std::vector<std::jthread> threads;
        QByteArray output;
        while (true) {
            if (takeReadyBlocks(output))
                break;
            if (threads.size() + 1 < m_blocks.size() && m_around.mayJoin())
                addHelper(threads);
            if (!tryDecodeOne())
                waitForNextBlock();
        }
        threads.clear(); // once they have ended
        if (m_hasFailed)
            return std::nullopt;
        return output;
    }

private:
    static constexpr size_t BlocksAheadPerThread = 3;

    void addHelper(std::vector<std::jthread> &threads)
    {
        try {
            threads.emplace_back([this] {
                while (decodeOne()) {
                }
                m_around.leave();
            });
            m_threadCount = threads.size() + 1;
        } catch (const std::exception &) { // no thread or no memory left
            m_around.leave();
        }
    }

    // Appends what comes next; true when nothing more will come.
    bool takeReadyBlocks(QByteArray &output)
    {
        std::unique_lock lock(m_mutex);
        while (!m_hasFailed && m_written < m_results.size() && m_results[m_written]) {
            const QByteArray contents = *std::exchange(m_results[m_written], std::nullopt);
            lock.unlock();
            if (!append(output, contents))
                fail();
            lock.lock();
            ++m_written;
            m_changed.notify_all();
        }
        return m_hasFailed || m_written == m_results.size();
    }

    bool append(QByteArray &output, const QByteArray &contents)
    {
        const qint64 size = output.size() + contents.size();
        if (size > m_around.largestContents)
            return false;
        try {
            if (output.isEmpty()) {
                const qint64 likely =
                    std::min(size * qint64(m_blocks.size()), m_around.largestContents);
                m_around.beforeGrowth(likely);
                output.reserve(likely);
            }
            m_around.beforeGrowth(size);
            output.append(contents);
            return true;
        } catch (const std::bad_alloc &) {
            return false;
        }
    }

    [[nodiscard]] bool mayDecodeNext() const
    {
        return m_next < m_blocks.size() &&
               m_next < m_written + BlocksAheadPerThread * m_threadCount;
    }

    void waitForNextBlock()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock,
                       [this] { return m_hasFailed || m_results[m_written] || mayDecodeNext(); });
    }

    bool tryDecodeOne()
    {
        std::unique_lock lock(m_mutex);
        if (m_hasFailed || !mayDecodeNext())
            return false;
        decodeTaken(m_next++, lock);
        return true;
    }

    // For helpers: waits for room. False when there is nothing left to do.
    bool decodeOne()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(
            lock, [this] { return m_hasFailed || m_next == m_blocks.size() || mayDecodeNext(); });
        if (m_hasFailed || m_next == m_blocks.size())
            return false;
        decodeTaken(m_next++, lock);
        return true;
    }

    void decodeTaken(size_t index, std::unique_lock<std::mutex> &lock)
    {
        lock.unlock();
        std::optional<QByteArray> contents;
        try {
            const qsizetype blockSize = (m_stream[3] - '0') * BytesPerLevel;
            contents =
                Bzip2Decoder::decodeExactly(bzip2StreamOfBlock(m_stream, m_blocks[index]),
                                            blockSize + blockSize / 8, m_around.largestContents);
        } catch (const std::bad_alloc &) {
            contents.reset();
        }
        lock.lock();
        m_hasFailed = m_hasFailed || !contents;
        m_results[index] = std::move(contents);
        m_changed.notify_all();
    }

    void fail()
    {
        const std::lock_guard lock(m_mutex);
        m_hasFailed = true;
        m_changed.notify_all();
    }

    const QByteArray &m_stream;
    const std::vector<Bzip2Block> &m_blocks;
    const Surroundings &m_around;
    std::atomic<size_t> m_threadCount = 1;
    std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    std::vector<std::optional<QByteArray>> m_results;
    size_t m_next = 0;
    size_t m_written = 0;
    bool m_hasFailed = false;
};

std::optional<QByteArray> decodePlainly(const QByteArray &compressed, const Surroundings &around)
{
    try {
        return Bzip2Decoder::decode(compressed, around.largestContents, around.beforeGrowth);
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
}

// Whatever goes another way than expected is left to libbz2 alone, so that the result is libbz2's.
std::optional<QByteArray> decodeWithHelpers(const QByteArray &compressed,
                                            const Surroundings &around)
{
    try {
        if (const auto blocks = findBzip2Blocks(compressed)) {
            if (auto contents = BlockwiseDecoder(compressed, *blocks, around).decode())
                return contents;
        }
    } catch (const std::bad_alloc &) { // too many blocks to keep apart
    }
    return decodePlainly(compressed, around);
}

} // namespace

// By value, so that the caller's bytes can end with the call.
std::optional<QByteArray>
decompressBzip2(QByteArray compressed, // NOLINT(*-unnecessary-value-param)
                LargeContentsTurn &turn)
{
    IdleCores &cores = IdleCores::shared();
    const auto waitForTurn = [&cores, &turn](qint64 size) {
        if (turn.tryToHold(size))
            return;
        cores.release(); // to the others meanwhile
        turn.waitToHold(size);
        cores.occupy();
    };
    cores.occupy();
    auto contents =
        decodeWithHelpers(compressed, {.largestContents = Limits::gameFileContents(),
                                       .beforeGrowth = waitForTurn,
                                       .mayJoin = [&cores] { return cores.tryOccupy(); },
                                       .leave = [&cores] { cores.release(); }});
    cores.release();
    return contents;
}

std::optional<QByteArray> decompressBzip2(const QByteArray &compressed, int threads,
                                          qint64 largestContents)
{
    std::atomic<int> left = threads - 1;
    const Surroundings around{.largestContents = largestContents,
                              .beforeGrowth = [](qint64) {},
                              .mayJoin = [&left] { return left-- > 0; },
                              .leave = [] {}};
    return threads <= 1 ? decodePlainly(compressed, around) : decodeWithHelpers(compressed, around);
}
