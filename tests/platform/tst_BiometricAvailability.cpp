#include "FakeFprint.h"
#include "TestMain.h"
#include "platform/BiometricContext.h"
#include "platform/DispatchQueue.h"

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTest>

// What is known about the reader, without any question.
class TestBiometricAvailability : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void isNotPossibleWhileNothingIsKnown();
    void isPossibleWithAReaderAndAFinger();
    void tellsWhyItIsNotPossible_data();
    void tellsWhyItIsNotPossible();
    void knowsNoBiometricsWithoutADaemon();
    void knowsNoBiometricsWithoutABus();
    void learnsOfANewFingerAtTheNextCalls();
    void asksADaemonThatComesLater();
    void asksADaemonThatTakesOver();
    void forgetsADaemonThatIsGoneForGood();
    void keepsWhatItKnowsWhenTheDaemonRests();
    void asksAgainWhenTheBusIsBack();
    void answersAtOnceWhenTheBusHangs();

private:
    void makeContext() { m_context = makeBiometricContext(); }
    [[nodiscard]] bool isPossible() { return m_context->canEvaluatePolicy().isPossible; }
    // Empty when there is no error.
    [[nodiscard]] QString error();

    PrivateBus &m_bus = PrivateBus::shared();
    std::unique_ptr<FakeFprint> m_daemon;
    std::unique_ptr<BiometricContext> m_context;
};

namespace {

const auto GetDefaultDevice = QStringLiteral("GetDefaultDevice");
const auto ListEnrolledFingers = QStringLiteral("ListEnrolledFingers");
const auto NothingHeardYet =
    QStringLiteral("No fingerprint login: the reader has not been heard of yet.");
const auto NoFinger = QStringLiteral("No fingerprint login: no finger is enrolled.");

} // namespace

void TestBiometricAvailability::init()
{
    m_bus.start();
    m_daemon = std::make_unique<FakeFprint>(m_bus);
}

void TestBiometricAvailability::cleanup()
{
    m_context.reset();
    m_daemon.reset();
    m_bus.stop();
    QVERIFY(DispatchQueue::drain(10000));
}

QString TestBiometricAvailability::error()
{
    return m_context->canEvaluatePolicy().error.value_or(Error{}).localizedDescription;
}

void TestBiometricAvailability::isNotPossibleWhileNothingIsKnown()
{
    makeContext();
    QCOMPARE(error(), NothingHeardYet);
    QVERIFY(!isPossible());

    m_daemon->hold(ListEnrolledFingers);
    QTRY_VERIFY(m_daemon->isHolding());
    QCOMPARE(error(), NothingHeardYet);

    m_daemon->answerHeld();
    QTRY_VERIFY(isPossible());
}

void TestBiometricAvailability::isPossibleWithAReaderAndAFinger()
{
    makeContext();
    QTRY_VERIFY(isPossible());
    const auto evaluability = m_context->canEvaluatePolicy();
    QVERIFY(!evaluability.error && !evaluability.exception);
    QCOMPARE(m_daemon->calls(), QStringList());
}

void TestBiometricAvailability::tellsWhyItIsNotPossible_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QString>("errorName");
    QTest::addColumn<QVariantList>("answer");
    QTest::addColumn<QString>("why");

    const auto fprintError = QStringLiteral("net.reactivated.Fprint.Error.%1");
    QTest::newRow("no reader") << GetDefaultDevice << fprintError.arg(QLatin1String("NoSuchDevice"))
                               << QVariantList()
                               << QStringLiteral("there is no fingerprint reader");
    QTest::newRow("no finger") << ListEnrolledFingers
                               << fprintError.arg(QLatin1String("NoEnrolledPrints"))
                               << QVariantList() << QStringLiteral("no finger is enrolled");
    QTest::newRow("an empty list of fingers")
        << ListEnrolledFingers << QString() << QVariantList{QStringList()}
        << QStringLiteral("no finger is enrolled");
    QTest::newRow("no list of fingers") << ListEnrolledFingers << QString() << QVariantList{7}
                                        << QStringLiteral("no finger is enrolled");
    QTest::newRow("not allowed") << ListEnrolledFingers
                                 << fprintError.arg(QLatin1String("PermissionDenied"))
                                 << QVariantList()
                                 << QStringLiteral("this user may not use the fingerprint reader");
    QTest::newRow("something new")
        << GetDefaultDevice << fprintError.arg(QLatin1String("New")) << QVariantList()
        << QStringLiteral("as the test says (net.reactivated.Fprint.Error.New)");
    QTest::newRow("no path") << GetDefaultDevice << QString() << QVariantList{7}
                             << QStringLiteral("the fingerprint service answered something "
                                               "unknown");
    QTest::newRow("nothing") << GetDefaultDevice << QString() << QVariantList()
                             << QStringLiteral("the fingerprint service answered something "
                                               "unknown");
}

