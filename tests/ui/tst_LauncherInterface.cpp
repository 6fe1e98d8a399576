#include "LogCapture.h"
#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/InterfaceLoader.h"
#include "ui/PictureView.h"
#include "ui/RolloverButton.h"
#include "ui/TextLabel.h"
#include "ui/VARNOProgressView.h"

#include <QAccessible>
#include <QTest>

namespace {

// What the view looks for, and of which class.
constexpr std::pair<const char *, const char *> Outlets[] = {
    {"backgroundImage", "PictureView"},
    {"minimizeButton", "RolloverButton"},
    {"closeButton", "RolloverButton"},
    {"serverVersionLabel", "TextLabel"},
    {"launcherVersionLabel", "TextLabel"},
    {"statusLabel", "TextLabel"},
    {"accountPasswordView", "PictureView"},
    {"playButton", "RolloverButton"},
    {"forgotPasswordButton", "RolloverButton"},
    {"websiteButton", "RolloverButton"},
    {"supportButton", "RolloverButton"},
    {"communityButton", "RolloverButton"},
    {"manageButton", "RolloverButton"},
    {"playersGuideButton", "RolloverButton"},
    {"releaseNotesButton", "RolloverButton"},
    {"createAccountButton", "RolloverButton"},
    {"newsView", "NewsView"},
    {"patcherProgressBar", "VARNOProgressView"},
    {"progressFrameView", "PictureView"},
    {"accountIDField", "CustomTextFieldCell"},
    {"passwordField", "CustomSecureTextFieldCell"},
    {"swordsmenImage", "PictureView"},
};

} // namespace

class TestLauncherInterface : public QObject
{
    Q_OBJECT

private slots:
    void hasEachOutlet_data();
    void hasEachOutlet();
    void hasNoControlThatNobodyKnows();
    void isAsLargeAsItsArtwork();
    void fillsTheOpeningOfTheProgressFrame();
    void givesEachButtonItsPictures_data();
    void givesEachButtonItsPictures();
    void opensEachLink_data();
    void opensEachLink();
    void opensLinksWhileTheFormIsHidden();
    void endsTheLauncherWithTheCloseButton();
    void hasAPaddingInBothFields();
    void goesThroughTheControlsInTheirOrder();
    void namesEveryControlForAssistiveTechnology();
    void fitsEveryCaption();
    void keepsControlsInTheWindowAndApart();
    void givesNothingForAFileThatIsMissing();
    void survivesAnInterfaceFileWithoutOutlets();
    void isThereBeforeItsServices();

private:
    static QList<RolloverButton *> buttons(const ViewWorld &world)
    {
        return world.view->findChildren<RolloverButton *>();
    }
};

void TestLauncherInterface::hasEachOutlet_data()
{
    QTest::addColumn<QByteArray>("className");
    for (const auto &[name, className] : Outlets)
        QTest::newRow(name) << QByteArray(className);
}

void TestLauncherInterface::hasEachOutlet()
{
    const ViewWorld world;
    const auto found = world.view->findChildren<QWidget *>(QLatin1String(QTest::currentDataTag()));
    QCOMPARE(found.size(), 1);
    QTEST(QByteArray(found.first()->metaObject()->className()), "className");
}

void TestLauncherInterface::hasNoControlThatNobodyKnows()
{
    const ViewWorld world;
    QStringList known{QStringLiteral("wordmark")};
    for (const auto &[name, className] : Outlets)
        known += QString::fromLatin1(name);
    QStringList found;
    const auto widgets = world.view->findChildren<QWidget *>();
    for (const QWidget *widget : widgets)
        found += widget->objectName();
    known.sort();
    found.sort();
    QCOMPARE(found, known);
}

void TestLauncherInterface::isAsLargeAsItsArtwork()
{
    const ViewWorld world;
    QCOMPARE(world.view->geometry(), QRect(0, 0, 1000, 640));
    QCOMPARE(world.window.size(), QSize(1000, 640));
    const auto pictures = world.view->findChildren<PictureView *>();
    for (const PictureView *view : pictures) {
        const Picture picture = Picture::named(view->pictureName());
        QVERIFY2(!picture.isNull(), qPrintable(view->objectName()));
        QCOMPARE(view->size(), picture.size());
    }
}

