#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/InterfaceLoader.h"
#include "ui/RolloverButton.h"
#include "ui/TextLabel.h"
#include "ui/VARNOProgressView.h"

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
    void fillsItsFrameInItsOwnCoordinates();

    void setsTheStatusLaterOnTheMainThread();
    void setsStatusesFromOtherThreadsInTheirOrder();
    void showsTheServerVersionAtOnce();
    void switchesBetweenFormAndProgress();
    void neverHidesAnythingElse();
    void switchesLaterWhenAnotherThreadAsks();
    void endsWithTheFormAfterHidingAndPreparingFromAnotherThread();
    void takesTheKeyboardFromTheFieldsEitherWay();
    void leavesTheKeyboardToNoControlWhenTheFormIsHidden();
    void preparesForLoginWithTheLabelAtOnce();

    void shiftsThePictureOfPlayOnly();
    void restoresTheNormalPictureNotTheHoveredOne();
    void givesPlayItsNormalPictureWhateverTheFileGave();
    void keepsThePlainFlagWithoutChangingTheButton();
    void usesTheControlsThatItIsGiven();

    void usesOnlyTheNewsPageItself_data();
    void usesOnlyTheNewsPageItself();

    void pressesPlayForTouchIDWhenEnabled();
    void explainsThatTouchIDIsNotYetEnabledAndForgetsThatItAsked();
    void explainsThatTouchIDIsNotAvailable();
    void knowsNothingOfTouchIDWithoutServices();

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

// Away from the corner these are not its bounds.
void TestLauncherView::fillsItsFrameInItsOwnCoordinates()
{
    QWidget parent;
    parent.resize(30, 30);
    QPalette red;
    red.setColor(QPalette::Window, Qt::red);
    parent.setPalette(red);
    LauncherView view(&parent);
    view.setGeometry(5, 5, 20, 20);
    QImage picture(30, 30, QImage::Format_ARGB32_Premultiplied);
    parent.render(&picture);
    QImage expected(30, 30, QImage::Format_ARGB32_Premultiplied);
    expected.fill(Qt::red);
    QPainter painter(&expected);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.fillRect(10, 10, 15, 15, Qt::transparent);
    QCOMPARE(picture, expected);
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
    QStringList given;
    for (int i = 1; i <= 100; ++i)
        given += QString::number(i);
    QStringList shown;
    connect(
        &m_world->child<TextLabel>("statusLabel"), &TextLabel::stringValueChanged, this,
        [&shown](const QString &status) { shown += status; }, Qt::DirectConnection);
    std::thread([this, &given] {
        for (const QString &status : given)
            m_world->view->setStatus(status);
    }).join();
    QCOMPARE(shown, QStringList());
    ViewWorld::runMainQueue();
    QCOMPARE(shown, given);
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

void TestLauncherView::switchesLaterWhenAnotherThreadAsks()
{
    std::thread([this] { m_world->view->hideLoginForm(true); }).join();
    QCOMPARE(m_world->visible(formControls()), formControls());
    QCOMPARE(m_world->visible(progressControls()), QStringList());
    ViewWorld::runMainQueue();
    QCOMPARE(m_world->visible(formControls()), QStringList());
    QCOMPARE(m_world->visible(progressControls()), progressControls());
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
    QCOMPARE(play.accessibleDescription(), QStringLiteral("Not available at present"));
    m_world->showWindow();
    QTest::mouseClick(&play, Qt::LeftButton);
    QCOMPARE(m_world->delegate.calls, QStringList{QStringLiteral("login |")});
    m_world->view->setPlayButtonEnabled(true);
    QCOMPARE(play.accessibleDescription(), QString());
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

void TestLauncherView::givesPlayItsNormalPictureWhateverTheFileGave()
{
    const std::unique_ptr<QWidget> root(InterfaceLoader().load(QStringLiteral("Launcher")));
    auto *view = qobject_cast<LauncherView *>(root.get());
    auto *play = root->findChild<RolloverButton *>(QStringLiteral("playButton"));
    QVERIFY(view && play);
    play->setImage(Picture::named(QStringLiteral("CLOSE_NORMAL")));
    view->awakeFromNib();
    QCOMPARE(play->normalImage().name(), QStringLiteral("PLAY_NORMAL"));
    QCOMPARE(play->image().name(), QStringLiteral("PLAY_NORMAL"));
}

void TestLauncherView::keepsThePlainFlagWithoutChangingTheButton()
{
    m_world->view->setIsPlayButtonEnabled(false);
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->child<RolloverButton>("playButton").image().name(),
             QStringLiteral("PLAY_NORMAL"));
}

void TestLauncherView::usesTheControlsThatItIsGiven()
{
    VARNOProgressView bar;
    PictureView frame;
    PictureView swordsmen;
    TextField accountField;
    TextField passwordField;
    LauncherView &view = *m_world->view;
    const QList<QWidget *> fields{&accountField, &passwordField};
    const QList<QWidget *> progress{&bar, &frame};
    for (QWidget *field : fields)
        field->show();
    view.setPatcherProgressBar(&bar);
    view.setProgressFrameView(&frame);
    view.setAccountIDField(&accountField);
    view.setPasswordField(&passwordField);
    view.setSwordsmenImage(&swordsmen);
    QCOMPARE(view.swordsmenImage(), &swordsmen);

    accountField.setStringValue(QStringLiteral("pat"));
    passwordField.setStringValue(QStringLiteral("secret"));
    view.playPressed(nullptr);
    QCOMPARE(m_world->delegate.calls, QStringList{QStringLiteral("login pat|secret")});

    view.hideLoginForm(true);
    ViewWorld::runMainQueue();
    for (const QWidget *field : fields)
        QVERIFY(field->isHidden());
    for (const QWidget *part : progress)
        QVERIFY(!part->isHidden());
    QCOMPARE(m_world->visible(progressControls()), QStringList());
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

void TestLauncherView::knowsNothingOfTouchIDWithoutServices()
{
    const std::unique_ptr<QWidget> root(InterfaceLoader().load(QStringLiteral("Launcher")));
    auto *view = qobject_cast<LauncherView *>(root.get());
    QVERIFY(view);
    view->awakeFromNib();
    RecordingViewDelegate delegate;
    view->setDelegate(&delegate);
    view->touchIdPressed();
    QCOMPARE(delegate.calls, QStringList());
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
