#include "platform/linux/FprintDesk.h"

#include "platform/linux/FprintSession.h"

#include <utility>

FprintDesk::FprintDesk()
{
    // Children move along to the thread.
    m_bus.setParent(this);
    m_availability.setParent(this);
    connect(&m_availability, &FprintAvailability::learned, this, &FprintDesk::learned);
}

FprintDesk::~FprintDesk() = default;

void FprintDesk::begin(int question)
{
    m_asked = 0;
    m_waiting = question;
    if (m_session)
        m_session->stop();
    else
        proceed();
}

void FprintDesk::cancel(int question)
{
    if (question == m_waiting) {
        m_waiting = 0;
    } else if (question == m_asked) {
        m_asked = 0;
        m_session->stop();
    }
}

void FprintDesk::proceed()
{
    if (m_waiting == 0)
        return;
    const int question = std::exchange(m_waiting, 0);
    if (!m_bus.open()) {
        emit decided(question, false, QStringLiteral("there is no system bus"));
        return;
    }
    m_asked = question;
    openSession();
}

void FprintDesk::openSession()
{
    m_session = std::make_unique<FprintSession>(m_bus);
    connect(m_session.get(), &FprintSession::retryAsked, this,
            [this](const QString &status) { emit retryAsked(m_asked, status); });
    connect(m_session.get(), &FprintSession::decided, this,
            [this](bool isOwner, const QString &why) {
                emit decided(std::exchange(m_asked, 0), isOwner, why);
            });
    connect(m_session.get(), &FprintSession::ended, this, &FprintDesk::sessionEnded);
    m_session->start();
}

void FprintDesk::sessionEnded()
{
    // It is still on the stack.
    m_session.release()->deleteLater();
    proceed();
}
