#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/CustomTouchBarView.h"
#include "ui/InterfaceLoader.h"
#include "ui/PictureView.h"
#include "ui/TouchBarButton.h"

#include <QAccessible>
#include <QTest>

namespace {

// The strip beside a launcher window, as the controller puts them together.
struct StripWorld : ViewWorld
{
    StripWorld()
        : strip(qobject_cast<CustomTouchBarView *>(
              InterfaceLoader().load(QStringLiteral("CustomTouchBar"))))
    {
        if (!strip)
            qFatal("The interface file of the strip does not make a strip.");
        strip->setServices(configuration, workspace);
        strip->awakeFromNib();
        strip->setLauncherView(view);
        strip->show();
    }

    [[nodiscard]] TouchBarButton &button(const char *name) const
    {
        auto *found = strip->findChild<TouchBarButton *>(QLatin1String(name));
        if (!found)
            qFatal("The strip has no %s.", name);
        return *found;
    }
    void press(const char *name) const { QTest::mouseClick(&button(name), Qt::LeftButton); }
    // Which of "logo" and "playButton" show.
    [[nodiscard]] QStringList shown() const
    {
        QStringList names;
        for (const char *name : {"logo", "playButton"})
            if (strip->findChild<QWidget *>(QLatin1String(name))->isVisibleTo(strip.get()))
                names += QLatin1String(name);
        return names;
    }

    const std::unique_ptr<CustomTouchBarView> strip;
};

const auto Logo = QStringList{QStringLiteral("logo")};
const auto Play = QStringList{QStringLiteral("playButton")};

} // namespace

class TestCustomTouchBarView : public QObject
{
    Q_OBJECT

private slots:
    void showsTheLogoAtFirst();
    void showsPlayInPlaceOfTheLogo();
    void opensEachLink_data();
    void opensEachLink();
    void asksForALoginWithTheTextsOfTheFields_data();
    void asksForALoginWithTheTextsOfTheFields();
    void logsInWithAFingerWhenThatIsEnabled();
    void explainsWhenTheFingerIsNotEnabled_data();
    void explainsWhenTheFingerIsNotEnabled();
    void doesNothingOnceTheLauncherViewHasGone();
    void changesEachPictureUnderTheMouse_data();
    void changesEachPictureUnderTheMouse();
    void sinksWhilePressed();
    void namesEveryButtonForAssistiveTechnology();
    void leavesTheKeyboardToTheLauncher();
    void fitsEveryCaption_data();
    void fitsEveryCaption();
    void keepsItsControlsApart();
    void survivesAnInterfaceFileWithoutOutlets();
};

void TestCustomTouchBarView::showsTheLogoAtFirst() { QCOMPARE(StripWorld().shown(), Logo); }

void TestCustomTouchBarView::showsPlayInPlaceOfTheLogo()
{
    const StripWorld world;
    world.strip->setPlayable(true);
    QCOMPARE(world.shown(), Play);
    world.strip->setPlayable(true);
    QCOMPARE(world.shown(), Play);
    world.strip->setPlayable(false);
    QCOMPARE(world.shown(), Logo);
}

void TestCustomTouchBarView::opensEachLink_data()
{
    QTest::addColumn<QString>("url");
    const std::pair<const char *, const char *> links[] = {
        {"releaseNotesButton", "https://www.test/releases/"},
        {"manageButton", "https://www.test/account/"},
        {"playersGuideButton", "https://wiki.test/wiki/Main_Page"},
        {"communityButton", "https://forum.test/"},
    };
    for (const auto &[name, url] : links)
        QTest::newRow(name) << QString::fromLatin1(url);
}

void TestCustomTouchBarView::opensEachLink()
{
    QFETCH(QString, url);
    const StripWorld world;
    world.press(QTest::currentDataTag());
    QCOMPARE(world.workspace.requests(), QStringList{QStringLiteral("url ") + url});
    QCOMPARE(world.terminations, 0);
    QCOMPARE(world.delegate.calls, QStringList());
}

void TestCustomTouchBarView::asksForALoginWithTheTextsOfTheFields_data()
{
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("password");
    QTest::newRow("both") << QStringLiteral("pat") << QStringLiteral("secret");
    QTest::newRow("neither") << QString() << QString();
}

void TestCustomTouchBarView::asksForALoginWithTheTextsOfTheFields()
{
    QFETCH(QString, username);
    QFETCH(QString, password);
    const StripWorld world;
    world.view->accountIDField()->setStringValue(username);
    world.view->passwordField()->setStringValue(password);
    world.strip->setPlayable(true);
    world.press("playButton");
    QCOMPARE(world.delegate.calls,
             QStringList{QStringLiteral("login %1|%2").arg(username, password)});
}

void TestCustomTouchBarView::logsInWithAFingerWhenThatIsEnabled()
{
    StripWorld world;
    world.localAuthentication.setTouchID(true);
    world.press("touchIDButton");
    QCOMPARE(world.delegate.calls, QStringList{QStringLiteral("login |")});
    QVERIFY(world.alertPresenter.modalAlerts.isEmpty());
}

