// The Touch Bar: the bar, its item, and when its strip offers play.
#include "ControllerWorld.h"
#include "TestMain.h"
#include "ui/CustomTouchBarView.h"
#include "ui/PictureView.h"
#include "ui/RolloverButton.h"

#include <QDir>
#include <QResource>
#include <QTest>

namespace {

const auto ItemIdentifier = QStringLiteral("com.TouchBarCatalog.customView");

// The interface files of the launcher are missing while it lives.
class NoInterfaces
{
public:
    NoInterfaces();
    ~NoInterfaces();
    NoInterfaces(const NoInterfaces &) = delete;
    NoInterfaces &operator=(const NoInterfaces &) = delete;
};

// Another set of interface files is there while it lives.
class OtherInterfaces
{
public:
    explicit OtherInterfaces(const char *file) : m_path(QString::fromLatin1(file))
    {
        if (!QResource::registerResource(m_path))
            qFatal("Cannot read %s.", file);
    }
    ~OtherInterfaces() { QResource::unregisterResource(m_path); }
    OtherInterfaces(const OtherInterfaces &) = delete;
    OtherInterfaces &operator=(const OtherInterfaces &) = delete;

private:
    const QString m_path;
};

} // namespace

// The macros want to stand outside of any namespace.
static void removeInterfaces() { Q_CLEANUP_RESOURCE(interfaces); }
static void restoreInterfaces() { Q_INIT_RESOURCE(interfaces); }

NoInterfaces::NoInterfaces() { removeInterfaces(); }
NoInterfaces::~NoInterfaces() { restoreInterfaces(); }

class TestTouchBar : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void describesTheBar();
    void makesTheItemWhateverItIsAskedFor_data();
    void makesTheItemWhateverItIsAskedFor();
    void startsWithTheLogo();
    void offersPlayByTheFieldsOrTheFinger_data();
    void offersPlayByTheFieldsOrTheFinger();
    void followsWhatThePlayerTypes();
    void showsTheLogoAfterEachStart();
    void forgetsAnEarlierStrip();
    void goesOnWithoutABar();
    void forgetsAStripThatHasGone();
    void sendsPlayWithEmptyFieldsOn();
    void asksForAFingerFromTheStrip();
    void makesNoItemWithoutItsInterfaceFile();
    void makesNoItemFromAFileWithoutAStrip();
    void resetsTheFingerprintLogin_data();
    void resetsTheFingerprintLogin();

private:
    std::unique_ptr<CustomTouchBarItem> makeItem(const QString &identifier = ItemIdentifier)
    {
        return m_world->controller->touchBarMakeItemForIdentifier(
            m_world->controller->makeTouchBar(), identifier);
    }
    static CustomTouchBarView &stripOf(const CustomTouchBarItem &item)
    {
        return static_cast<CustomTouchBarView &>(*item.view());
    }
    static bool offersPlay(const CustomTouchBarView &strip)
    {
        const bool isPlayShown =
            strip.findChild<RolloverButton *>(QStringLiteral("playButton"))->isVisibleTo(&strip);
        const bool isLogoShown =
            strip.findChild<PictureView *>(QStringLiteral("logo"))->isVisibleTo(&strip);
        if (isPlayShown == isLogoShown)
            qFatal("The strip shows both the logo and play, or neither.");
        return isPlayShown;
    }

    std::unique_ptr<ControllerWorld> m_world;
};

void TestTouchBar::init()
{
    m_world = std::make_unique<ControllerWorld>();
    m_world->publish({});
}

void TestTouchBar::cleanup() { m_world.reset(); }

void TestTouchBar::describesTheBar()
{
    const TouchBar bar = m_world->controller->makeTouchBar();
    QCOMPARE(bar.delegate, m_world->controller.get());
    QCOMPARE(bar.customizationIdentifier,
             QStringLiteral("com.TouchBarCatalog.customViewViewController"));
    QCOMPARE(bar.defaultItemIdentifiers,
             (QStringList{ItemIdentifier, TouchBar::otherItemsProxyIdentifier()}));
    QCOMPARE(bar.customizationAllowedItemIdentifiers, QStringList{ItemIdentifier});
    QCOMPARE(m_world->controller->touchBarViewOrNil(), nullptr);
}

