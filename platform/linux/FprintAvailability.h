#pragma once

#include "platform/BiometricContext.h"

#include <QObject>

class FprintBus;
class QDBusMessage;

// What is known about the reader and this user's fingers. Main thread only. `bus` must outlive it.
class FprintAvailability : public QObject
{
    Q_OBJECT

public:
    explicit FprintAvailability(FprintBus &bus);

    // Asks the daemon anew and returns at once. A bus that is not open is opened first.
    void refresh();
    // What the daemon answered last.
    [[nodiscard]] const BiometricContext::Evaluability &known() const { return m_known; }

private:
    using Step = void (FprintAvailability::*)(const QDBusMessage &reply);

    // Begins a round; what an older one still hears is forgotten.
    void ask();
    void deviceFound(const QDBusMessage &reply);
    void fingersListed(const QDBusMessage &reply);
    void daemonGone();
    void activatableListed(const QDBusMessage &reply);
    void conclude(BiometricContext::Evaluability known);
    void call(const QDBusMessage &message, Step next);

    FprintBus &m_bus;
    BiometricContext::Evaluability m_known;
    int m_round = 0;
    bool m_isAsking = false;
};
