#include "patcher/VARNOPatcher.h"

#include "platform/DispatchQueue.h"
#include "platform/Limits.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double MegaBytesPerByte = 9.5367431640625e-07;

// A length that a server only promises costs at most this much; beyond it the buffer grows with
// what arrives.
constexpr qint64 LargestReservation = 64LL * 1024 * 1024;

} // namespace

VARNOPatcher::VARNOPatcher(HttpClient &httpClient, qint64 waitingBytesLimit, Clock clock)
    : m_httpClient(httpClient),
      m_waitingBytesLimit(waitingBytesLimit),
      m_clock(std::move(clock)),
      m_serialPatchQueue(DispatchQueue::makeSerial(QStringLiteral("varno.patch.queue")))
{
}

VARNOPatcher::~VARNOPatcher() = default;

void VARNOPatcher::increment(qint64 &counter)
{
    if (__builtin_add_overflow(counter, 1, &counter))
        qFatal("VARNOPatcher: a counter overflowed");
}

void VARNOPatcher::setDelegate(std::shared_ptr<VARNOPatcherDelegate> delegate)
{
    const std::lock_guard lock(m_mutex);
    m_delegate.swap(delegate); // the old one is released after the lock
}

void VARNOPatcher::enqueueWithFile(const std::shared_ptr<Downloadable> &file)
{
    const QUrl url = file->downloadURL();
    const std::lock_guard lock(m_mutex);
    if (m_waitingUrls.contains(url))
        return;
    m_waitingUrls.insert(url);
    m_patchQueue.push_back(file);
    increment(m_totalFiles);
}

void VARNOPatcher::start()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_isPatching)
            return;
        m_logs.clear();
    }
    downloadNext();
}

// Runs on whichever thread calls it: the caller of start(), the connection's thread, or a write
// queue's after the last write.
void VARNOPatcher::downloadNext() { downloadFrom(takeNextFile()); }

// The next file is always taken before the end of the one before is made known: whoever hears of it
// may begin a new run at once, and two callers must not go on side by side.
void VARNOPatcher::downloadFrom(std::shared_ptr<Downloadable> file)
{
    while (file) {
        if (startDownloadWithFile(file))
            return;
        file = takeNextFile();
        countFailure();
    }
    reportEndOfQueue();
}

// Counts on every call, also when there is no file left.
std::shared_ptr<Downloadable> VARNOPatcher::takeNextFile()
{
    const std::lock_guard lock(m_mutex);
    increment(m_currentFile);
    if (m_patchQueue.empty())
        return nullptr;
    m_currentDownloadable = std::move(m_patchQueue.front());
    m_patchQueue.pop_front();
    const QUrl url = m_currentDownloadable->downloadURL();
    m_waitingUrls.remove(url);
    m_currentFilename = url.fileName(QUrl::FullyDecoded).remove(QStringLiteral(".bz2"));
    return m_currentDownloadable;
}

void VARNOPatcher::reportEndOfQueue()
{
    std::unique_lock lock(m_mutex);
    m_isPatching = false;
    const auto delegate = m_delegate;
    const bool isFinished = m_writeCount >= m_totalFiles;
    const qint64 writeCount = m_writeCount;
    const qint64 totalFiles = m_totalFiles;
    const QString filename = m_currentFilename;
    lock.unlock();

    if (!delegate)
        return;
    if (isFinished)
        delegate->patcherDidFinish();
    else
        delegate->patcherWriteUpdateWithCurrentFile(writeCount, totalFiles, filename);
}

bool VARNOPatcher::startDownloadWithFile(const std::shared_ptr<Downloadable> &file)
{
    HttpRequest request;
    request.url = file->downloadURL();
    request.idleTimeout = std::chrono::seconds(60);
    request.largestBody = Limits::gameFileBody();
    const auto connection = m_httpClient.makeConnection(request, shared_from_this());
    if (!connection) {
        std::puts("Connection failed.");
        std::fflush(stdout);
        return false;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_connection = connection;
    }
    connection->start();
    if (isTooMuchWaiting()) {
        connection->setPaused(true);
        // A write that ended meanwhile may have let the connection go on before it was paused.
        // cppcheck-suppress oppositeInnerCondition ; another thread changes the answer
        if (!isTooMuchWaiting())
            connection->setPaused(false);
    }
    return true;
}

