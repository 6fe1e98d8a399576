#pragma once

#include "patcher/VARNOPatcherDelegate.h"

#include <QStringList>

#include <functional>
#include <mutex>

// Keeps the engine's messages as lines, in the order in which they came:
// "received <current>/<total> <name>", "written <current>/<total> <name>", "finished".
class RecordingDelegate : public VARNOPatcherDelegate
{
public:
    struct Progress
    {
        double megaByteCount = 0;
        double expectedSize = 0;
        double speed = 0;
        auto operator<=>(const Progress &) const = default;
    };

    // Called after each message is kept, on its thread. Set before the engine starts.
    std::function<void(const QString &line)> onMessage;

    [[nodiscard]] QStringList lines() const;
    // The lines without those that begin with "received".
    [[nodiscard]] QStringList linesOfWriting() const;
    [[nodiscard]] QList<Progress> progress() const;
    [[nodiscard]] qsizetype finishCount() const;

    void patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize, double speed,
                                        qint64 currentFile, const QString &filename,
                                        qint64 totalFiles) override;
    void patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                           const QString &filename) override;
    void patcherDidFinish() override;

private:
    void keep(const QString &line);

    mutable std::mutex m_mutex;
    QStringList m_lines;
    QList<Progress> m_progress;
};
