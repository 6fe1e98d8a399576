#include "TestMain.h"
#include "app/AppDelegate.h"
#include "platform/SharedApplication.h"

#include <QTest>

#include <tuple>

namespace {

using Version = std::tuple<int, int, int>;

// A system of some version; the menu item is off until somebody asks for it.
class FakeSystem final : public SharedApplication
{
public:
    explicit FakeSystem(Version version) : m_version(version) {}

    bool isSystemAtLeast(int major, int minor, int patch) const override
    {
        return m_version >= Version(major, minor, patch);
    }
    void setAutomaticCustomizeTouchBarMenuItemEnabled(bool isEnabled) override
    {
        hasMenuItem = isEnabled;
    }

    bool hasMenuItem = false;

private:
    const Version m_version;
};

} // namespace

class TestAppDelegate : public QObject
{
    Q_OBJECT

private slots:
    void offersTheTouchBarMenuFromItsFirstSystemOn_data();
    void offersTheTouchBarMenuFromItsFirstSystemOn();
};

void TestAppDelegate::offersTheTouchBarMenuFromItsFirstSystemOn_data()
{
    QTest::addColumn<int>("major");
    QTest::addColumn<int>("minor");
    QTest::addColumn<int>("patch");
    QTest::addColumn<bool>("hasMenuItem");
    QTest::newRow("10.11.6") << 10 << 11 << 6 << false;
    QTest::newRow("10.12.0") << 10 << 12 << 0 << false;
    QTest::newRow("10.12.1") << 10 << 12 << 1 << true;
    QTest::newRow("11.0.0") << 11 << 0 << 0 << true;
}

void TestAppDelegate::offersTheTouchBarMenuFromItsFirstSystemOn()
{
    QFETCH(int, major);
    QFETCH(int, minor);
    QFETCH(int, patch);
    FakeSystem system({major, minor, patch});
    AppDelegate(system).applicationDidFinishLaunching();
    QTEST(system.hasMenuItem, "hasMenuItem");
}

QUELLMOOR_TEST(TestAppDelegate, "AppDelegate")
#include "tst_AppDelegate.moc"
