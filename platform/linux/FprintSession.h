#pragma once

#include <QDBusObjectPath>
#include <QObject>
#include <QVariantList>

class FprintBus;
class QDBusMessage;

// One wait for a finger: finds and claims the reader, starts the check, and afterwards stops it and
// frees the reader, each step after the answer to the one before. Lives on the thread of `bus`,
// which must be open and outlive it. One that is destroyed before it ended leaves it to the close
// of `bus` to free the reader: calls that nobody waits for, right before the close, can crash the
// daemon.
class FprintSession : public QObject
{
    Q_OBJECT

public:
    explicit FprintSession(FprintBus &bus);

    void start();
    // Decides nothing any more and frees the reader. `ended` may come from in here.
    void stop();

signals:
    // The reader waits for another try; `status` says why in the daemon's words.
    void retryAsked(const QString &status);
    // Once, unless it was stopped before. `why` explains a refusal.
    void decided(bool isOwner, const QString &why);
    // The reader is free, or gone. Last of all.
    void ended();

private slots:
    void verifyStatus(const QString &result, bool isDone);
    void interfacesRemoved(const QDBusObjectPath &path);

private:
    enum class Stage { Finding, Claiming, Starting, Waiting, Stopping, Releasing, Ended };
    using Step = void (FprintSession::*)(const QDBusMessage &reply);

    void deviceFound(const QDBusMessage &reply);
    void deviceClaimed(const QDBusMessage &reply);
    void checkStarted(const QDBusMessage &reply);
    void stopCheck();
    void release();
    void end();
    void decide(bool isOwner, const QString &why);
    void daemonChanged(const QString &before);
    void lose(const QString &why);
    void call(const QDBusMessage &message, Step next);
    [[nodiscard]] QDBusMessage deviceCall(const QString &method,
                                          const QVariantList &arguments = {}) const;

    FprintBus &m_bus;
    Stage m_stage = Stage::Finding;
    bool m_isDecided = false;
    QString m_daemon; // the unique name, so that no other daemon is talked to half-way
    QString m_device;
};
