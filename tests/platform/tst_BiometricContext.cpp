#include "BiometricBench.h"
#include "TestMain.h"

#include <QTest>

// One question after the other, put to a daemon that does what the test says.
class TestBiometricContext : public BiometricBench
{
    Q_OBJECT

private slots:
    void answersByTheResult_data();
    void answersByTheResult();
    void waitsForAnotherTry_data();
    void waitsForAnotherTry();
    void takesAMatchThatComesBeforeTheStartIsConfirmed();
    void answersOnlyAfterTheCallReturned();
    void answersOnceHoweverManyResultsCome();
    void ignoresResultsOfOthers();
    void refusesWhenACallFails_data();
    void refusesWhenACallFails();
    void refusesWhenTheDaemonVanishes_data();
    void refusesWhenTheDaemonVanishes();
    void refusesWhenTheReaderIsUnplugged();
    void refusesWithoutADaemon();
    void refusesWithoutABus();
    void refusesWhenTheBusGoesAway();
};

void TestBiometricContext::answersByTheResult_data()
{
    QTest::addColumn<QString>("result");
    QTest::addColumn<bool>("isDone");
    QTest::addColumn<bool>("isOwner");
    QTest::addColumn<QStringList>("log");

    QTest::newRow("match") << Match << true << true << QStringList();
    QTest::newRow("match, not done") << Match << false << true << QStringList();
    QTest::newRow("no match") << NoMatch << true << false << refused("this finger is not enrolled");
    QTest::newRow("failure") << QStringLiteral("verify-unknown-error") << true << false
                             << refused("the fingerprint reader failed");
    QTest::newRow("failure, not done") << QStringLiteral("verify-unknown-error") << false << false
                                       << refused("the fingerprint reader failed");
    QTest::newRow("unplugged") << QStringLiteral("verify-disconnected") << true << false
                               << refused("the fingerprint reader was unplugged");
    QTest::newRow("retry, but done") << QStringLiteral("verify-retry-scan") << true << false
                                     << refused("the fingerprint reader ended the check");
    QTest::newRow("unknown") << QStringLiteral("verify-match-later") << true << false
                             << refused("the fingerprint reader ended the check");
    QTest::newRow("empty") << QString() << true << false
                           << refused("the fingerprint reader ended the check");
}

void TestBiometricContext::answersByTheResult()
{
    QFETCH(const QString, result);
    QFETCH(const bool, isDone);
    QFETCH(const bool, isOwner);
    QFETCH(const QStringList, log);

    askAndWait();
    QCOMPARE(m_answers, Answers());
    m_daemon->tell(result, isDone);
    verifyOutcome({isOwner}, log);
    QTRY_COMPARE(m_daemon->calls(), WholeCheck);
    QCOMPARE(m_prompt.events,
             QStringList({QStringLiteral("show ") + Reason, QStringLiteral("hide")}));
}

void TestBiometricContext::waitsForAnotherTry_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("verify-retry-scan") << QStringLiteral("Try your finger again.");
    QTest::newRow("verify-swipe-too-short")
        << QStringLiteral("The swipe was too short. Try again.");
    QTest::newRow("verify-finger-not-centered")
        << QStringLiteral("Put your finger on the middle of the reader.");
    QTest::newRow("verify-remove-and-retry") << QStringLiteral("Lift your finger and try again.");
    QTest::newRow("verify-something-new") << QStringLiteral("Try your finger again.");
}

void TestBiometricContext::waitsForAnotherTry()
{
    QFETCH(const QString, text);

    askAndWait();
    m_daemon->tell(QString::fromLatin1(QTest::currentDataTag()), false);
    QTRY_COMPARE(m_prompt.events.value(1), QStringLiteral("retry ") + text);
    settle(m_bus);
    QCOMPARE(m_answers, Answers());
    QCOMPARE(m_daemon->calls(), Begun);

    m_daemon->tell(Match, true);
    verifyOutcome({true}, {});
    QTRY_COMPARE(m_daemon->calls(), WholeCheck);
}

void TestBiometricContext::takesAMatchThatComesBeforeTheStartIsConfirmed()
{
    m_daemon->hold(QStringLiteral("VerifyStart"));
    ask();
    QTRY_VERIFY(m_daemon->isHolding());
    m_daemon->tell(Match, true);
    QTRY_COMPARE(m_answers, Answers{true});
    QCOMPARE(m_daemon->calls(), Begun);

    m_daemon->answerHeld();
    QTRY_COMPARE(m_daemon->calls(), WholeCheck);
    verifyOutcome({true}, {});
}

void TestBiometricContext::answersOnlyAfterTheCallReturned()
{
    m_prompt.cancelsAtOnce = true;
    ask();
    QCOMPARE(m_answers, Answers());
    verifyOutcome({false}, refused("the player cancelled"));
}

