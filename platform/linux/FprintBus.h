#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>

// A connection of its own to the system bus, and the fingerprint daemon on it. A connection of its
// own, because closing it makes the daemon free a reader that was claimed over it. Lives on one
// thread, which must not be the main one: it waits for the bus to answer. The daemon itself is
// never waited for.
class FprintBus : public QObject
{
    Q_OBJECT

public:
    using Answer = std::function<void(const QDBusMessage &reply)>;

    FprintBus() = default;
    // Closes the connection; the daemon frees a reader that was claimed over it.
    ~FprintBus() override;

    // Connects unless it is connected or the bus is silent. Returns whether it now is.
    bool open();

    // The others need an open connection.

    // `answer` runs once, later, with the reply or the error, unless `receiver` is gone by then.
    void call(const QDBusMessage &message, QObject *receiver, Answer answer);
    // Calls the slots verifyStatus(QString,bool) and interfacesRemoved(QDBusObjectPath) of
    // `receiver` while it lives. Only what `daemon`, a unique name, sends is listened to: anybody
    // on the bus can send signals of these names.
    void listen(const QString &daemon, const QString &device, QObject *receiver);

    // A message to the bus itself.
    [[nodiscard]] static QDBusMessage busCall(const QString &method);
    // A message to the daemon, which starts when it does not run.
    [[nodiscard]] static QDBusMessage managerCall(const QString &method);
    // A message to one reader of the running daemon with that unique name.
    [[nodiscard]] static QDBusMessage deviceCall(const QString &daemon, const QString &device,
                                                 const QString &method,
                                                 const QVariantList &arguments = {});

    // The path in the reply to GetDefaultDevice; empty when it is an error or holds none.
    [[nodiscard]] static QString devicePath(const QDBusMessage &reply);
    // A sentence for the log.
    [[nodiscard]] static QString explain(const QDBusMessage &error);

    static const QString Service;

signals:
    // The connection is no more.
    void lost();
    // The daemon came (`before` is empty), went (`now` is empty) or was replaced.
    void daemonChanged(const QString &before, const QString &now);

private slots:
    void connectionLost();

private:
    void close();

    std::optional<QDBusConnection> m_connection;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
};