void TestCustomTouchBarView::explainsWhenTheFingerIsNotEnabled_data()
{
    QTest::addColumn<bool>("isPossible");
    QTest::addColumn<QString>("message");
    QTest::newRow("with a reader") << true << QStringLiteral("Touch ID is not yet enabled");
    QTest::newRow("without one") << false << QStringLiteral("Touch ID is not available");
}

void TestCustomTouchBarView::explainsWhenTheFingerIsNotEnabled()
{
    QFETCH(bool, isPossible);
    StripWorld world;
    world.biometrics.evaluability.isPossible = isPossible;
    world.press("touchIDButton");
    QCOMPARE(world.alertPresenter.modalAlerts.size(), 1);
    QTEST(world.alertPresenter.modalAlerts.first().messageText, "message");
    QCOMPARE(world.delegate.calls, QStringList());
}

void TestCustomTouchBarView::doesNothingOnceTheLauncherViewHasGone()
{
    const StripWorld world;
    QCOMPARE(world.strip->launcherView(), world.view);
    delete world.view;
    QCOMPARE(world.strip->launcherView(), nullptr);
    world.press("touchIDButton");
    world.strip->playPressed(nullptr);
    QCOMPARE(world.delegate.calls, QStringList());
}

void TestCustomTouchBarView::changesEachPictureUnderTheMouse_data()
{
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("rollover");
    const std::array<const char *, 3> pictures[] = {
        {"releaseNotesButton", "touchbar_link", "touchbar_link_over"},
        {"manageButton", "touchbar_link", "touchbar_link_over"},
        {"playersGuideButton", "touchbar_link", "touchbar_link_over"},
        {"communityButton", "touchbar_link", "touchbar_link_over"},
        {"touchIDButton", "touchbar_fingerprint", "touchbar_fingerprint_over"},
        {"playButton", "touchbar_play_normal", "touchbar_play_over"},
    };
    for (const auto &[name, normal, rollover] : pictures)
        QTest::newRow(name) << QString::fromLatin1(normal) << QString::fromLatin1(rollover);
}

void TestCustomTouchBarView::changesEachPictureUnderTheMouse()
{
    const StripWorld world;
    auto &button = world.button(QTest::currentDataTag());
    QTEST(button.image().name(), "normal");
    QCOMPARE(button.size(), button.image().size());
    button.mouseEntered();
    QTEST(button.image().name(), "rollover");
    button.mouseExited();
    QTEST(button.image().name(), "normal");
}

void TestCustomTouchBarView::sinksWhilePressed()
{
    const StripWorld world;
    auto &button = world.button("communityButton");
    const QImage before = button.grab().toImage();
    button.setDown(true);
    QVERIFY(button.grab().toImage() != before);
    button.setDown(false);
    QCOMPARE(button.grab().toImage(), before);
}

void TestCustomTouchBarView::namesEveryButtonForAssistiveTechnology()
{
    const StripWorld world;
    QStringList names;
    for (QWidget *button : world.strip->findChildren<TouchBarButton *>())
        names += QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name);
    QCOMPARE(names,
             (QStringList{QStringLiteral("Play"), QStringLiteral("Log in with your fingerprint"),
                          QStringLiteral("Release notes"), QStringLiteral("Manage account"),
                          QStringLiteral("Player’s guide"), QStringLiteral("Community forum")}));
}

void TestCustomTouchBarView::leavesTheKeyboardToTheLauncher()
{
    const StripWorld world;
    for (const QWidget *widget : world.strip->findChildren<QWidget *>())
        QVERIFY2(widget->focusPolicy() == Qt::NoFocus, qPrintable(widget->objectName()));
}

void TestCustomTouchBarView::fitsEveryCaption_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("its own") << QString();
    QTest::newRow("long") << QStringLiteral("JETZT SPIELEN");
}

void TestCustomTouchBarView::fitsEveryCaption()
{
    QFETCH(QString, text);
    const StripWorld world;
    for (TouchBarButton *button : world.strip->findChildren<TouchBarButton *>()) {
        if (!text.isEmpty())
            button->setText(text);
        QVERIFY2(button->captionWidth() < button->width(), qPrintable(button->objectName()));
    }
}

void TestCustomTouchBarView::keepsItsControlsApart()
{
    const StripWorld world;
    const auto buttons = world.strip->findChildren<TouchBarButton *>();
    QCOMPARE(world.strip->size(), Picture::named(QStringLiteral("touchbar_backdrop")).size());
    for (const auto *one : buttons) {
        QVERIFY(world.strip->rect().contains(one->geometry()));
        for (const auto *other : buttons)
            QVERIFY(one == other || !one->geometry().intersects(other->geometry()));
    }
}

void TestCustomTouchBarView::survivesAnInterfaceFileWithoutOutlets()
{
    StripWorld world;
    CustomTouchBarView strip;
    strip.setServices(world.configuration, world.workspace);
    strip.awakeFromNib();
    strip.setPlayable(true);
    strip.communityPressed(nullptr);
    QCOMPARE(world.workspace.requests(), QStringList{QStringLiteral("url https://forum.test/")});
}

QUELLMOOR_TEST(TestCustomTouchBarView, "CustomTouchBarView")
#include "tst_CustomTouchBarView.moc"
