#include "platform/BiometricContext.h"

#include "platform/BiometricPrompt.h"
#include "platform/DispatchQueue.h"
#include "platform/linux/FprintDesk.h"
#include "platform/linux/Post.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHash>
#include <QPointer>
#include <QThread>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto LongestGoodbye = 500ms;

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

// The main thread's side: the question, its prompt and its reply. It hands numbers to the desk and
// drops what the desk says about a question that has ended meanwhile.
class FprintContext final : public QObject, public BiometricContext
{
public:
    explicit FprintContext(BiometricPrompt *prompt)
        : m_prompt(prompt), m_thread(std::make_shared<QThread>()), m_desk(new FprintDesk)
    {
        m_thread->setObjectName(QStringLiteral("fingerprint"));
        m_desk->moveToThread(m_thread.get());
        connect(m_thread.get(), &QThread::finished, m_desk, &QObject::deleteLater);
        connect(m_desk, &FprintDesk::learned, this,
                [this](const Evaluability &known) { m_known = known; });
        connect(m_desk, &FprintDesk::retryAsked, this, &FprintContext::retry);
        connect(m_desk, &FprintDesk::decided, this, &FprintContext::finish);
        m_thread->start();
        atDesk([desk = m_desk] { desk->refresh(); });
    }

    ~FprintContext() override
    {
        if (m_question && m_prompt)
            m_prompt->hide();
        m_thread->quit();
        // A bus that hangs may hold it; then whoever ends the process waits for the queues.
        if (!m_thread->wait(QDeadlineTimer(LongestGoodbye)))
            DispatchQueue::global(DispatchQueue::QualityOfService::High)
                ->async([thread = m_thread] { thread->wait(); });
    }

    Evaluability canEvaluatePolicy() override
    {
        atDesk([desk = m_desk] { desk->refresh(); });
        return m_known;
    }

    void evaluatePolicy(const QString &reason, std::function<void(bool)> reply) override
    {
        refuse(m_lastQuestion, QStringLiteral("another question was asked"));
        const int question = ++m_lastQuestion;
        m_question = Question{question, std::move(reply)};
        atDesk([desk = m_desk, question] { desk->begin(question); });
        if (m_prompt)
            m_prompt->show(reason, [self = QPointer(this), question] {
                if (self)
                    self->refuse(question, QStringLiteral("the player cancelled"));
            });
    }

private:
    struct Question
    {
        int number;
        std::function<void(bool)> reply;
    };

    template<typename Action>
    void atDesk(Action action)
    {
        postTo(m_desk, std::move(action));
    }

    [[nodiscard]] bool isRunning(int question) const
    {
        return m_question && m_question->number == question;
    }

    void retry(int question, const QString &status)
    {
        if (isRunning(question) && m_prompt)
            m_prompt->retry(retryText(status));
    }

    void refuse(int question, const QString &why)
    {
        if (!isRunning(question))
            return;
        atDesk([desk = m_desk, question] { desk->cancel(question); });
        finish(question, false, why);
    }

    void finish(int question, bool isOwner, const QString &why)
    {
        if (!isRunning(question))
            return;
        const auto reply = std::move(m_question->reply);
        m_question.reset();
        if (!isOwner)
            ErrorHandler::log(QStringLiteral("Fingerprint refused: %1.").arg(why));
        // Later and bound to this object: a reply may do anything, even destroy it.
        postTo(this, [reply, isOwner] { reply(isOwner); });
        if (m_prompt)
            m_prompt->hide();
    }

    BiometricPrompt *const m_prompt;
    const std::shared_ptr<QThread> m_thread;
    FprintDesk *const m_desk; // ends itself with its thread
    Evaluability m_known = FprintAvailability::unheardOf();
    std::optional<Question> m_question;
    int m_lastQuestion = 0;
};

} // namespace

std::unique_ptr<BiometricContext> makeBiometricContext(BiometricPrompt *prompt)
{
    return std::make_unique<FprintContext>(prompt);
}
