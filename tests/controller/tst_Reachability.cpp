#include "TestMain.h"
#include "controller/Reachability.h"
#include "platform/NotificationCenter.h"

#include <QTest>

namespace {

// A source whose flags and abilities the test sets.
struct FakeNetwork
{
    std::optional<ReachabilitySource::Flags> flags = ReachabilitySource::Reachable;
    bool canSetCallback = true;
    bool canSchedule = true;
    bool isScheduled = false;
    std::function<void()> callback;
};

class FakeSource final : public ReachabilitySource
{
public:
    explicit FakeSource(FakeNetwork &network) : m_network(network) {}

    std::optional<Flags> flags() const override { return m_network.flags; }
    bool setCallback(std::function<void()> callback) override
    {
        m_network.callback = std::move(callback);
        return m_network.canSetCallback;
    }
    bool schedule() override { return m_network.isScheduled = m_network.canSchedule; }
    void unschedule() override { m_network.isScheduled = false; }

private:
    FakeNetwork &m_network;
};

class FakeService final : public ReachabilityService
{
public:
    std::unique_ptr<ReachabilitySource> sourceForName(const QString &name) override
    {
        return make(QStringLiteral("name ") + name);
    }
    std::unique_ptr<ReachabilitySource> sourceForAddress(const QString &address) override
    {
        return make(QStringLiteral("address ") + address);
    }

    FakeNetwork network;
    QString asked;
    bool canMake = true;

private:
    std::unique_ptr<ReachabilitySource> make(const QString &target)
    {
        asked = target;
        return canMake ? std::make_unique<FakeSource>(network) : nullptr;
    }
};

} // namespace

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
    FakeService service;
    service.network.flags = flags;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(int(reachability->currentReachabilityStatus()), status);
}

void TestReachability::isNotReachableWhenTheFlagsCannotBeRead()
{
    FakeService service;
    service.network.flags.reset();
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(reachability->currentReachabilityStatus(), NotReachable);
    QVERIFY(!reachability->connectionRequired());
}

void TestReachability::tellsWhetherAConnectionIsRequired()
{
    FakeService service;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QVERIFY(!reachability->connectionRequired());
    service.network.flags = 0x4;
    QVERIFY(reachability->connectionRequired());
}

void TestReachability::asksTheServiceForItsTarget()
{
    FakeService service;
    Reachability::reachabilityWithHostName(service, QStringLiteral("https://x/login/"));
    QCOMPARE(service.asked, QStringLiteral("name https://x/login/"));
    Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(service.asked, QStringLiteral("address 0.0.0.0"));
}

void TestReachability::isNullWhenTheServiceHasNoSource()
{
    FakeService service;
    service.canMake = false;
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
    FakeService service;
    service.network.canSetCallback = canSetCallback;
    service.network.canSchedule = canSchedule;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QCOMPARE(reachability->startNotifier(), canSetCallback && canSchedule);
}

void TestReachability::postsItselfAfterEachChange()
{
    FakeService service;
    const auto reachability = Reachability::reachabilityForInternetConnection(service);
    QList<const void *> heard;
    auto &center = NotificationCenter::defaultCenter();
    const auto token = center.addObserver(QStringLiteral("kNetworkReachabilityChangedNotification"),
                                          [&heard](const void *object) { heard += object; });
    QVERIFY(reachability->startNotifier());
    service.network.callback();
    service.network.callback();
    center.removeObserver(token);
    service.network.callback();
    QCOMPARE(heard, QList<const void *>(2, reachability.get()));
}

void TestReachability::stopsWhenDestroyed()
{
    FakeService service;
    auto reachability = Reachability::reachabilityForInternetConnection(service);
    QVERIFY(reachability->startNotifier());
    QVERIFY(service.network.isScheduled);
    reachability.reset();
    QVERIFY(!service.network.isScheduled);
}

QUELLMOOR_TEST(TestReachability, "Reachability")
#include "tst_Reachability.moc"
