#include "LogCapture.h"
#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/RolloverButton.h"
#include "ui/TextLabel.h"
#include "ui/VARNOProgressView.h"

#include <QEnterEvent>
#include <QPainter>
#include <QTest>

#include <thread>

namespace {

QStringList formControls()
{
    return {QStringLiteral("passwordField"),       QStringLiteral("accountIDField"),
            QStringLiteral("playButton"),          QStringLiteral("forgotPasswordButton"),
            QStringLiteral("accountPasswordView"), QStringLiteral("createAccountButton")};
}

QStringList progressControls()
{
    return {QStringLiteral("patcherProgressBar"), QStringLiteral("progressFrameView")};
}

QStringList otherControls()
{
    return {QStringLiteral("minimizeButton"),     QStringLiteral("closeButton"),
            QStringLiteral("serverVersionLabel"), QStringLiteral("launcherVersionLabel"),
            QStringLiteral("statusLabel"),        QStringLiteral("websiteButton"),
            QStringLiteral("supportButton"),      QStringLiteral("communityButton"),
            QStringLiteral("manageButton"),       QStringLiteral("playersGuideButton"),
            QStringLiteral("releaseNotesButton"), QStringLiteral("newsView"),
            QStringLiteral("backgroundImage")};
}

class RecordingListener final : public DecisionListener
{
public:
    void use() override { ++uses; }
    int uses = 0;
};

// Counts how often text fields lose the keyboard, and how often somebody is told of it.
class FieldsAtTheEnd final : public QObject
{
public:
    explicit FieldsAtTheEnd(const QList<TextField *> &fields)
    {
        for (TextField *field : fields)
            field->installEventFilter(this);
    }
    bool eventFilter(QObject *field, QEvent *event) override
    {
        if (event->type() == QEvent::FocusOut) {
            ++heard;
            told += static_cast<TextField *>(field)->delegate() ? 1 : 0;
        }
        return false;
    }
    int heard = 0;
    int told = 0;
};

} // namespace

class TestLauncherView : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_world = std::make_unique<ViewWorld>(); }
    void cleanup() { m_world.reset(); }

    void showsItsVersionsAndTheLoginForm();
    void asksForTheNewsOnceItIsOnTheScreen();
    void loadsTheNewsAnew();
    void fillsItsPlaceWithNothing();

    void setsTheStatusLaterOnTheMainThread();
    void setsStatusesFromOtherThreadsInTheirOrder();
    void showsTheServerVersionAtOnce();
    void switchesBetweenFormAndProgress();
    void neverHidesAnythingElse();
    void endsWithTheFormAfterHidingAndPreparingFromAnotherThread();
    void takesTheKeyboardFromTheFieldsEitherWay();
    void leavesTheKeyboardToNoControlWhenTheFormIsHidden();
    void preparesForLoginWithTheLabelAtOnce();

    void shiftsThePictureOfPlayOnly();
    void restoresTheNormalPictureNotTheHoveredOne();
    void keepsThePlainFlagWithoutChangingTheButton();

    void returnInTheAccountFieldMovesToThePassword();
    void returnInThePasswordFieldLogsInEvenWhilePlayIsDisabled();
    void tabOutOfThePasswordFieldDoesNotLogIn();
    void tellsBothTextsAtEachKeystroke();
    void ignoresReturnFromTheStatusLine();
    void logsReturnFromAnUnknownField();
    void livesWithoutADelegate();
    void hearsNothingFromItsFieldsWhenItEnds();

    void usesOnlyTheNewsPageItself_data();
    void usesOnlyTheNewsPageItself();

    void pressesPlayForTouchIDWhenEnabled();
    void explainsThatTouchIDIsNotYetEnabledAndForgetsThatItAsked();
    void explainsThatTouchIDIsNotAvailable();

    void canBeMinimised();

private:
    [[nodiscard]] TextField &account() const { return *m_world->view->accountIDField(); }
    [[nodiscard]] TextField &password() const { return *m_world->view->passwordField(); }
    [[nodiscard]] QString text(const char *label) const
    {
        return m_world->child<TextLabel>(label).stringValue();
    }

    std::unique_ptr<ViewWorld> m_world;
};

