#include "FakeFprint.h"
#include "TestMain.h"
#include "platform/DispatchQueue.h"
#include "platform/ReachabilitySource.h"
#include "platform/linux/RouteReachability.h"

#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QTest>

// The service on a system bus of the test's own, which has no NetworkManager.
class TestReachabilityService : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void goesByTheRoutesWithoutNetworkManager();
    void goesByTheRoutesWithoutABus();
    void doesNotWaitForABusThatHangs();
    void callsNobodyAfterItsEnd();

private:
    // Asks; m_isReady becomes true later.
    void ask();
    void verifyItGoesByTheRoutes();

    PrivateBus &m_bus = PrivateBus::shared();
    std::unique_ptr<ReachabilityService> m_service;
    bool m_isReady = false;
};

void TestReachabilityService::init()
{
    m_isReady = false;
    m_service = makeReachabilityService();
}

void TestReachabilityService::cleanup()
{
    m_service.reset();
    m_bus.stop();
    QVERIFY(QFile::remove(m_bus.socket()) || !QFile::exists(m_bus.socket()));
}

void TestReachabilityService::ask()
{
    m_service->whenReady([this] { m_isReady = true; });
}

void TestReachabilityService::verifyItGoesByTheRoutes()
{
    const auto source = m_service->sourceForName(QStringLiteral("any"));
    QVERIFY(dynamic_cast<RouteReachability *>(source.get()));
}

void TestReachabilityService::goesByTheRoutesWithoutNetworkManager()
{
    m_bus.start();
    ask();
    QTRY_VERIFY(m_isReady);
    verifyItGoesByTheRoutes();
}

void TestReachabilityService::goesByTheRoutesWithoutABus()
{
    ask();
    QTRY_VERIFY(m_isReady);
    verifyItGoesByTheRoutes();
}

void TestReachabilityService::doesNotWaitForABusThatHangs()
{
    // It lets clients in and then says nothing.
    QLocalServer silentBus;
    QVERIFY(silentBus.listen(m_bus.socket()));
    ask();
    QVERIFY(!m_isReady);
    QTRY_VERIFY(silentBus.hasPendingConnections());
    QTRY_VERIFY(m_isReady);
    verifyItGoesByTheRoutes();

    // What comes now comes too late.
    m_isReady = false;
    delete silentBus.nextPendingConnection();
    silentBus.close();
    QTRY_VERIFY(DispatchQueue::drain(0));
    QCoreApplication::processEvents();
    QVERIFY(!m_isReady);
}

void TestReachabilityService::callsNobodyAfterItsEnd()
{
    m_bus.start();
    ask();
    m_service.reset();
    QTRY_VERIFY(DispatchQueue::drain(0));
    QCoreApplication::processEvents();
    QVERIFY(!m_isReady);
}

QUELLMOOR_TEST(TestReachabilityService, "ReachabilityService")
#include "tst_ReachabilityService.moc"
