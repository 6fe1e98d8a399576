#include "RecordingDelegate.h"

QStringList RecordingDelegate::lines() const
{
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

QStringList RecordingDelegate::linesOfWriting() const
{
    QStringList writing;
    for (const QString &line : lines()) {
        if (!line.startsWith(QStringLiteral("received")))
            writing += line;
    }
    return writing;
}

QList<RecordingDelegate::Progress> RecordingDelegate::progress() const
{
    const std::lock_guard lock(m_mutex);
    return m_progress;
}

qsizetype RecordingDelegate::finishCount() const
{
    return lines().count(QStringLiteral("finished"));
}

void RecordingDelegate::patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize,
                                                       double speed, qint64 currentFile,
                                                       const QString &filename, qint64 totalFiles)
{
    {
        const std::lock_guard lock(m_mutex);
        m_progress += Progress{megaByteCount, expectedSize, speed};
    }
    keep(QStringLiteral("received %1/%2 ").arg(currentFile).arg(totalFiles) + filename);
}

void RecordingDelegate::patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                                          const QString &filename)
{
    keep(QStringLiteral("written %1/%2 ").arg(currentFile).arg(totalFiles) + filename);
}

void RecordingDelegate::patcherDidFinish() { keep(QStringLiteral("finished")); }

void RecordingDelegate::keep(const QString &line)
{
    {
        const std::lock_guard lock(m_mutex);
        m_lines += line;
    }
    if (onMessage)
        onMessage(line);
}