void TestBiometricContext::answersOnceHoweverManyResultsCome()
{
    askAndWait();
    m_daemon->tell(NoMatch, true);
    m_daemon->tell(Match, true);
    m_daemon->tell(QStringLiteral("verify-disconnected"), true);
    verifyOutcome({false}, refused("this finger is not enrolled"));
    QTRY_COMPARE(m_daemon->calls(), WholeCheck);
}

void TestBiometricContext::ignoresResultsOfOthers()
{
    askAndWait();
    FakeFprint impostor(m_bus, FakeFprint::Kind::Impostor);
    impostor.tell(Match, true);
    impostor.removeDevice();
    settle(m_bus);
    QCOMPARE(m_answers, Answers());

    m_daemon->tell(NoMatch, true);
    verifyOutcome({false}, refused("this finger is not enrolled"));
}

void TestBiometricContext::refusesWhenACallFails_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QStringList>("log");

    const auto noReply = QStringLiteral("org.freedesktop.DBus.Error.NoReply");
    QTest::newRow("no reader") << QStringLiteral("GetDefaultDevice") << fprintError("NoSuchDevice")
                               << QStringList() << refused("there is no fingerprint reader");
    QTest::newRow("claimed by another")
        << Claim << fprintError("AlreadyInUse") << QStringList{Claim}
        << refused("the fingerprint reader is in use");
    QTest::newRow("not allowed") << Claim << fprintError("PermissionDenied") << QStringList{Claim}
                                 << refused("this user may not use the fingerprint reader");
    QTest::newRow("perhaps claimed") << Claim << noReply << QStringList({Claim, Release})
                                     << refused("the fingerprint service did not answer");
    QTest::newRow("no finger") << QStringLiteral("VerifyStart") << fprintError("NoEnrolledPrints")
                               << QStringList({Claim, VerifyStart, Release})
                               << refused("no finger is enrolled");
    QTest::newRow("perhaps started") << QStringLiteral("VerifyStart") << noReply << WholeCheck
                                     << refused("the fingerprint service did not answer");
}

void TestBiometricContext::refusesWhenACallFails()
{
    QFETCH(const QString, method);
    QFETCH(const QString, error);
    QFETCH(const QStringList, calls);
    QFETCH(const QStringList, log);

    m_daemon->refuse(method, error);
    ask();
    verifyOutcome({false}, log);
    QTRY_COMPARE(m_daemon->calls(), calls);
}

void TestBiometricContext::refusesWhenTheDaemonVanishes_data()
{
    QTest::addColumn<QString>("held");
    QTest::addColumn<QStringList>("log");

    const QStringList gone = refused("the fingerprint service is gone");
    QTest::newRow("while it looks for the reader")
        << QStringLiteral("GetDefaultDevice") << refused("the fingerprint service did not answer");
    QTest::newRow("while it claims") << Claim << gone;
    QTest::newRow("while it starts") << QStringLiteral("VerifyStart") << gone;
    QTest::newRow("while it waits for a finger") << QString() << gone;
}

void TestBiometricContext::refusesWhenTheDaemonVanishes()
{
    QFETCH(const QString, held);
    QFETCH(const QStringList, log);

    askAndHold(held);
    m_daemon.reset();
    verifyOutcome({false}, log);

    m_daemon = std::make_unique<FakeFprint>(m_bus);
    askAndWait();
    m_daemon->tell(Match, true);
    verifyOutcome({false, true}, log);
}

void TestBiometricContext::refusesWhenTheReaderIsUnplugged()
{
    askAndWait();
    m_daemon->removeDevice();
    verifyOutcome({false}, refused("the fingerprint reader was unplugged"));
}

void TestBiometricContext::refusesWithoutADaemon()
{
    QTRY_VERIFY(m_context->canEvaluatePolicy().isPossible);
    m_daemon.reset();
    QTRY_VERIFY(!m_context->canEvaluatePolicy().isPossible);
    ask();
    verifyOutcome({false}, refused("there is no fingerprint service"));
}

void TestBiometricContext::refusesWithoutABus()
{
    m_context.reset();
    m_daemon.reset();
    m_bus.stop();
    makeContext();
    ask();
    QTRY_COMPARE(m_answers, Answers{false});
    QCOMPARE(m_log->lines(), refused("there is no system bus"));
}

void TestBiometricContext::refusesWhenTheBusGoesAway()
{
    askAndWait();
    m_bus.stop();
    QTRY_COMPARE(m_answers, Answers{false});
    QCOMPARE(m_log->lines(), refused("the system bus is gone"));

    m_bus.start();
    m_daemon = std::make_unique<FakeFprint>(m_bus);
    askAndWait();
    m_daemon->tell(Match, true);
    verifyOutcome({false, true}, refused("the system bus is gone"));
}

QUELLMOOR_TEST(TestBiometricContext, "BiometricContext")
#include "tst_BiometricContext.moc"
