#pragma once

#include "platform/BiometricContext.h"

#include <QObject>

class FprintBus;
class QDBusMessage;

// Asks about the reader and this user's fingers. Lives on the thread of `bus`, which must outlive
// it.
class FprintAvailability : public QObject
{
    Q_OBJECT

public:
    explicit FprintAvailability(FprintBus &bus);

    // What is told before the first answer.
    [[nodiscard]] static BiometricContext::Evaluability unheardOf();

    // Asks the daemon anew. A bus that is not open is opened first.
    void refresh();

signals:
    // After each answer, and when what was known is no longer so.
    void learned(const BiometricContext::Evaluability &known);

private:
    using Step = void (FprintAvailability::*)(const QDBusMessage &reply);

    // Begins a round; what an older one still hears is forgotten.
    void ask();
    void deviceFound(const QDBusMessage &reply);
    void fingersListed(const QDBusMessage &reply);
    void daemonGone();
    void activatableListed(const QDBusMessage &reply);
    void conclude(const BiometricContext::Evaluability &known);
    void call(const QDBusMessage &message, Step next);

    FprintBus &m_bus;
    int m_round = 0;
    bool m_isAsking = false;
};
