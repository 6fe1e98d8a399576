#include "TestMain.h"
#include "platform/ActivationPolicy.h"

#include <QApplication>
#include <QTest>

class TestActivationPolicy : public QObject
{
    Q_OBJECT

private slots:
    void bringsAMinimisedWindowBack();
    void leavesTheKeyboardToWindowsThatWantIt();
};

void TestActivationPolicy::bringsAMinimisedWindowBack()
{
    QWidget window;
    window.showMinimized();
    QVERIFY(window.isMinimized());
    makeActivationPolicy()->activateIgnoringOtherApps();
    QVERIFY(!window.isMinimized());
    QTRY_VERIFY(window.isActiveWindow());
}

void TestActivationPolicy::leavesTheKeyboardToWindowsThatWantIt()
{
    QWidget window;
    window.show();
    QWidget strip(&window, Qt::Tool | Qt::WindowDoesNotAcceptFocus);
    QWidget earlierStrip(nullptr, Qt::Tool | Qt::WindowDoesNotAcceptFocus);
    strip.show();
    earlierStrip.show();
    makeActivationPolicy()->activateIgnoringOtherApps();
    QTRY_VERIFY(window.isActiveWindow());
    QCOMPARE(QApplication::activeWindow(), &window);
}

QUELLMOOR_TEST(TestActivationPolicy, "ActivationPolicy")
#include "tst_ActivationPolicy.moc"