void TestTouchBar::makesTheItemWhateverItIsAskedFor_data()
{
    QTest::addColumn<QString>("identifier");
    QTest::newRow("the item") << ItemIdentifier;
    QTest::newRow("unknown") << QStringLiteral("org.example.unknown");
    QTest::newRow("the system's") << TouchBar::otherItemsProxyIdentifier();
    QTest::newRow("empty") << QString();
}

void TestTouchBar::makesTheItemWhateverItIsAskedFor()
{
    QFETCH(QString, identifier);
    const auto item = makeItem(identifier);
    QVERIFY(item);
    QCOMPARE(item->identifier(), ItemIdentifier);
    QCOMPARE(item->customizationLabel(), QStringLiteral("VARNO"));
    QVERIFY(qobject_cast<CustomTouchBarView *>(item->view()));
    QCOMPARE(item->view(), m_world->controller->touchBarViewOrNil());
    QCOMPARE(stripOf(*item).launcherView(), m_world->view);
}

void TestTouchBar::startsWithTheLogo()
{
    m_world->localAuthentication->setTouchID(true);
    QVERIFY(!offersPlay(stripOf(*makeItem())));
}

void TestTouchBar::offersPlayByTheFieldsOrTheFinger_data()
{
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("password");
    QTest::addColumn<bool>("isTouchIDEnabled");
    QTest::addColumn<bool>("offersPlay");
    const auto add = [](const char *name, const char *username, const char *password,
                        bool isTouchIDEnabled, bool isExpected) {
        QTest::newRow(name) << QString::fromLatin1(username) << QString::fromLatin1(password)
                            << isTouchIDEnabled << isExpected;
    };
    add("both", "pat", "secret", false, true);
    add("both and a finger", "pat", "secret", true, true);
    add("name only", "pat", "", false, false);
    add("name and a finger", "pat", "", true, true);
    add("password only", "", "secret", false, false);
    add("password and a finger", "", "secret", true, true);
    add("neither", "", "", false, false);
    add("a finger only", "", "", true, true);
}

void TestTouchBar::offersPlayByTheFieldsOrTheFinger()
{
    QFETCH(QString, username);
    QFETCH(QString, password);
    QFETCH(bool, isTouchIDEnabled);
    QFETCH(bool, offersPlay);
    const auto item = makeItem();
    stripOf(*item).setPlayable(!offersPlay);
    m_world->localAuthentication->setTouchID(isTouchIDEnabled);
    m_world->controller->textFieldUpdate(username, password);
    QCOMPARE(TestTouchBar::offersPlay(stripOf(*item)), offersPlay);
}

void TestTouchBar::followsWhatThePlayerTypes()
{
    m_world->start();
    const auto item = makeItem();
    const CustomTouchBarView &strip = stripOf(*item);
    QTest::keyClicks(m_world->view->accountIDField(), QStringLiteral("pat"));
    QVERIFY(!offersPlay(strip));
    QTest::keyClick(m_world->view->passwordField(), Qt::Key_S);
    QVERIFY(offersPlay(strip));
    QTest::keyClick(m_world->view->passwordField(), Qt::Key_Backspace);
    QVERIFY(!offersPlay(strip));
}

void TestTouchBar::showsTheLogoAfterEachStart()
{
    m_world->start();
    const auto item = makeItem();
    stripOf(*item).setPlayable(true);
    m_world->localAuthentication->setTouchID(true);
    m_world->controller->setup();
    QVERIFY(!offersPlay(stripOf(*item)));
}

void TestTouchBar::forgetsAnEarlierStrip()
{
    const auto earlier = makeItem();
    const auto later = makeItem();
    QCOMPARE(m_world->controller->touchBarViewOrNil(), &stripOf(*later));
    m_world->controller->textFieldUpdate(QStringLiteral("pat"), QStringLiteral("secret"));
    QVERIFY(!offersPlay(stripOf(*earlier)));
    QVERIFY(offersPlay(stripOf(*later)));
}