void TestBiometricAvailability::tellsWhyItIsNotPossible()
{
    QFETCH(const QString, method);
    QFETCH(const QString, errorName);
    QFETCH(const QVariantList, answer);
    QFETCH(const QString, why);

    m_daemon->answer(method, answer);
    m_daemon->refuse(method, errorName);
    makeContext();
    QTRY_COMPARE(error(), QStringLiteral("No fingerprint login: %1.").arg(why));
    QVERIFY(!isPossible());
}

void TestBiometricAvailability::knowsNoBiometricsWithoutADaemon()
{
    m_daemon.reset();
    makeContext();
    QCOMPARE(error(), NothingHeardYet);
    QTRY_COMPARE(error(), QString());
    QVERIFY(!isPossible());
}

void TestBiometricAvailability::knowsNoBiometricsWithoutABus()
{
    m_daemon.reset();
    m_bus.stop();
    makeContext();
    QCOMPARE(error(), NothingHeardYet);
    QTRY_COMPARE(error(), QString());
    QVERIFY(!isPossible());
}

void TestBiometricAvailability::learnsOfANewFingerAtTheNextCalls()
{
    m_daemon->answer(ListEnrolledFingers, {QStringList()});
    makeContext();
    QTRY_COMPARE(error(), NoFinger);

    m_daemon->answer(ListEnrolledFingers, {QStringList{QStringLiteral("left-thumb")}});
    QTRY_VERIFY(isPossible());
}

void TestBiometricAvailability::asksADaemonThatComesLater()
{
    m_daemon.reset();
    makeContext();
    QTRY_COMPARE(error(), QString());
    settle(m_bus);

    m_daemon = std::make_unique<FakeFprint>(m_bus);
    QTRY_COMPARE(m_daemon->askedForFingers(), 1);
    QTRY_VERIFY(isPossible());
}

void TestBiometricAvailability::asksADaemonThatTakesOver()
{
    makeContext();
    QTRY_VERIFY(isPossible());
    settle(m_bus);

    m_daemon.reset();
    m_daemon = std::make_unique<FakeFprint>(m_bus);
    m_daemon->answer(ListEnrolledFingers, {QStringList()});
    QTRY_COMPARE(m_daemon->askedForFingers(), 1);
    QTRY_COMPARE(error(), NoFinger);
}

void TestBiometricAvailability::forgetsADaemonThatIsGoneForGood()
{
    makeContext();
    QTRY_VERIFY(isPossible());
    settle(m_bus);

    m_daemon.reset();
    QTRY_VERIFY(!isPossible());
    QCOMPARE(error(), QString());
}

void TestBiometricAvailability::keepsWhatItKnowsWhenTheDaemonRests()
{
    m_daemon.reset();
    m_bus.stop();
    const QTemporaryDir folder;
    const QString trace = folder.filePath(QStringLiteral("started"));
    m_bus.start(QStringLiteral("/usr/bin/touch ") + trace);
    m_daemon = std::make_unique<FakeFprint>(m_bus);
    makeContext();
    QTRY_VERIFY(isPossible());
    settle(m_bus);

    m_daemon.reset();
    settle(m_bus);
    QVERIFY(!QFile::exists(trace));
    QVERIFY(isPossible());
    // That call asked again.
    QTRY_VERIFY(QFile::exists(trace));
}

void TestBiometricAvailability::asksAgainWhenTheBusIsBack()
{
    makeContext();
    QTRY_VERIFY(isPossible());

    m_bus.stop();
    QTRY_VERIFY(!isPossible());
    QCOMPARE(error(), QString());

    m_bus.start();
    m_daemon = std::make_unique<FakeFprint>(m_bus);
    QTRY_VERIFY(isPossible());
}

void TestBiometricAvailability::answersAtOnceWhenTheBusHangs()
{
    m_daemon.reset();
    m_bus.stop();
    QFile::remove(m_bus.socket());
    // It lets clients in and then says nothing.
    QLocalServer silentBus;
    QVERIFY(silentBus.listen(m_bus.socket()));

    makeContext();
    QCOMPARE(error(), NothingHeardYet);
    QTRY_VERIFY(silentBus.hasPendingConnections());
    QCOMPARE(error(), NothingHeardYet);

    delete silentBus.nextPendingConnection();
    silentBus.close();
    QTRY_COMPARE(error(), QString());
}

QUELLMOOR_TEST(TestBiometricAvailability, "BiometricAvailability")
#include "tst_BiometricAvailability.moc"
