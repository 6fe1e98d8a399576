#include "BiometricBench.h"
#include "TestMain.h"

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTest>
#include <QTimer>

// Questions that do not run to their end, and a launcher that goes on meanwhile.
class TestBiometricInterruption : public BiometricBench
{
    Q_OBJECT

private slots:
    void cancelEndsTheQuestion_data();
    void cancelEndsTheQuestion();
    void cancelFromWithinThePromptEndsTheQuestion();
    void cancelAfterTheEndDoesNothing();
    void aSecondQuestionEndsTheFirst_data();
    void aSecondQuestionEndsTheFirst();
    void aQuestionAfterAMatchWaitsUntilTheReaderIsFree_data();
    void aQuestionAfterAMatchWaitsUntilTheReaderIsFree();
    void destructionFreesTheReaderByLeavingTheBus_data();
    void destructionFreesTheReaderByLeavingTheBus();
    void destructionForgetsAReplyOnItsWay();
    void aReplyMayDestroyTheContext();
    void needsNoPrompt();
    void goesOnWhileTheDaemonHangs();
    void goesOnWhileTheBusHangs();
    void goesOnWhileTheBusLetsNobodyIn();

private:
    // Whether the main thread's event loop turns.
    void verifyLoopTurns();
};

void TestBiometricInterruption::cancelEndsTheQuestion_data()
{
    QTest::addColumn<QString>("held");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("while it claims") << Claim << QStringList({Claim, Release});
    QTest::newRow("while it starts") << QStringLiteral("VerifyStart") << WholeCheck;
    QTest::newRow("while it waits for a finger") << QString() << WholeCheck;
}

void TestBiometricInterruption::cancelEndsTheQuestion()
{
    QFETCH(const QString, held);
    QFETCH(const QStringList, calls);

    askAndHold(held);
    m_prompt.cancel();
    verifyOutcome({false}, refused("the player cancelled"));
    m_daemon->answerHeld();
    QTRY_COMPARE(m_daemon->calls(), calls);
}

void TestBiometricInterruption::cancelFromWithinThePromptEndsTheQuestion()
{
    QTRY_VERIFY(m_context->canEvaluatePolicy().isPossible);
    m_prompt.cancelsAtOnce = true;
    ask();
    verifyOutcome({false}, refused("the player cancelled"));
    QCOMPARE(m_daemon->calls(), QStringList());
}

void TestBiometricInterruption::cancelAfterTheEndDoesNothing()
{
    askAndWait();
    const auto cancelFirst = m_prompt.cancel;
    m_daemon->tell(Match, true);
    verifyOutcome({true}, {});

    ask();
    cancelFirst();
    QTRY_COMPARE(m_daemon->calls(), WholeCheck + Begun);
    settle(m_bus);
    QCOMPARE(m_answers, Answers{true});

    const auto cancelSecond = m_prompt.cancel;
    m_context.reset();
    cancelSecond();
    QCOMPARE(m_log->lines(), QStringList());
}

void TestBiometricInterruption::aSecondQuestionEndsTheFirst_data()
{
    QTest::addColumn<QString>("held");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("while it looks for the reader")
        << QStringLiteral("GetDefaultDevice") << QStringList();
    QTest::newRow("while it claims") << Claim << QStringList({Claim, Release});
    QTest::newRow("while it starts") << QStringLiteral("VerifyStart") << WholeCheck;
    QTest::newRow("while it waits for a finger") << QString() << WholeCheck;
}

void TestBiometricInterruption::aSecondQuestionEndsTheFirst()
{
    QFETCH(const QString, held);
    QFETCH(const QStringList, calls);

    askAndHold(held);
    ask();
    QTRY_COMPARE(m_answers, Answers{false});
    m_daemon->answerHeld();
    QTRY_COMPARE(m_daemon->calls(), calls + Begun);
    settle(m_bus);
    m_daemon->tell(Match, true);
    verifyOutcome({false, true}, refused("another question was asked"));
    QTRY_COMPARE(m_daemon->calls(), calls + WholeCheck);
}

void TestBiometricInterruption::aQuestionAfterAMatchWaitsUntilTheReaderIsFree_data()
{
    QTest::addColumn<QString>("held");
    QTest::addColumn<QStringList>("calls");

    QTest::newRow("while it stops") << VerifyStop << QStringList({Claim, VerifyStart, VerifyStop});
    QTest::newRow("while it frees the reader") << Release << WholeCheck;
}

