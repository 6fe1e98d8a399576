#include "BiometricBench.h"

#include "platform/DispatchQueue.h"

#include <QTest>

QStringList refused(const char *why)
{
    return {QStringLiteral("+[ErrorHandler log:] [line 14]: Fingerprint refused: %1.")
                .arg(QLatin1String(why))};
}

QString fprintError(const char *name)
{
    return QStringLiteral("net.reactivated.Fprint.Error.") + QLatin1String(name);
}

void RecordingPrompt::show(const QString &reason, std::function<void()> cancelQuestion)
{
    events += QStringLiteral("show ") + reason;
    cancel = std::move(cancelQuestion);
    if (cancelsAtOnce)
        cancel();
}

void BiometricBench::init()
{
    m_bus.start();
    m_daemon = std::make_unique<FakeFprint>(m_bus);
    m_prompt = RecordingPrompt();
    m_log = std::make_unique<LogCapture>();
    m_answers.clear();
    makeContext();
}

void BiometricBench::cleanup()
{
    m_context.reset();
    m_daemon.reset();
    m_log.reset();
    m_bus.stop();
    QVERIFY(DispatchQueue::drain(10000));
}

void BiometricBench::ask()
{
    m_context->evaluatePolicy(Reason, [this](bool isOwner) { m_answers += isOwner; });
}

void BiometricBench::askAndWait()
{
    ask();
    QTRY_COMPARE(m_daemon->calls(), Begun);
    settle(m_bus);
}

void BiometricBench::askAndHold(const QString &method)
{
    if (method.isEmpty()) {
        askAndWait();
        return;
    }
    // Otherwise the first look for the reader would be held.
    QTRY_VERIFY(m_context->canEvaluatePolicy().isPossible);
    settle(m_bus);
    m_daemon->hold(method);
    ask();
    QTRY_VERIFY(m_daemon->isHolding());
    settle(m_bus);
}

void BiometricBench::verifyOutcome(const Answers &answers, const QStringList &log)
{
    QTRY_COMPARE(m_answers, answers);
    settle(m_bus);
    QCOMPARE(m_answers, answers);
    QCOMPARE(m_log->lines(), log);
    QCOMPARE(m_prompt.events.count(QStringLiteral("show ") + Reason), answers.size());
    QCOMPARE(m_prompt.events.count(QStringLiteral("hide")), answers.size());
}
