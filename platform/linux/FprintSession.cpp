#include "platform/linux/FprintSession.h"

#include "platform/linux/FprintBus.h"

#include <QDBusError>
#include <QHash>

#include <utility>

namespace {

const auto AnyFinger = QStringLiteral("any");
// The user who asks. Only root may name one.
const auto ThisUser = QString();

const QHash<QString, QString> &refusals()
{
    static const QHash<QString, QString> texts{
        {QStringLiteral("verify-no-match"), QStringLiteral("this finger is not enrolled")},
        {QStringLiteral("verify-disconnected"),
         QStringLiteral("the fingerprint reader was unplugged")},
        {QStringLiteral("verify-unknown-error"), QStringLiteral("the fingerprint reader failed")},
    };
    return texts;
}

bool isError(const QDBusMessage &reply) { return reply.type() == QDBusMessage::ErrorMessage; }

// Without an answer the daemon may have done it, or may still do it.
bool mayHaveWorked(const QDBusMessage &reply)
{
    return !isError(reply) || reply.errorName() == QDBusError::errorString(QDBusError::NoReply);
}

} // namespace

FprintSession::FprintSession(FprintBus &bus) : m_bus(bus)
{
    connect(&bus, &FprintBus::daemonChanged, this, &FprintSession::daemonChanged);
    connect(&bus, &FprintBus::lost, this,
            [this] { lose(QStringLiteral("the system bus is gone")); });
}

void FprintSession::start()
{
    call(FprintBus::managerCall(QStringLiteral("GetDefaultDevice")), &FprintSession::deviceFound);
}

void FprintSession::stop()
{
    m_isDecided = true;
    if (m_stage == Stage::Finding)
        end();
    else if (m_stage == Stage::Waiting)
        stopCheck();
}

void FprintSession::deviceFound(const QDBusMessage &reply)
{
    m_device = FprintBus::devicePath(reply);
    if (m_device.isEmpty()) {
        decide(false, FprintBus::explain(reply));
        end();
        return;
    }
    m_daemon = reply.service();
    m_stage = Stage::Claiming;
    m_bus.listen(m_daemon, m_device, this);
    call(deviceCall(QStringLiteral("Claim"), {ThisUser}), &FprintSession::deviceClaimed);
}

void FprintSession::deviceClaimed(const QDBusMessage &reply)
{
    if (isError(reply))
        decide(false, FprintBus::explain(reply));
    if (!m_isDecided) {
        m_stage = Stage::Starting;
        call(deviceCall(QStringLiteral("VerifyStart"), {AnyFinger}), &FprintSession::checkStarted);
    } else if (mayHaveWorked(reply)) {
        release();
    } else {
        end();
    }
}

void FprintSession::checkStarted(const QDBusMessage &reply)
{
    m_stage = Stage::Waiting;
    if (isError(reply))
        decide(false, FprintBus::explain(reply));
    if (!m_isDecided)
        return;
    if (mayHaveWorked(reply))
        stopCheck();
    else
        release();
}

// The daemon may tell before it has answered that it started; it is stopped after that answer.
void FprintSession::verifyStatus(const QString &result, bool isDone)
{
    if (m_isDecided || (m_stage != Stage::Starting && m_stage != Stage::Waiting))
        return;
    const QString refusal = refusals().value(result);
    if (result == QStringLiteral("verify-match"))
        decide(true, QString());
    else if (!refusal.isEmpty())
        decide(false, refusal);
    else if (isDone)
        decide(false, QStringLiteral("the fingerprint reader ended the check"));
    else
        emit retryAsked(result);
    if (m_isDecided && m_stage == Stage::Waiting)
        stopCheck();
}

void FprintSession::stopCheck()
{
    m_stage = Stage::Stopping;
    m_bus.call(deviceCall(QStringLiteral("VerifyStop")), this,
               [this](const QDBusMessage &) { release(); });
}

void FprintSession::release()
{
    if (m_stage == Stage::Ended)
        return;
    m_stage = Stage::Releasing;
    m_bus.call(deviceCall(QStringLiteral("Release")), this,
               [this](const QDBusMessage &) { end(); });
}

void FprintSession::end()
{
    if (m_stage == Stage::Ended)
        return;
    m_stage = Stage::Ended;
    emit ended();
}

void FprintSession::decide(bool isOwner, const QString &why)
{
    if (std::exchange(m_isDecided, true))
        return;
    emit decided(isOwner, why);
}

void FprintSession::daemonChanged(const QString &before)
{
    if (!m_daemon.isEmpty() && before == m_daemon)
        lose(QStringLiteral("the fingerprint service is gone"));
}

void FprintSession::interfacesRemoved(const QDBusObjectPath &path)
{
    if (path.path() == m_device)
        lose(QStringLiteral("the fingerprint reader was unplugged"));
}

// Nobody is left to be told to stop.
void FprintSession::lose(const QString &why)
{
    if (m_stage == Stage::Ended)
        return;
    m_stage = Stage::Ended;
    decide(false, why);
    emit ended();
}

void FprintSession::call(const QDBusMessage &message, Step next)
{
    m_bus.call(message, this, [this, next](const QDBusMessage &reply) {
        if (m_stage != Stage::Ended)
            (this->*next)(reply);
    });
}

QDBusMessage FprintSession::deviceCall(const QString &method, const QVariantList &arguments) const
{
    return FprintBus::deviceCall(m_daemon, m_device, method, arguments);
}