void TestTouchBar::goesOnWithoutABar()
{
    m_world->start();
    m_world->controller->textFieldUpdate(QStringLiteral("pat"), QStringLiteral("secret"));
    m_world->controller->setup();
    QCOMPARE(m_world->controller->touchBarViewOrNil(), nullptr);
    QVERIFY(m_world->view->isPlayButtonEnabled());
}

void TestTouchBar::forgetsAStripThatHasGone()
{
    makeItem().reset();
    QCOMPARE(m_world->controller->touchBarViewOrNil(), nullptr);
    m_world->controller->textFieldUpdate(QStringLiteral("pat"), QStringLiteral("secret"));
}

void TestTouchBar::sendsPlayWithEmptyFieldsOn()
{
    m_world->start();
    const auto item = makeItem();
    stripOf(*item).setPlayable(true);
    QTest::mouseClick(stripOf(*item).findChild<RolloverButton *>(QStringLiteral("playButton")),
                      Qt::LeftButton);
    QTRY_COMPARE(m_world->status(), QStringLiteral("You must enter a Username and Password."));
    QCOMPARE(m_world->requestCount("/login/"), 0);
}

void TestTouchBar::asksForAFingerFromTheStrip()
{
    m_world->start();
    m_world->biometrics.evaluability.isPossible = true;
    m_world->localAuthentication->setTouchID(true);
    const auto item = makeItem();
    QTest::mouseClick(stripOf(*item).findChild<RolloverButton *>(QStringLiteral("touchIDButton")),
                      Qt::LeftButton);
    QCOMPARE(m_world->biometrics.reasons, QStringList{QStringLiteral("Login to Quellmoor")});
}

void TestTouchBar::makesNoItemWithoutItsInterfaceFile()
{
    const auto earlier = makeItem();
    {
        const NoInterfaces noInterfaces;
        QVERIFY(!makeItem());
    }
    QCOMPARE(m_world->log.lines(),
             QStringList{QStringLiteral("Couldn't load nib named CustomTouchBar")});
    QCOMPARE(m_world->controller->touchBarViewOrNil(), &stripOf(*earlier));
    m_world->controller->textFieldUpdate(QStringLiteral("pat"), QStringLiteral("secret"));
    QVERIFY(offersPlay(stripOf(*earlier)));
}

void TestTouchBar::makesNoItemFromAFileWithoutAStrip()
{
    const auto earlier = makeItem();
    {
        const NoInterfaces noInterfaces;
        const OtherInterfaces others(QUELLMOOR_TOUCHBAR_WITHOUT_VIEW);
        QVERIFY(!makeItem());
    }
    QCOMPARE(m_world->log.lines(), QStringList());
    QCOMPARE(m_world->controller->touchBarViewOrNil(), &stripOf(*earlier));
}

void TestTouchBar::resetsTheFingerprintLogin_data()
{
    QTest::addColumn<bool>("isPossible");
    QTest::newRow("with a reader") << true;
    QTest::newRow("without one") << false;
}

void TestTouchBar::resetsTheFingerprintLogin()
{
    QFETCH(bool, isPossible);
    m_world->biometrics.evaluability.isPossible = isPossible;
    m_world->localAuthentication->setTouchID(true);
    m_world->localAuthentication->setHasAskedUserForTouchID(true);
    m_world->controller->enableTouchID(nullptr);
    QVERIFY(m_world->alerts.modalAlerts.isEmpty());
    QTRY_COMPARE(m_world->alerts.modalAlerts.size(), 1);
    QCOMPARE(m_world->alerts.modalAlerts.first().messageText,
             QStringLiteral("Touch ID Has Been Reset"));
    QVERIFY(!m_world->localAuthentication->isTouchIDEnabled());
    QVERIFY(!m_world->localAuthentication->hasAskedUserForTouchID());
}

QUELLMOOR_TEST(TestTouchBar, "TouchBar")
#include "tst_TouchBar.moc"
