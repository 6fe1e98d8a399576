#pragma once

#include <QString>

// Hears from the engine. Each message comes on the thread that produced it: transfers on the
// connections' thread, writes and the end of a run also on write queues. A delegate may call the
// engine back from within any message.
class VARNOPatcherDelegate
{
public:
    virtual ~VARNOPatcherDelegate() = default;

    // Once for every piece received. Megabytes are 1048576 bytes; the expected size is a tiny
    // negative number when unknown; speed is the average since the response, in megabytes a second,
    // infinite when no time has passed. `currentFile` counts from 1.
    virtual void patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize,
                                                double speed, qint64 currentFile,
                                                const QString &filename, qint64 totalFiles) = 0;

    // While writes are outstanding after the last download; `currentFile` counts those written.
    virtual void patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                                   const QString &filename) = 0;

    // Every file that was enqueued has reported its write.
    virtual void patcherDidFinish() = 0;
};
