#pragma once

#include "platform/linux/FprintAvailability.h"
#include "platform/linux/FprintBus.h"

#include <memory>

class FprintSession;

// Everything that talks to the fingerprint daemon, on a thread of its own. Its methods run on that
// thread, too. Questions are numbers above 0, each greater than the one before.
class FprintDesk : public QObject
{
    Q_OBJECT

public:
    FprintDesk();
    // Frees the reader, by closing the connection it was claimed over.
    ~FprintDesk() override;

    void refresh() { m_availability.refresh(); }
    // Waits for a finger once the reader is free; the question before gets no answer any more.
    void begin(int question);
    // A question that is not the last one is ignored.
    void cancel(int question);

signals:
    void learned(const BiometricContext::Evaluability &known);
    void retryAsked(int question, const QString &status);
    // Once for each question that was neither cancelled nor overtaken. `why` explains a refusal.
    void decided(int question, bool isOwner, const QString &why);

private:
    void proceed();
    void openSession();
    void sessionEnded();

    FprintBus m_bus;
    FprintAvailability m_availability{m_bus};
    std::unique_ptr<FprintSession> m_session; // also while it frees the reader
    int m_waiting = 0;                        // the question that has no session yet; or 0
    int m_asked = 0;                          // the session's question, while it wants an answer
};