void TestLauncherInterface::fillsTheOpeningOfTheProgressFrame()
{
    const ViewWorld world;
    auto &bar = world.child<VARNOProgressView>("patcherProgressBar");
    const QRect opening(8, 8, 340, 14);
    QCOMPARE(bar.geometry(),
             opening.translated(world.child<PictureView>("progressFrameView").pos()));
    QImage seen(bar.size(), QImage::Format_ARGB32_Premultiplied);
    seen.fill(Qt::transparent);
    bar.render(&seen, QPoint(), QRegion(), QWidget::RenderFlags());
    for (const QPoint &corner : {seen.rect().topLeft(), seen.rect().topRight(),
                                 seen.rect().bottomLeft(), seen.rect().bottomRight()})
        QCOMPARE(qAlpha(seen.pixel(corner)), 255);
}

void TestLauncherInterface::givesEachButtonItsPictures_data()
{
    QTest::addColumn<QString>("normal");
    QTest::addColumn<QString>("rollover");
    const std::array<const char *, 3> pictures[] = {
        {"closeButton", "CLOSE_NORMAL", "CLOSE_ROLLOVER"},
        {"minimizeButton", "MINIMIZE_NORMAL", "MINIMIZE_ROLLOVER"},
        {"playButton", "PLAY_NORMAL", "PLAY_ROLLOVER"},
        {"forgotPasswordButton", "FORGOT_NORMAL", "FORGOT_ROLLOVER"},
        {"websiteButton", "HOME_PAGE_NORMAL", "HOME_PAGE_ROLLOVER"},
        {"supportButton", "REPORT_A_BUG_NORMAL", "REPORT_A_BUG_ROLLOVER"},
        {"communityButton", "but_community", "but_community_over"},
        {"manageButton", "but_manageacct", "but_manageacct_over"},
        {"playersGuideButton", "but_playerguide", "but_playerguide_over"},
        {"releaseNotesButton", "but_releasenotes", "but_releasenotes_over"},
        {"createAccountButton", "create_acct", "create_acct_over"},
    };
    for (const auto &[name, normal, rollover] : pictures)
        QTest::newRow(name) << QString::fromLatin1(normal) << QString::fromLatin1(rollover);
}

void TestLauncherInterface::givesEachButtonItsPictures()
{
    const ViewWorld world;
    const auto &button = world.child<RolloverButton>(QTest::currentDataTag());
    QTEST(button.normalImage().name(), "normal");
    QTEST(button.image().name(), "normal");
    QTEST(button.rolloverImage().name(), "rollover");
    QVERIFY(button.isRolloverEnabled());
    QCOMPARE(button.size(), button.normalImage().size());
}

void TestLauncherInterface::opensEachLink_data()
{
    QTest::addColumn<QString>("url");
    const std::pair<const char *, const char *> links[] = {
        {"forgotPasswordButton", "https://www.test/resetpass/"},
        {"websiteButton", "https://www.test"},
        {"supportButton", "https://www.test/help/faq/"},
        {"communityButton", "https://forum.test/"},
        {"manageButton", "https://www.test/account/"},
        {"playersGuideButton", "https://wiki.test/wiki/Main_Page"},
        {"releaseNotesButton", "https://www.test/releases/"},
        {"createAccountButton", "https://www.test/register/"},
    };
    for (const auto &[name, url] : links)
        QTest::newRow(name) << QString::fromLatin1(url);
}

void TestLauncherInterface::opensEachLink()
{
    QFETCH(QString, url);
    ViewWorld world;
    world.showWindow();
    QTest::mouseClick(&world.child<RolloverButton>(QTest::currentDataTag()), Qt::LeftButton);
    QCOMPARE(world.workspace.requests(), QStringList{QStringLiteral("url ") + url});
    QCOMPARE(world.terminations, 0);
    QCOMPARE(world.delegate.calls, QStringList());
}

void TestLauncherInterface::opensLinksWhileTheFormIsHidden()
{
    ViewWorld world;
    world.showWindow();
    world.view->hideLoginForm(true);
    ViewWorld::runMainQueue();
    QTest::mouseClick(&world.child<RolloverButton>("communityButton"), Qt::LeftButton);
    QCOMPARE(world.workspace.requests(), QStringList{QStringLiteral("url https://forum.test/")});
}

void TestLauncherInterface::endsTheLauncherWithTheCloseButton()
{
    ViewWorld world;
    world.showWindow();
    QTest::mouseClick(&world.child<RolloverButton>("closeButton"), Qt::LeftButton);
    QCOMPARE(world.terminations, 1);
}

void TestLauncherInterface::hasAPaddingInBothFields()
{
    const ViewWorld world;
    QVERIFY(world.view->accountIDField()->textMargins().left() > 0);
    QCOMPARE(world.view->passwordField()->textMargins().left(),
             world.view->accountIDField()->textMargins().left());
}

