#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

#include <functional>

class InstanceLock;

// How launchers of one data folder speak to each other: the one that has the lock listens; a later
// one asks it to come forward and ends. Main thread only.
class SingleInstance : public QObject
{
    Q_OBJECT

public:
    explicit SingleInstance(const QString &dataFolder);

    // For who did not get the lock. True when this process may go on after all, having it now;
    // false when the other launcher is there and has been asked to come forward. Waits a few
    // seconds at most for one that is just starting or ending.
    [[nodiscard]] bool waitFor(InstanceLock &lock) const;

    // For who has the lock: from then on `comeForward` runs for each later launcher that asks,
    // those that wait for it included. Once.
    void listen(std::function<void()> comeForward);

private:
    [[nodiscard]] bool askOtherToComeForward() const;

    const QString m_serverName;
    QLocalServer m_server;
    std::function<void()> m_comeForward;
};