void TestLauncherView::showsItsVersionsAndTheLoginForm()
{
    QCoreApplication::setApplicationVersion(QStringLiteral("3.14"));
    const ViewWorld world;
    QCOMPARE(world.child<TextLabel>("launcherVersionLabel").stringValue(),
             QStringLiteral("Launcher v3.14"));
    QCOMPARE(world.visible(formControls()), formControls());
    QCOMPARE(world.visible(progressControls()), QStringList());
    QVERIFY(!world.view->swordsmenImage()->isVisibleTo(world.view));
    QVERIFY(world.view->isPlayButtonEnabled());
    const auto &status = world.child<TextLabel>("statusLabel");
    QVERIFY(!status.usesSingleLineMode() && status.wraps() && !status.isScrollable());
    QCOMPARE(status.delegate(), static_cast<TextFieldDelegate *>(world.view));
}

void TestLauncherView::asksForTheNewsOnceItIsOnTheScreen()
{
    const auto &news = m_world->child<NewsView>("newsView");
    QCOMPARE(news.url(), QUrl(QStringLiteral("https://account.test/launcher/")));
    QVERIFY(!news.drawsBackground());
    QVERIFY(!news.page());
    m_world->showWindow();
    QVERIFY(m_world->window.focusWidget() == &account());
    QTRY_COMPARE(m_world->loadedPages,
                 QStringList{QStringLiteral("https://account.test/launcher/")});
}

void TestLauncherView::loadsTheNewsAnew()
{
    m_world->showWindow();
    QTRY_COMPARE(m_world->loadedPages.size(), 1);
    m_world->view->downloadNews();
    QCOMPARE(m_world->loadedPages.size(), 2);
}

void TestLauncherView::fillsItsPlaceWithNothing()
{
    LauncherView view;
    view.resize(20, 20);
    QImage picture(20, 20, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::red);
    view.render(&picture, {}, {}, {});
    QImage empty(20, 20, QImage::Format_ARGB32_Premultiplied);
    empty.fill(Qt::transparent);
    QCOMPARE(picture, empty);
}

void TestLauncherView::setsTheStatusLaterOnTheMainThread()
{
    m_world->view->setStatus(QStringLiteral("first"));
    QVERIFY(text("statusLabel") != QStringLiteral("first"));
    ViewWorld::runMainQueue();
    QCOMPARE(text("statusLabel"), QStringLiteral("first"));
}

void TestLauncherView::setsStatusesFromOtherThreadsInTheirOrder()
{
    std::thread([this] {
        for (int i = 1; i <= 100; ++i)
            m_world->view->setStatus(QString::number(i));
    }).join();
    ViewWorld::runMainQueue();
    QCOMPARE(text("statusLabel"), QStringLiteral("100"));
}

void TestLauncherView::showsTheServerVersionAtOnce()
{
    m_world->view->setServerVersion(QStringLiteral("2.1 %1"));
    QCOMPARE(text("serverVersionLabel"), QStringLiteral("Server v2.1 %1"));
}

void TestLauncherView::switchesBetweenFormAndProgress()
{
    m_world->view->hideLoginForm(true);
    QCOMPARE(m_world->visible(formControls()), formControls());
    ViewWorld::runMainQueue();
    QCOMPARE(m_world->visible(formControls()), QStringList());
    QCOMPARE(m_world->visible(progressControls()), progressControls());
    m_world->view->hideLoginForm(false);
    ViewWorld::runMainQueue();
    QCOMPARE(m_world->visible(formControls()), formControls());
    QCOMPARE(m_world->visible(progressControls()), QStringList());
}

void TestLauncherView::neverHidesAnythingElse()
{
    for (const bool hide : {true, false}) {
        m_world->view->hideLoginForm(hide);
        ViewWorld::runMainQueue();
        QCOMPARE(m_world->visible(otherControls()), otherControls());
    }
}

void TestLauncherView::endsWithTheFormAfterHidingAndPreparingFromAnotherThread()
{
    std::thread([this] { m_world->view->hideLoginForm(true); }).join();
    m_world->view->prepareForLogin();
    ViewWorld::runMainQueue();
    QCOMPARE(m_world->visible(formControls()), formControls());
    QCOMPARE(m_world->visible(progressControls()), QStringList());
}

void TestLauncherView::takesTheKeyboardFromTheFieldsEitherWay()
{
    m_world->showWindow();
    for (const bool hide : {false, true, false})
        for (TextField *field : {&account(), &password()}) {
            field->becomeFirstResponder();
            m_world->view->hideLoginForm(hide);
            ViewWorld::runMainQueue();
            QVERIFY(!account().hasFocus() && !password().hasFocus());
        }
}