void TestLauncherInterface::goesThroughTheControlsInTheirOrder()
{
    ViewWorld world;
    world.showWindow();
    QTRY_VERIFY(world.child<NewsView>("newsView").page());
    world.view->accountIDField()->becomeFirstResponder();
    const char *expected[] = {
        "passwordField",      "playButton",         "forgotPasswordButton", "createAccountButton",
        "websiteButton",      "supportButton",      "communityButton",      "manageButton",
        "playersGuideButton", "releaseNotesButton", "minimizeButton",       "closeButton",
        "newsPage",           "accountIDField"};
    for (const char *name : expected) {
        QTest::keyClick(world.window.focusWidget(), Qt::Key_Tab);
        QCOMPARE(world.window.focusWidget()->objectName(), QString::fromLatin1(name));
    }
}

void TestLauncherInterface::namesEveryControlForAssistiveTechnology()
{
    const ViewWorld world;
    const auto widgets = world.view->findChildren<QWidget *>();
    int controls = 0;
    for (QWidget *widget : widgets) {
        if (widget->focusPolicy() == Qt::NoFocus || !widget->isEnabled())
            continue;
        ++controls;
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
        QVERIFY2(interface && !interface->text(QAccessible::Name).isEmpty(),
                 qPrintable(widget->objectName()));
        const bool isField = qobject_cast<TextField *>(widget) != nullptr;
        QCOMPARE(interface->role(), isField ? QAccessible::EditableText : QAccessible::Button);
    }
    QCOMPARE(controls, 13);
}

void TestLauncherInterface::fitsEveryCaption()
{
    const ViewWorld world;
    for (const RolloverButton *button : buttons(world))
        QVERIFY2(button->captionWidth() <= button->width(), qPrintable(button->objectName()));
}

void TestLauncherInterface::keepsControlsInTheWindowAndApart()
{
    const ViewWorld world;
    QList<QWidget *> controls{world.view->accountIDField(), world.view->passwordField(),
                              &world.child<NewsView>("newsView"),
                              &world.child<TextLabel>("statusLabel")};
    for (RolloverButton *button : buttons(world))
        controls += button;
    for (qsizetype i = 0; i < controls.size(); ++i) {
        QVERIFY(world.view->rect().contains(controls[i]->geometry()));
        for (qsizetype j = 0; j < i; ++j)
            QVERIFY2(!controls[i]->geometry().intersects(controls[j]->geometry()),
                     qPrintable(controls[i]->objectName() + controls[j]->objectName()));
    }
}

void TestLauncherInterface::givesNothingForAFileThatIsMissing()
{
    QCOMPARE(InterfaceLoader().load(QStringLiteral("NoSuchFile")), nullptr);
    QCOMPARE(InterfaceLoader::topLevelObjects(nullptr), QList<QWidget *>());
}

void TestLauncherInterface::survivesAnInterfaceFileWithoutOutlets()
{
    const LogCapture log;
    ViewWorld world;
    LauncherView view;
    view.setServices({world.configuration, world.httpClient, world.workspace, world.alertPresenter,
                      world.localAuthentication, [] {}});
    view.awakeFromNib();
    view.prepareForLogin();
    ViewWorld::runMainQueue();
    QCOMPARE(log.lines().size(), 22);
    QVERIFY(
        log.lines().contains(QStringLiteral("The launcher's interface file has no playButton.")));
}

void TestLauncherInterface::isThereBeforeItsServices()
{
    ViewWorld world;
    const std::unique_ptr<QWidget> root(InterfaceLoader().load(QStringLiteral("Launcher")));
    auto *view = qobject_cast<LauncherView *>(root.get());
    QVERIFY(view);
    view->awakeFromNib();
    const auto buttons = view->findChildren<RolloverButton *>();
    QCOMPARE(buttons.size(), 11);
    for (auto *button : buttons)
        button->click();
    QCOMPARE(world.terminations, 0);
    QCOMPARE(view->findChild<NewsView *>()->url(), QUrl());

    view->setServices({world.configuration, world.httpClient, world.workspace, world.alertPresenter,
                       world.localAuthentication, [&world] { ++world.terminations; }});
    QCOMPARE(view->findChild<NewsView *>()->url(), QUrl(world.configuration.newsUrl()));
    view->findChild<RolloverButton *>(QStringLiteral("closeButton"))->click();
    QCOMPARE(world.terminations, 1);
}

QUELLMOOR_TEST(TestLauncherInterface, "LauncherInterface")
#include "tst_LauncherInterface.moc"
