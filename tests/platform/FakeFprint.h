#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>

// A system bus of the test's own, the only one that this process knows. Its address stays the same
// when it ends and starts again, as the real one's does.
class PrivateBus
{
public:
    // The first call points the process to it; until then nothing in it may speak to a bus. It does
    // not run yet.
    static PrivateBus &shared();
    ~PrivateBus() { stop(); }
    PrivateBus(const PrivateBus &) = delete;
    PrivateBus &operator=(const PrivateBus &) = delete;

    // The program starts when somebody calls the fingerprint daemon that does not run.
    void start(const QString &activated = QString());
    void stop();
    // It runs, but does nothing until it is resumed.
    void suspend();
    void resume();

    [[nodiscard]] QString socket() const { return m_folder.filePath(QStringLiteral("bus")); }
    [[nodiscard]] QString address() const { return QStringLiteral("unix:path=") + socket(); }

private:
    PrivateBus();

    QTemporaryDir m_folder;
    QProcess m_process;
};

// A fingerprint daemon with one reader that does what the test says. It leaves the bus at its end.
class FakeFprint : public QDBusVirtualObject
{
public:
    // An impostor does everything that a daemon does but has not got its name.
    enum class Kind { Daemon, Impostor };

    explicit FakeFprint(const PrivateBus &bus, Kind kind = Kind::Daemon);
    ~FakeFprint() override;

    // What the method answers from now on: an error, arguments, or nothing until answerHeld().
    void refuse(const QString &method, const QString &errorName);
    void answer(const QString &method, const QVariantList &arguments);
    void hold(const QString &method);
    void answerHeld();
    // Whether a call is held.
    [[nodiscard]] bool isHolding() const { return !m_held.isEmpty(); }

    void tell(const QString &result, bool isDone);
    void removeDevice();

    // The calls about checking a finger, each with its argument: "Claim ", "VerifyStart any".
    [[nodiscard]] const QStringList &calls() const { return m_calls; }
    // Whether the connection that last called is open. The real daemon frees a reader whose claimer
    // has left the bus.
    [[nodiscard]] bool hasCaller() const;
    // How often somebody asked for the enrolled fingers.
    [[nodiscard]] int askedForFingers() const { return m_askedForFingers; }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    [[nodiscard]] QDBusMessage answerTo(const QDBusMessage &message) const;

    QDBusConnection m_connection;
    QHash<QString, QString> m_errors;
    QHash<QString, QVariantList> m_answers;
    QStringList m_heldMethods;
    QList<QDBusMessage> m_held;
    QStringList m_calls;
    QString m_caller;
    int m_askedForFingers = 0;
};

// One message to the bus and back, on a connection of its own: what was sent before has been dealt
// with by the bus, and what that brought has been delivered here.
void settle(const PrivateBus &bus);
