#include "platform/BiometricContext.h"

#include "platform/BiometricPrompt.h"
#include "platform/linux/FprintAvailability.h"
#include "platform/linux/FprintBus.h"
#include "platform/linux/FprintSession.h"

#include <QCoreApplication>
#include <QHash>
#include <QPointer>

namespace {

QString retryText(const QString &status)
{
    static const QHash<QString, const char *> texts{
        {QStringLiteral("verify-swipe-too-short"),
         QT_TRANSLATE_NOOP("Fingerprint", "The swipe was too short. Try again.")},
        {QStringLiteral("verify-finger-not-centered"),
         QT_TRANSLATE_NOOP("Fingerprint", "Put your finger on the middle of the reader.")},
        {QStringLiteral("verify-remove-and-retry"),
         QT_TRANSLATE_NOOP("Fingerprint", "Lift your finger and try again.")},
    };
    return QCoreApplication::translate(
        "Fingerprint",
        texts.value(status, QT_TRANSLATE_NOOP("Fingerprint", "Try your finger again.")));
}

// The running question and the session at the reader are two things: the session still frees the
// reader when its question has been answered, and the next question waits for that.
class FprintContext final : public QObject, public BiometricContext
{
public:
    explicit FprintContext(BiometricPrompt *prompt) : m_prompt(prompt), m_availability(m_bus)
    {
        connect(&m_bus, &FprintBus::opened, this, &FprintContext::proceed);
        connect(&m_bus, &FprintBus::unreachable, this, [this] {
            if (!m_session)
                refuse(QStringLiteral("there is no system bus"));
        });
        m_availability.refresh();
    }

    ~FprintContext() override
    {
        if (m_question && m_prompt)
            m_prompt->hide();
    }

    Evaluability canEvaluatePolicy() override
    {
        m_availability.refresh();
        return m_availability.known();
    }

    void evaluatePolicy(const QString &reason, std::function<void(bool)> reply) override
    {
        refuse(QStringLiteral("another question was asked"));
        const int number = ++m_lastNumber;
        m_question = Question{number, std::move(reply)};
        if (m_prompt)
            m_prompt->show(reason, [self = QPointer(this), number] {
                if (self && self->m_question && self->m_question->number == number)
                    self->refuse(QStringLiteral("the player cancelled"));
            });
        proceed();
    }

private:
    struct Question
    {
        int number;
        std::function<void(bool)> reply;
    };

    void proceed()
    {
        if (!m_question || m_session)
            return;
        if (!m_bus.isOpen()) {
            m_bus.open();
            return;
        }
        m_session = std::make_unique<FprintSession>(m_bus);
        connect(m_session.get(), &FprintSession::retryAsked, this, [this](const QString &status) {
            if (m_prompt)
                m_prompt->retry(retryText(status));
        });
        connect(m_session.get(), &FprintSession::decided, this, &FprintContext::finish);
        connect(m_session.get(), &FprintSession::ended, this, &FprintContext::sessionEnded);
        m_session->start();
    }

    void finish(bool isOwner, const QString &why)
    {
        if (!m_question)
            return;
        const auto reply = std::move(m_question->reply);
        m_question.reset();
        if (!isOwner)
            ErrorHandler::log(QStringLiteral("Fingerprint refused: %1.").arg(why));
        if (m_prompt)
            m_prompt->hide();
        // Later and bound to this object: a reply may do anything, even destroy it.
        QMetaObject::invokeMethod(
            this, [reply, isOwner] { reply(isOwner); }, Qt::QueuedConnection);
    }

    void refuse(const QString &why)
    {
        if (!m_question)
            return;
        finish(false, why);
        if (m_session)
            m_session->stop();
    }

    void sessionEnded()
    {
        // It is still on the stack.
        FprintSession *session = m_session.release();
        session->setParent(this);
        session->deleteLater();
        proceed();
    }

    BiometricPrompt *const m_prompt;
    FprintBus m_bus;
    FprintAvailability m_availability;
    std::unique_ptr<FprintSession> m_session;
    std::optional<Question> m_question;
    int m_lastNumber = 0;
};

} // namespace

std::unique_ptr<BiometricContext> makeBiometricContext(BiometricPrompt *prompt)
{
    return std::make_unique<FprintContext>(prompt);
}
