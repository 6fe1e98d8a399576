// From a finished download to a written file: the choice of the write queue, decompression, and
// what happens when the file has reported its write.
#include "model/VARNOPatchFile.h"
#include "patcher/Bzip2.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"

using QualityOfService = DispatchQueue::QualityOfService;

void VARNOPatcher::connectionDidFinishLoading()
{
    std::shared_ptr<Downloadable> file;
    {
        const std::lock_guard lock(m_mutex);
        file = m_currentDownloadable;
    }
    const auto queue = writeQueueForFile(file);
    QByteArray data;
    {
        const std::lock_guard lock(m_mutex);
        data = std::exchange(m_dataBuffer, QByteArray());
        m_waitingBytes += data.size();
    }
    auto next = takeNextFile();
    if (!next)
        reportEndOfQueue(); // now, since the last words are those of the last write
    queue->async([self = shared_from_this(), data = std::move(data), file]() mutable {
        const qint64 size = data.size();
        self->writeData(std::exchange(data, {}), file);
        self->releaseWaitingBytes(size);
    });
    if (next)
        downloadFrom(std::move(next));
}

std::shared_ptr<DispatchQueue>
VARNOPatcher::writeQueueForFile(const std::shared_ptr<Downloadable> &file)
{
    if (const auto *patch = dynamic_cast<const VARNOPatchFile *>(file.get()))
        return serialQueueForFile(*patch);
    const qint64 current = currentFile();
    if (current % 3 == 0)
        return DispatchQueue::global(QualityOfService::Utility);
    return DispatchQueue::makeConcurrent(QStringLiteral("VARNO.write.file.queue.%1").arg(current),
                                         QualityOfService::Utility);
}

std::shared_ptr<DispatchQueue> VARNOPatcher::serialQueueForFile(const VARNOPatchFile &file)
{
    const QString &path = file.localPath();
    if (path.isEmpty())
        qFatal("VARNOPatcher: a patch without a local path");
    const QUrl url = file.downloadURL();
    const std::lock_guard lock(m_mutex);
    auto &queue = m_serialPatchQueues[path];
    if (!queue) {
        const QString text =
            url.isValid() ? QStringLiteral("Optional(%1)").arg(url.toString(QUrl::FullyEncoded))
                          : QStringLiteral("nil");
        queue = DispatchQueue::makeSerial(QStringLiteral("varno.patch.queue.") + text);
    }
    return queue;
}

void VARNOPatcher::writeData(QByteArray data, const std::shared_ptr<Downloadable> &file)
{
    LargeContentsTurn turn; // ends after the contents
    const std::optional<QByteArray> contents = decompressBzip2(std::move(data), turn);
    if (!file)
        return;
    file->writeToDisk(contents, [self = shared_from_this()](const QString &fileName,
                                                            const std::optional<Error> &error,
                                                            const std::optional<QString> &logText) {
        self->writeCompletion(fileName, error, logText);
    });
}

void VARNOPatcher::releaseWaitingBytes(qint64 count)
{
    std::unique_lock lock(m_mutex);
    const bool wasTooMuch = m_waitingBytes > m_waitingBytesLimit;
    m_waitingBytes -= count;
    const bool isTooMuch = m_waitingBytes > m_waitingBytesLimit;
    const auto connection = m_connection.lock();
    lock.unlock();
    if (wasTooMuch && !isTooMuch && connection)
        connection->setPaused(false);
}

// The order is meant: the last write sends patcherDidFinish, then one more report, and only then
// adds its text to the log.
void VARNOPatcher::writeCompletion(const QString &fileName, const std::optional<Error> &error,
                                   const std::optional<QString> &logText)
{
    const std::lock_guard oneAtATime(m_completionMutex);
    std::unique_lock lock(m_mutex);
    increment(m_writeCount);
    const bool isLast = m_writeCount >= m_totalFiles;
    lock.unlock();

    if (isLast)
        downloadNext();

    lock.lock();
    const auto delegate = m_patchQueue.empty() ? m_delegate : nullptr;
    const qint64 writeCount = m_writeCount;
    const qint64 totalFiles = m_totalFiles;
    lock.unlock();
    if (delegate)
        delegate->patcherWriteUpdateWithCurrentFile(writeCount, totalFiles, fileName);

    lock.lock();
    m_logs += logText.value_or(QString()) + QLatin1Char('\n');
    lock.unlock();
    if (error)
        logError(*error, "connectionDidFinishLoading(_:)", 165);
}
