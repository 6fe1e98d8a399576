#pragma once

#include "FakeFprint.h"
#include "LogCapture.h"
#include "platform/BiometricContext.h"
#include "platform/BiometricPrompt.h"

#include <QList>
#include <QObject>

// The calls of one check.
inline const auto Claim = QStringLiteral("Claim");
inline const auto VerifyStart = QStringLiteral("VerifyStart any");
inline const auto VerifyStop = QStringLiteral("VerifyStop");
inline const auto Release = QStringLiteral("Release");
inline const QStringList Begun{Claim, VerifyStart};
inline const QStringList WholeCheck{Claim, VerifyStart, VerifyStop, Release};

inline const auto Reason = QStringLiteral("Login to the game");
inline const auto Match = QStringLiteral("verify-match");
inline const auto NoMatch = QStringLiteral("verify-no-match");

using Answers = QList<bool>;

// The line that a refusal leaves in the log.
QStringList refused(const char *why);
QString fprintError(const char *name);

class RecordingPrompt final : public BiometricPrompt
{
public:
    void show(const QString &reason, std::function<void()> cancelQuestion) override;
    void retry(const QString &text) override { events += QStringLiteral("retry ") + text; }
    void hide() override { events += QStringLiteral("hide"); }

    QStringList events;
    std::function<void()> cancel;
    bool cancelsAtOnce = false;
};

// A context and the daemon that it asks, both new for each test. Derived classes hold the tests.
class BiometricBench : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    void makeContext() { m_context = makeBiometricContext(&m_prompt); }
    void ask();
    // Returns when the daemon waits for a finger.
    void askAndWait();
    // Returns when the daemon got a call of that method, which it does not answer; without one,
    // when it waits for a finger.
    void askAndHold(const QString &method);
    // Whether that is all that came of the questions, also after everything on its way arrived.
    void verifyOutcome(const Answers &answers, const QStringList &log);

    PrivateBus &m_bus = PrivateBus::shared();
    std::unique_ptr<FakeFprint> m_daemon;
    RecordingPrompt m_prompt;
    std::unique_ptr<LogCapture> m_log;
    std::unique_ptr<BiometricContext> m_context;
    Answers m_answers;
};
