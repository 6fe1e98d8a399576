#include "platform/linux/FprintAvailability.h"

#include "platform/linux/FprintBus.h"

#include <QDBusError>

namespace {

BiometricContext::Evaluability impossible(const QString &why)
{
    return {false, Error{QStringLiteral("No fingerprint login: %1.").arg(why)}, std::nullopt};
}

// A machine without the daemon knows no biometrics, which is nothing to complain about.
BiometricContext::Evaluability impossible(const QDBusMessage &error)
{
    if (error.errorName() == QDBusError::errorString(QDBusError::ServiceUnknown))
        return {};
    return impossible(FprintBus::explain(error));
}

} // namespace

FprintAvailability::FprintAvailability(FprintBus &bus) : m_bus(bus)
{
    connect(&bus, &FprintBus::lost, this, [this] { conclude({}); });
    connect(&bus, &FprintBus::daemonChanged, this, [this](const QString &, const QString &now) {
        if (now.isEmpty())
            daemonGone();
        else
            ask();
    });
}

BiometricContext::Evaluability FprintAvailability::unheardOf()
{
    return impossible(QStringLiteral("the reader has not been heard of yet"));
}

void FprintAvailability::refresh()
{
    if (!m_bus.open())
        conclude({});
    else if (!m_isAsking)
        ask();
}

void FprintAvailability::ask()
{
    ++m_round;
    m_isAsking = true;
    call(FprintBus::managerCall(QStringLiteral("GetDefaultDevice")),
         &FprintAvailability::deviceFound);
}

void FprintAvailability::deviceFound(const QDBusMessage &reply)
{
    const QString device = FprintBus::devicePath(reply);
    if (device.isEmpty())
        conclude(impossible(reply));
    else
        call(FprintBus::deviceCall(reply.service(), device, QStringLiteral("ListEnrolledFingers"),
                                   {QString()}),
             &FprintAvailability::fingersListed);
}

void FprintAvailability::fingersListed(const QDBusMessage &reply)
{
    if (reply.type() == QDBusMessage::ErrorMessage)
        conclude(impossible(reply));
    else if (reply.arguments().value(0).toStringList().isEmpty())
        conclude(impossible(QStringLiteral("no finger is enrolled")));
    else
        conclude({true, std::nullopt, std::nullopt});
}

// The daemon leaves whenever it is idle. Asking it would wake it up for ever, so that only the bus
// is asked whether it would come back.
void FprintAvailability::daemonGone()
{
    ++m_round;
    m_isAsking = false;
    call(FprintBus::busCall(QStringLiteral("ListActivatableNames")),
         &FprintAvailability::activatableListed);
}

void FprintAvailability::activatableListed(const QDBusMessage &reply)
{
    if (!reply.arguments().value(0).toStringList().contains(FprintBus::Service))
        conclude({});
}

void FprintAvailability::conclude(const BiometricContext::Evaluability &known)
{
    ++m_round;
    m_isAsking = false;
    emit learned(known);
}

void FprintAvailability::call(const QDBusMessage &message, Step next)
{
    m_bus.call(message, this, [this, next, round = m_round](const QDBusMessage &reply) {
        if (round == m_round)
            (this->*next)(reply);
    });
}