void TestBiometricInterruption::aQuestionAfterAMatchWaitsUntilTheReaderIsFree()
{
    QFETCH(const QString, held);
    QFETCH(const QStringList, calls);

    m_daemon->hold(held);
    askAndWait();
    m_daemon->tell(Match, true);
    QTRY_VERIFY(m_daemon->isHolding());
    ask();
    settle(m_bus);
    QTRY_COMPARE(m_daemon->calls(), calls);

    m_daemon->answerHeld();
    QTRY_COMPARE(m_daemon->calls(), WholeCheck + Begun);
}

void TestBiometricInterruption::destructionFreesTheReaderByLeavingTheBus_data()
{
    QTest::addColumn<QString>("held");

    QTest::newRow("while it looks for the reader") << QStringLiteral("GetDefaultDevice");
    QTest::newRow("while it claims") << Claim;
    QTest::newRow("while it starts") << QStringLiteral("VerifyStart");
    QTest::newRow("while it waits for a finger") << QString();
}

void TestBiometricInterruption::destructionFreesTheReaderByLeavingTheBus()
{
    QFETCH(const QString, held);

    askAndHold(held);
    const QStringList calls = m_daemon->calls();
    QVERIFY(m_daemon->hasCaller());
    m_context.reset();
    QCOMPARE(m_prompt.events.last(), QStringLiteral("hide"));
    QTRY_VERIFY(!m_daemon->hasCaller());
    m_daemon->answerHeld();
    m_daemon->tell(Match, true);
    settle(m_bus);
    // A call that nobody waits for, right before the end of its connection, can crash the daemon.
    QCOMPARE(m_daemon->calls(), calls);
    QCOMPARE(m_answers, Answers());
}

void TestBiometricInterruption::destructionForgetsAReplyOnItsWay()
{
    askAndWait();
    m_prompt.cancel();
    m_context.reset();
    settle(m_bus);
    QCOMPARE(m_answers, Answers());
    QTRY_VERIFY(!m_daemon->hasCaller());
}

void TestBiometricInterruption::aReplyMayDestroyTheContext()
{
    m_context->evaluatePolicy(Reason, [this](bool isOwner) {
        m_context.reset();
        m_answers += isOwner;
    });
    QTRY_COMPARE(m_daemon->calls(), Begun);
    settle(m_bus);
    m_daemon->tell(Match, true);
    verifyOutcome({true}, {});
    QTRY_VERIFY(!m_daemon->hasCaller());
}

void TestBiometricInterruption::needsNoPrompt()
{
    m_context = makeBiometricContext();
    askAndWait();
    m_daemon->tell(QStringLiteral("verify-retry-scan"), false);
    settle(m_bus);
    m_daemon->tell(Match, true);
    QTRY_COMPARE(m_answers, Answers{true});

    ask();
    m_context.reset();
    settle(m_bus);
    QCOMPARE(m_answers, Answers{true});
}

void TestBiometricInterruption::verifyLoopTurns()
{
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&ticks] { ++ticks; });
    timer.start(0);
    QTRY_VERIFY(ticks > 10);
    QCOMPARE(m_answers, Answers());
}

void TestBiometricInterruption::goesOnWhileTheDaemonHangs()
{
    askAndHold(Claim);
    verifyLoopTurns();
    m_prompt.cancel();
    verifyOutcome({false}, refused("the player cancelled"));
}

void TestBiometricInterruption::goesOnWhileTheBusHangs()
{
    QTRY_VERIFY(m_context->canEvaluatePolicy().isPossible);
    settle(m_bus);
    m_bus.suspend();
    QVERIFY(m_context->canEvaluatePolicy().isPossible);
    ask();
    verifyLoopTurns();
    m_prompt.cancel();
    QTRY_COMPARE(m_answers, Answers{false});
    m_context.reset();
    m_bus.resume();
    verifyOutcome({false}, refused("the player cancelled"));
}

void TestBiometricInterruption::goesOnWhileTheBusLetsNobodyIn()
{
    m_context.reset();
    m_daemon.reset();
    m_bus.stop();
    QFile::remove(m_bus.socket());
    QLocalServer silentBus;
    QVERIFY(silentBus.listen(m_bus.socket()));

    makeContext();
    ask();
    QTRY_VERIFY(silentBus.hasPendingConnections());
    verifyLoopTurns();
    delete silentBus.nextPendingConnection();
    silentBus.close();
    QTRY_COMPARE(m_answers, Answers{false});
    QCOMPARE(m_log->lines(), refused("there is no system bus"));
}

QUELLMOOR_TEST(TestBiometricInterruption, "BiometricInterruption")
#include "tst_BiometricInterruption.moc"
