#include "FakeReachability.h"
#include "TestMain.h"
#include "controller/Reachability.h"
#include "platform/NotificationCenter.h"

#include <QTest>

class TestReachability : public QObject
{
    Q_OBJECT

private slots:
    void mapsFlagsToAStatus_data();
    void mapsFlagsToAStatus();
    void isNotReachableWhenTheFlagsCannotBeRead();
    void tellsWhetherAConnectionIsRequired();
    void asksTheServiceForItsTarget();
    void isNullWhenTheServiceHasNoSource();
    void startsOnlyWhenBothStepsSucceed_data();
    void startsOnlyWhenBothStepsSucceed();
    void postsItselfAfterEachChange();
    void stopsWhenDestroyed();
};

void TestReachability::mapsFlagsToAStatus_data()
{
    QTest::addColumn<unsigned>("flags");
    QTest::addColumn<int>("status");
    QTest::newRow("reachable") << 0x2U << 1;
    QTest::newRow("connection required") << (0x2U | 0x4U) << 0;
    QTest::newRow("required, but on traffic") << (0x2U | 0x4U | 0x8U) << 1;
    QTest::newRow("required, but on demand") << (0x2U | 0x4U | 0x20U) << 1;
    QTest::newRow("on traffic with intervention") << (0x2U | 0x4U | 0x8U | 0x10U) << 0;
    QTest::newRow("intervention without a required connection") << (0x2U | 0x8U | 0x10U) << 1;
    QTest::newRow("not reachable, connection required") << 0x4U << 0;
    QTest::newRow("not reachable, on traffic") << 0x8U << 0;
    QTest::newRow("nothing") << 0x0U << 0;
}

void TestReachability::mapsFlagsToAStatus()
{
    QFETCH(unsigned, flags);
    QFETCH(int, status);
    FakeReachability service;
    service.flags = flags;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(int(reachability->currentReachabilityStatus()), status);
}

void TestReachability::isNotReachableWhenTheFlagsCannotBeRead()
{
    FakeReachability service;
    service.flags.reset();
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(reachability->currentReachabilityStatus(), NotReachable);
    QVERIFY(!reachability->connectionRequired());
}

void TestReachability::tellsWhetherAConnectionIsRequired()
{
    FakeReachability service;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QVERIFY(!reachability->connectionRequired());
    service.flags = 0x4;
    QVERIFY(reachability->connectionRequired());
}

void TestReachability::asksTheServiceForItsTarget()
{
    FakeReachability service;
    Reachability::reachabilityWithHostName(service, QStringLiteral("https://x/login/"));
    QCOMPARE(service.asked, QStringLiteral("name https://x/login/"));
    Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(service.asked, QStringLiteral("address 0.0.0.0"));
}

void TestReachability::isNullWhenTheServiceHasNoSource()
{
    FakeReachability service;
    service.canMakeSource = false;
    QVERIFY(!Reachability::reachabilityWithHostName(service, QStringLiteral("x")));
    QVERIFY(!Reachability::reachabilityForInternetConnection(service));
}

void TestReachability::startsOnlyWhenBothStepsSucceed_data()
{
    QTest::addColumn<bool>("canSetCallback");
    QTest::addColumn<bool>("canSchedule");
    QTest::newRow("both") << true << true;
    QTest::newRow("no callback") << false << true;
    QTest::newRow("no schedule") << true << false;
}

void TestReachability::startsOnlyWhenBothStepsSucceed()
{
    QFETCH(bool, canSetCallback);
    QFETCH(bool, canSchedule);
    FakeReachability service;
    service.canSetCallback = canSetCallback;
    service.canSchedule = canSchedule;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(reachability->startNotifier(), canSetCallback && canSchedule);
}

void TestReachability::postsItselfAfterEachChange()
{
    FakeReachability service;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QList<const void *> heard;
    auto &center = NotificationCenter::defaultCenter();
    const auto token = center.addObserver(QStringLiteral("kNetworkReachabilityChangedNotification"),
                                          [&heard](const void *object) { heard += object; });
    QVERIFY(reachability->startNotifier());
    service.callback();
    service.callback();
    center.removeObserver(token);
    service.callback();
    QCOMPARE(heard, QList<const void *>(2, reachability.get()));
}

void TestReachability::stopsWhenDestroyed()
{
    FakeReachability service;
    auto reachability = Reachability::reachabilityForInternetConnection(service);
    QVERIFY(reachability->startNotifier());
    QVERIFY(service.isScheduled);
    reachability.reset();
    QVERIFY(!service.isScheduled);
}

QUELLMOOR_TEST(TestReachability, "Reachability")
#include "tst_Reachability.moc"
