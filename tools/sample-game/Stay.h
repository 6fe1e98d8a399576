#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>

#include <optional>

// How long the game runs and how it ends, from QUELLMOOR_SAMPLE_SECONDS, QUELLMOOR_SAMPLE_UNTIL and
// QUELLMOOR_SAMPLE_END. Lives on the main thread; asks the application to quit once the time is
// over or the awaited file is there.
class Stay : public QObject
{
    Q_OBJECT
public:
    // The wishes of the environment; nothing when one of them cannot be meant, with the reason on
    // standard error.
    struct Wishes
    {
        double seconds = 8;
        QString untilFile;
        bool bySignal = false;
        int code = 0;

        static std::optional<Wishes> read();
    };

    explicit Stay(const Wishes &wishes, QObject *parent = nullptr);

    // Call before the event loop runs. False when the folder of the awaited file cannot be watched.
    [[nodiscard]] bool begin();

    // The exit code, unless the process is to end by a signal: then this does not return.
    [[nodiscard]] static int end(const Wishes &wishes);

private:
    void endWhenFileIsThere() const;

    const Wishes m_wishes;
    QFileSystemWatcher m_watcher;
};
