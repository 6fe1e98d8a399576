#include "TestMain.h"
#include "platform/linux/RouteReachability.h"

#include <QCoreApplication>
#include <QTest>

#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// Routes as the test sets them, which tell of a change through a descriptor like the kernel's.
class FakeRoutes final : public Routes
{
public:
    struct Network
    {
        std::optional<bool> leadsOut = true;
        int changes = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);

        void changeTo(std::optional<bool> newLeadsOut)
        {
            leadsOut = newLeadsOut;
            eventfd_write(changes, 1);
        }
    };

    explicit FakeRoutes(Network &network) : m_network(network) {}

    std::optional<bool> leadOut() override { return m_network.leadsOut; }
    int changes() const override { return m_network.changes; }
    void forgetChanges() override
    {
        eventfd_t count = 0;
        eventfd_read(m_network.changes, &count);
    }

private:
    Network &m_network;
};

} // namespace

class TestRouteReachability : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void isReachableWhileRoutesLeadOut();
    void callsWhenTheFlagsHaveBecomeOthers();
    void isSilentAboutChangesThatMakeNoDifference();
    void isSilentBeforeAndAfterItsTime();
    void mayBeEndedByItsOwnCall();
    void cannotBeScheduledWithoutADescriptor();
    void asksTheKernel();

private:
    // How often it has called after everything that has come was worked off.
    [[nodiscard]] int calls() const
    {
        for (int turn = 0; turn < 3; ++turn)
            QCoreApplication::processEvents();
        return m_calls;
    }

    FakeRoutes::Network m_network;
    std::unique_ptr<RouteReachability> m_source;
    int m_calls = 0;
};

void TestRouteReachability::init()
{
    m_network = {};
    m_calls = 0;
    m_source = std::make_unique<RouteReachability>(std::make_unique<FakeRoutes>(m_network));
    QVERIFY(m_source->setCallback([this] { ++m_calls; }));
}

void TestRouteReachability::cleanup()
{
    m_source.reset();
    close(m_network.changes);
}

void TestRouteReachability::isReachableWhileRoutesLeadOut()
{
    QCOMPARE(m_source->flags(), std::optional(ReachabilitySource::Reachable));
    m_network.leadsOut = false;
    QCOMPARE(m_source->flags(), std::optional(ReachabilitySource::Flags(0)));
    m_network.leadsOut.reset();
    QCOMPARE(m_source->flags(), std::nullopt);
}

void TestRouteReachability::callsWhenTheFlagsHaveBecomeOthers()
{
    QVERIFY(m_source->schedule());
    m_network.changeTo(false);
    QCOMPARE(calls(), 1);
    m_network.changeTo(true);
    QCOMPARE(calls(), 2);
    m_network.changeTo(std::nullopt);
    QCOMPARE(calls(), 3);
}

void TestRouteReachability::isSilentAboutChangesThatMakeNoDifference()
{
    QVERIFY(m_source->schedule());
    m_network.changeTo(true);
    QCOMPARE(calls(), 0);
    m_network.changeTo(false);
    m_network.changeTo(true);
    QCOMPARE(calls(), 0);
}

void TestRouteReachability::isSilentBeforeAndAfterItsTime()
{
    m_network.changeTo(false);
    QCOMPARE(calls(), 0);
    QVERIFY(m_source->schedule());
    QCOMPARE(calls(), 0);
    m_source->unschedule();
    m_network.changeTo(true);
    QCOMPARE(calls(), 0);
}

void TestRouteReachability::mayBeEndedByItsOwnCall()
{
    QVERIFY(m_source->setCallback([this] {
        ++m_calls;
        m_source->unschedule();
    }));
    QVERIFY(m_source->schedule());
    m_network.changeTo(false);
    QCOMPARE(calls(), 1);
    m_network.changeTo(true);
    QCOMPARE(calls(), 1);
}

void TestRouteReachability::cannotBeScheduledWithoutADescriptor()
{
    close(std::exchange(m_network.changes, -1));
    QVERIFY(!m_source->setCallback([] {}));
    QVERIFY(!m_source->schedule());
}

void TestRouteReachability::asksTheKernel()
{
    const auto routes = makeRoutes();
    QVERIFY(routes->leadOut());
    QVERIFY(routes->changes() >= 0);
    routes->forgetChanges();
}

QUELLMOOR_TEST(TestRouteReachability, "RouteReachability")
#include "tst_RouteReachability.moc"
