#pragma once

#include "platform/FileLock.h"

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <functional>

// One launcher per user and data folder: the first holds a lock there and listens; a later one asks
// it to come forward and ends. Main thread only; the lock goes with the object, and with the
// process however it ends.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    // Makes the data folder when it is missing.
    explicit SingleInstance(const QString &dataFolder);

    // True when this process may go on: it is the first, or the lock cannot be had at all (a folder
    // that cannot be written), which is logged. False when another launcher is there and has been
    // asked to come forward. Waits a few seconds at most for one that is just starting.
    [[nodiscard]] bool claim();
    // Like claim(), but leaves the other launcher alone and does not wait for it.
    [[nodiscard]] bool claimQuietly();

    // From then on `comeForward` runs for each later launcher that asks, those that wait for it
    // included. Once, and only for who may go on.
    void listen(std::function<void()> comeForward);

private:
    [[nodiscard]] bool askOtherToComeForward() const;

    const QString m_serverName;
    FileLock m_lock;
    QLocalServer m_server;
    std::function<void()> m_comeForward;
};
