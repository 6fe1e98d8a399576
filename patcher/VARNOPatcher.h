#pragma once

#include "patcher/Downloadable.h"
#include "patcher/VARNOPatcherDelegate.h"
#include "platform/HttpClient.h"

#include <QHash>
#include <QSet>

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class DispatchQueue;
class VARNOPatchFile;

// The download engine: fetches one file at a time in the order in which they were enqueued, hands
// each finished download to a write queue, which decompresses and writes it, and at once starts the
// next. It never retries and never checks a hash: a file that could not be fetched is left out, and
// then the run ends without patcherDidFinish.
//
// All functions may be called from any thread, also from within a message of the delegate. The
// fields are guarded by one lock that is never held during a message; the five steps of a write's
// completion are never mixed with those of another. The engine stays alive while a connection or a
// write of its own is under way. Make it with std::make_shared.
class VARNOPatcher final : public HttpConnectionDelegate,
                           public std::enable_shared_from_this<VARNOPatcher>
{
public:
    // Bodies that wait to be written may take this much; above it the sender is slowed down.
    static constexpr qint64 WaitingBytesLimit = 256LL * 1024 * 1024;

    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    // `httpClient` must outlive the engine. Speeds are measured by the clock.
    explicit VARNOPatcher(HttpClient &httpClient, qint64 waitingBytesLimit = WaitingBytesLimit,
                          Clock clock = &std::chrono::steady_clock::now);
    ~VARNOPatcher() override;

    // Held strongly.
    void setDelegate(std::shared_ptr<VARNOPatcherDelegate> delegate);
    // Drops the file when one with an equal URL is waiting to be downloaded.
    void enqueueWithFile(const std::shared_ptr<Downloadable> &file);
    // Empties the log and takes the first file. Counts go on from earlier runs. Once a run: a
    // second call while a download is under way starts another beside it.
    void start();
    void setLogs(const QString &logs);

    [[nodiscard]] std::shared_ptr<VARNOPatcherDelegate> delegate() const;
    // The log texts of completed writes, a line each, since start().
    [[nodiscard]] QString logs() const;
    [[nodiscard]] double bytesPerMegaByte() const { return m_bytesPerMegaByte; }
    [[nodiscard]] const DispatchQueue &serialPatchQueue() const { return *m_serialPatchQueue; }
    [[nodiscard]] bool isPatching() const;
    [[nodiscard]] qint64 totalFiles() const;
    // Counts from 1; one more than the downloads started once the queue has run out.
    [[nodiscard]] qint64 currentFile() const;
    [[nodiscard]] qint64 writeCount() const;
    [[nodiscard]] qint64 expectedDataSize() const;
    [[nodiscard]] qsizetype queuedFileCount() const;
    // Downloads of which no write will ever be reported.
    [[nodiscard]] qint64 failedCount() const;
    // Whether every enqueued file has been written or has failed.
    [[nodiscard]] bool isRunOver() const;
    // The last part of the current file's URL without any ".bz2" in it; empty without a file.
    [[nodiscard]] QString currentFilename() const;

    // The queue on which the current download will be written. A patch without a local path is a
    // fatal error.
    [[nodiscard]] std::shared_ptr<DispatchQueue>
    writeQueueForFile(const std::shared_ptr<Downloadable> &file);

    // HttpConnectionDelegate
    void connectionDidReceiveResponse(const HttpResponse &response) override;
    void connectionDidReceiveData(const QByteArray &data) override;
    void connectionDidFinishLoading() override;
    void connectionDidFailWithError(const Error &error) override;

private:
    // An overflow ends the process.
    static void increment(qint64 &counter);
    void downloadNext();
    void downloadFrom(std::shared_ptr<Downloadable> file);
    [[nodiscard]] std::shared_ptr<Downloadable> takeNextFile();
    [[nodiscard]] bool startDownloadWithFile(const std::shared_ptr<Downloadable> &file);
    void reportEndOfQueue();
    void countFailure();
    void writeData(QByteArray data, const std::shared_ptr<Downloadable> &file);
    void releaseWaitingBytes(qint64 count);
    void writeCompletion(const QString &fileName, const std::optional<Error> &error,
                         const std::optional<QString> &logText);
    void logError(const Error &error, const char *function, int line) const;
    [[nodiscard]] std::shared_ptr<DispatchQueue> serialQueueForFile(const VARNOPatchFile &file);
    [[nodiscard]] bool isTooMuchWaiting() const;

    HttpClient &m_httpClient;
    const qint64 m_waitingBytesLimit;
    const Clock m_clock;
    const double m_bytesPerMegaByte = 1048576.0; // nothing reads it; sizes use the exact reciprocal
    const std::shared_ptr<DispatchQueue> m_serialPatchQueue; // made and labelled, used by nothing

    std::recursive_mutex m_completionMutex; // taken before m_mutex
    mutable std::mutex m_mutex;             // guards everything below
    std::shared_ptr<VARNOPatcherDelegate> m_delegate;
    QString m_logs;
    std::deque<std::shared_ptr<Downloadable>> m_patchQueue;
    QSet<QUrl> m_waitingUrls; // of the files in m_patchQueue
    QHash<QString, std::shared_ptr<DispatchQueue>> m_serialPatchQueues;
    bool m_isPatching = false; // only ever cleared: it does not keep start() from starting
    QByteArray m_dataBuffer;
    qint64 m_totalFiles = 0;
    qint64 m_currentFile = 0;
    std::chrono::steady_clock::time_point m_startTime = m_clock();
    qint64 m_expectedDataSize = 0;
    qint64 m_writeCount = 0;
    std::shared_ptr<Downloadable> m_currentDownloadable;
    QString m_currentFilename; // kept, since each piece is reported with it
    qint64 m_failedCount = 0;
    qint64 m_waitingBytes = 0;
    std::weak_ptr<HttpConnection> m_connection;
};