bool VARNOPatcher::isTooMuchWaiting() const
{
    const std::lock_guard lock(m_mutex);
    return m_waitingBytes > m_waitingBytesLimit;
}

void VARNOPatcher::countFailure()
{
    const std::lock_guard lock(m_mutex);
    increment(m_failedCount);
}

void VARNOPatcher::connectionDidReceiveResponse(const HttpResponse &response)
{
    const std::lock_guard lock(m_mutex);
    m_startTime = m_clock();
    m_expectedDataSize = response.expectedContentLength;
    m_dataBuffer = QByteArray();
    m_dataBuffer.reserve(qsizetype(std::clamp<qint64>(m_expectedDataSize, 0, LargestReservation)));
}

void VARNOPatcher::connectionDidReceiveData(const QByteArray &data)
{
    std::unique_lock lock(m_mutex);
    m_dataBuffer.append(data);
    const auto received = double(m_dataBuffer.size());
    const std::chrono::duration<double> elapsed = m_clock() - m_startTime;
    const auto delegate = m_delegate;
    const double expected = double(m_expectedDataSize);
    const qint64 currentFile = m_currentFile;
    const qint64 totalFiles = m_totalFiles;
    const QString filename = m_currentFilename;
    lock.unlock();

    if (delegate)
        delegate->patcherUpdateWithMegaByteCount(
            received * MegaBytesPerByte, expected * MegaBytesPerByte,
            received / elapsed.count() * MegaBytesPerByte, currentFile, filename, totalFiles);
}

void VARNOPatcher::connectionDidFailWithError(const Error &error)
{
    logError(error, "connection(_:didFailWithError:)", 174);
    const auto next = takeNextFile();
    countFailure();
    downloadFrom(next);
}

// The line numbers are fixed texts that point nowhere.
void VARNOPatcher::logError(const Error &error, const char *function, int line) const
{
    std::printf("VARNOPatcher %s %d: %s\n", function, line,
                error.localizedDescription.toUtf8().constData());
    std::fflush(stdout);
}

void VARNOPatcher::setLogs(const QString &logs)
{
    const std::lock_guard lock(m_mutex);
    m_logs = logs;
}

std::shared_ptr<VARNOPatcherDelegate> VARNOPatcher::delegate() const
{
    const std::lock_guard lock(m_mutex);
    return m_delegate;
}

QString VARNOPatcher::logs() const
{
    const std::lock_guard lock(m_mutex);
    return m_logs;
}

bool VARNOPatcher::isPatching() const
{
    const std::lock_guard lock(m_mutex);
    return m_isPatching;
}

qint64 VARNOPatcher::totalFiles() const
{
    const std::lock_guard lock(m_mutex);
    return m_totalFiles;
}

qint64 VARNOPatcher::currentFile() const
{
    const std::lock_guard lock(m_mutex);
    return m_currentFile;
}

qint64 VARNOPatcher::writeCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_writeCount;
}

qint64 VARNOPatcher::expectedDataSize() const
{
    const std::lock_guard lock(m_mutex);
    return m_expectedDataSize;
}

qsizetype VARNOPatcher::queuedFileCount() const
{
    const std::lock_guard lock(m_mutex);
    return qsizetype(m_patchQueue.size());
}

qint64 VARNOPatcher::failedCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_failedCount;
}

bool VARNOPatcher::isRunOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_patchQueue.empty() && m_writeCount + m_failedCount >= m_totalFiles;
}

QString VARNOPatcher::currentFilename() const
{
    const std::lock_guard lock(m_mutex);
    return m_currentFilename;
}