void TestLauncherView::leavesTheKeyboardToNoControlWhenTheFormIsHidden()
{
    m_world->showWindow();
    for (const char *name : {"playButton", "accountIDField"}) {
        m_world->view->hideLoginForm(false);
        ViewWorld::runMainQueue();
        m_world->child<QWidget>(name).setFocus();
        m_world->view->hideLoginForm(true);
        ViewWorld::runMainQueue();
        // What Qt asks for when it looks for somebody to give the keyboard to.
        QCOMPARE(m_world->window.focusWidget(), &m_world->window);
    }
}

void TestLauncherView::preparesForLoginWithTheLabelAtOnce()
{
    m_world->view->hideLoginForm(true);
    ViewWorld::runMainQueue();
    m_world->view->prepareForLogin();
    QCOMPARE(text("statusLabel"), QStringLiteral("Login"));
    QCOMPARE(m_world->visible(formControls()), QStringList());
    ViewWorld::runMainQueue();
    QCOMPARE(m_world->visible(formControls()), formControls());
}

void TestLauncherView::shiftsThePictureOfPlayOnly()
{
    auto &play = m_world->child<RolloverButton>("playButton");
    m_world->view->setPlayButtonEnabled(false);
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    QCOMPARE(play.image().name(), QStringLiteral("PLAY_DISABLED"));
    QVERIFY(!play.isRolloverEnabled());
    QVERIFY(play.isEnabled());
    m_world->showWindow();
    QTest::mouseClick(&play, Qt::LeftButton);
    QCOMPARE(m_world->delegate.calls, QStringList{QStringLiteral("login |")});
}

void TestLauncherView::restoresTheNormalPictureNotTheHoveredOne()
{
    auto &play = m_world->child<RolloverButton>("playButton");
    play.mouseEntered();
    QCOMPARE(play.image().name(), QStringLiteral("PLAY_ROLLOVER"));
    m_world->view->setPlayButtonEnabled(false);
    m_world->view->setPlayButtonEnabled(true);
    QCOMPARE(play.image().name(), QStringLiteral("PLAY_NORMAL"));
    QVERIFY(play.isRolloverEnabled());
}

void TestLauncherView::keepsThePlainFlagWithoutChangingTheButton()
{
    m_world->view->setIsPlayButtonEnabled(false);
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->child<RolloverButton>("playButton").image().name(),
             QStringLiteral("PLAY_NORMAL"));
}

