#include "TestMain.h"
#include "app/Application.h"
#include "platform/DispatchQueue.h"

#include <QObject>
#include <QTest>

class TestApplication : public QObject
{
    Q_OBJECT

private slots:
    void letsBlocksThatNobodyRunsGo();
};

// What a block holds may post an event when it goes. Qt itself would wait for itself then.
void TestApplication::letsBlocksThatNobodyRunsGo()
{
    bool hasRun = false;
    std::shared_ptr<QObject> held(new QObject, [](QObject *object) { object->deleteLater(); });
    const std::weak_ptr<QObject> observed = held;
    DispatchQueue::main()->async([held = std::exchange(held, nullptr), &hasRun] { hasRun = true; });
    QVERIFY(!observed.expired());
    QCOMPARE(Application::end(5), 5);
    QVERIFY(observed.expired());
    QVERIFY(!hasRun);
}

QUELLMOOR_TEST(TestApplication, "Application")
#include "tst_Application.moc"
