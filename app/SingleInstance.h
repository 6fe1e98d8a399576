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
    // Like claim(), but leaves the other launcher alone and does not wait for it. Does not listen,
    // either. What it was given, claim() has no more to ask for. Any thread, while no other one
    // uses the object.
    [[nodiscard]] bool claimQuietly();

    // Runs for each later launcher that asks.
    void setComeForward(std::function<void()> comeForward);

private:
    [[nodiscard]] bool lock();
    [[nodiscard]] bool askOtherToComeForward() const;
    void listen();

    const QString m_serverName;
    FileLock m_lock;
    QLocalServer m_server;
    bool m_mayGoOn = false;
    std::function<void()> m_comeForward;
};