void TestLauncherView::returnInTheAccountFieldMovesToThePassword()
{
    m_world->showWindow();
    account().becomeFirstResponder();
    QTest::keyClick(&account(), Qt::Key_Return);
    QVERIFY(password().hasFocus());
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherView::returnInThePasswordFieldLogsInEvenWhilePlayIsDisabled()
{
    m_world->showWindow();
    m_world->view->setPlayButtonEnabled(false);
    account().setStringValue(QStringLiteral("pat"));
    password().setStringValue(QStringLiteral("secret"));
    password().becomeFirstResponder();
    QTest::keyClick(&password(), Qt::Key_Return);
    QCOMPARE(m_world->delegate.calls, QStringList{QStringLiteral("login pat|secret")});
}

void TestLauncherView::tabOutOfThePasswordFieldDoesNotLogIn()
{
    m_world->showWindow();
    password().becomeFirstResponder();
    QTest::keyClick(&password(), Qt::Key_Tab);
    QVERIFY(!password().hasFocus());
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherView::tellsBothTextsAtEachKeystroke()
{
    QTest::keyClicks(&account(), QStringLiteral("ab"));
    QTest::keyClick(&password(), Qt::Key_X);
    QCOMPARE(m_world->delegate.calls,
             (QStringList{QStringLiteral("update a|"), QStringLiteral("update ab|"),
                          QStringLiteral("update ab|x")}));
}

void TestLauncherView::ignoresReturnFromTheStatusLine()
{
    const LogCapture log;
    m_world->view->controlTextDidEndEditing(&m_world->child<TextLabel>("statusLabel"),
                                            TextMovement::Return);
    QCOMPARE(log.lines(), QStringList());
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherView::logsReturnFromAnUnknownField()
{
    const LogCapture log;
    TextField other;
    m_world->view->controlTextDidEndEditing(&other, TextMovement::Tab);
    m_world->view->controlTextDidEndEditing(&other, TextMovement::Return);
    QCOMPARE(log.lines(), QStringList{QStringLiteral(
                              "Did you add a new textfield? This should not be called.")});
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherView::livesWithoutADelegate()
{
    m_world->view->setDelegate(nullptr);
    QTest::keyClicks(&account(), QStringLiteral("a"));
    m_world->view->playPressed(nullptr);
    QCOMPARE(m_world->delegate.calls, QStringList());
}

// A view that is a window loses the keyboard while it is taken down.
void TestLauncherView::hearsNothingFromItsFieldsWhenItEnds()
{
    LauncherView *const view = m_world->view;
    view->setParent(nullptr);
    view->show();
    view->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(view));
    account().becomeFirstResponder();
    QVERIFY(account().hasFocus());
    const FieldsAtTheEnd fields({&account(), &password()});
    delete view;
    QCOMPARE(fields.heard, 1);
    QCOMPARE(fields.told, 0);
}

void TestLauncherView::usesOnlyTheNewsPageItself_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("isUsed");
    const QString news = QStringLiteral("https://account.test/launcher/");
    QTest::newRow("the page") << news << true;
    QTest::newRow("with a query") << news + QStringLiteral("?a=1") << false;
    QTest::newRow("with an empty query") << news + QStringLiteral("?") << false;
    QTest::newRow("with a fragment") << news + QStringLiteral("#top") << false;
    QTest::newRow("without its slash") << QStringLiteral("https://account.test/launcher") << false;
    QTest::newRow("not encrypted") << QStringLiteral("http://account.test/launcher/") << false;
    QTest::newRow("other port") << QStringLiteral("https://account.test:444/launcher/") << false;
    QTest::newRow("other host") << QStringLiteral("https://www.test/launcher/") << false;
    QTest::newRow("below") << news + QStringLiteral("more") << false;
    QTest::newRow("with a user") << QStringLiteral("https://me@account.test/launcher/") << false;
    QTest::newRow("mail") << QStringLiteral("mailto:help@www.test") << false;
}

void TestLauncherView::usesOnlyTheNewsPageItself()
{
    QFETCH(QString, url);
    QFETCH(bool, isUsed);
    RecordingListener listener;
    m_world->view->webViewDecidePolicyForNavigationAction(QUrl(url), listener);
    QCOMPARE(listener.uses, isUsed ? 1 : 0);
    QCOMPARE(m_world->workspace.requests(),
             isUsed ? QStringList() : QStringList{QStringLiteral("url ") + url});
}

void TestLauncherView::pressesPlayForTouchIDWhenEnabled()
{
    m_world->localAuthentication.setTouchID(true);
    m_world->view->touchIdPressed();
    QCOMPARE(m_world->delegate.calls, QStringList{QStringLiteral("login |")});
    QCOMPARE(m_world->alertPresenter.modalAlerts.size(), 0);
}

void TestLauncherView::explainsThatTouchIDIsNotYetEnabledAndForgetsThatItAsked()
{
    m_world->localAuthentication.setHasAskedUserForTouchID(true);
    bool hadAskedWhenShown = true;
    m_world->alertPresenter.onModal = [&] {
        hadAskedWhenShown = m_world->localAuthentication.hasAskedUserForTouchID();
    };
    m_world->view->touchIdPressed();
    QCOMPARE(m_world->alertPresenter.modalAlerts.size(), 1);
    const Alert &alert = m_world->alertPresenter.modalAlerts.first();
    QCOMPARE(alert.messageText, QStringLiteral("Touch ID is not yet enabled"));
    QCOMPARE(alert.informativeText,
             QStringLiteral("To enable Touch ID, please login to your account and press play."));
    QCOMPARE(alert.buttons, QStringList{QStringLiteral("Ok")});
    QVERIFY(!hadAskedWhenShown);
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherView::explainsThatTouchIDIsNotAvailable()
{
    m_world->biometrics.evaluability.isPossible = false;
    m_world->localAuthentication.setHasAskedUserForTouchID(true);
    m_world->view->touchIdPressed();
    QCOMPARE(m_world->alertPresenter.modalAlerts.size(), 1);
    const Alert &alert = m_world->alertPresenter.modalAlerts.first();
    QCOMPARE(alert.messageText, QStringLiteral("Touch ID is not available"));
    QCOMPARE(alert.informativeText, QStringLiteral("Touch ID is not available on this device."));
    QCOMPARE(alert.buttons, QStringList{QStringLiteral("Ok")});
    QVERIFY(m_world->localAuthentication.hasAskedUserForTouchID());
    QCOMPARE(m_world->delegate.calls, QStringList());
}

void TestLauncherView::canBeMinimised()
{
    m_world->showWindow();
    QTest::mouseClick(&m_world->child<RolloverButton>("minimizeButton"), Qt::LeftButton);
    QVERIFY(m_world->window.isMinimized());
    QCOMPARE(m_world->terminations, 0);
}

QUELLMOOR_TEST(TestLauncherView, "LauncherView")
#include "tst_LauncherView.moc"
