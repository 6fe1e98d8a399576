#include "ui/LauncherView.h"

#include "app/Configuration.h"
#include "platform/DispatchQueue.h"
#include "platform/SystemLog.h"
#include "platform/WindowShape.h"
#include "platform/Workspace.h"
#include "ui/LauncherViewDelegate.h"
#include "ui/RolloverButton.h"
#include "ui/TextLabel.h"
#include "ui/VARNOProgressView.h"

#include <QCoreApplication>
#include <QPainter>

namespace {

// The child of that name. When the interface file lacks it, a stand-in that is never seen, so that
// the rest of the window works.
template<typename Widget>
void findOutlet(QPointer<Widget> &outlet, QWidget &view, const char *name)
{
    outlet = view.findChild<Widget *>(QLatin1String(name));
    if (outlet)
        return;
    SystemLog::write(
        QStringLiteral("The launcher's interface file has no %1.").arg(QLatin1String(name)));
    outlet = new Widget(&view);
    outlet->hide();
}

// As the navigation policy will see it: without the port that https has anyway.
QUrl newsUrlOf(const Configuration &configuration)
{
    constexpr int httpsPort = 443;
    QUrl url(configuration.newsUrl());
    if (url.port() == httpsPort)
        url.setPort(-1);
    return url;
}

} // namespace

LauncherView::LauncherView(QWidget *parent) : QWidget(parent) {}

LauncherView::~LauncherView()
{
    // The fields may lose the keyboard when only the widget is left of this.
    for (const auto &field : {m_accountIDField, m_passwordField}) {
        if (field)
            field->setDelegate(nullptr);
    }
}

void LauncherView::setServices(const LauncherViewServices &services)
{
    m_services.emplace(services);
    m_newsUrl = newsUrlOf(services.configuration);
    if (m_newsView)
        beginNews();
}

void LauncherView::awakeFromNib()
{
    bindOutlets();
    bindActions();
    m_launcherVersionLabel->setStringValue(
        QStringLiteral("Launcher v%1").arg(QCoreApplication::applicationVersion()));
    m_accountIDField->setDelegate(this);
    m_passwordField->setDelegate(this);
    setupRolloverImages();
    m_playButton->setNormalImage(Picture::named(QStringLiteral("PLAY_NORMAL")));
    setPlayButtonEnabled(true);
    m_accountIDField->becomeFirstResponder();
    m_statusLabel->setUsesSingleLineMode(false);
    m_statusLabel->setWraps(true);
    m_statusLabel->setScrollable(false);
    m_statusLabel->setDelegate(this);
    if (m_services)
        beginNews();
    cutWindowToShape();
}

void LauncherView::bindOutlets()
{
    findOutlet(m_backgroundImage, *this, "backgroundImage");
    findOutlet(m_minimizeButton, *this, "minimizeButton");
    findOutlet(m_closeButton, *this, "closeButton");
    findOutlet(m_serverVersionLabel, *this, "serverVersionLabel");
    findOutlet(m_launcherVersionLabel, *this, "launcherVersionLabel");
    findOutlet(m_statusLabel, *this, "statusLabel");
    findOutlet(m_accountPasswordView, *this, "accountPasswordView");
    findOutlet(m_playButton, *this, "playButton");
    findOutlet(m_forgotPasswordButton, *this, "forgotPasswordButton");
    findOutlet(m_websiteButton, *this, "websiteButton");
    findOutlet(m_supportButton, *this, "supportButton");
    findOutlet(m_communityButton, *this, "communityButton");
    findOutlet(m_manageButton, *this, "manageButton");
    findOutlet(m_playersGuideButton, *this, "playersGuideButton");
    findOutlet(m_releaseNotesButton, *this, "releaseNotesButton");
    findOutlet(m_createAccountButton, *this, "createAccountButton");
    findOutlet(m_newsView, *this, "newsView");
    findOutlet(m_patcherProgressBar, *this, "patcherProgressBar");
    findOutlet(m_progressFrameView, *this, "progressFrameView");
    findOutlet(m_accountIDField, *this, "accountIDField");
    findOutlet(m_passwordField, *this, "passwordField");
    findOutlet(m_swordsmenImage, *this, "swordsmenImage");
}

void LauncherView::setupRolloverImages()
{
    const std::pair<RolloverButton *, const char *> pictures[] = {
        {m_closeButton, "CLOSE_ROLLOVER"},
        {m_minimizeButton, "MINIMIZE_ROLLOVER"},
        {m_playButton, "PLAY_ROLLOVER"},
        {m_forgotPasswordButton, "FORGOT_ROLLOVER"},
        {m_websiteButton, "HOME_PAGE_ROLLOVER"},
        {m_supportButton, "REPORT_A_BUG_ROLLOVER"},
        {m_communityButton, "but_community_over"},
        {m_manageButton, "but_manageacct_over"},
        {m_playersGuideButton, "but_playerguide_over"},
        {m_releaseNotesButton, "but_releasenotes_over"},
        {m_createAccountButton, "create_acct_over"},
    };
    for (const auto &[button, name] : pictures) {
        button->awakeFromNib();
        button->setupWithRolloverImageName(QLatin1String(name));
    }
}

void LauncherView::beginNews()
{
    if (m_services->newsPageFactory)
        m_newsView->setPageFactory(m_services->newsPageFactory);
    downloadNews();
}

void LauncherView::downloadNews()
{
    m_newsView->load(m_newsUrl);
    m_newsView->setDrawsBackground(false);
    m_newsView->setPolicyDelegate(this);
}

void LauncherView::setStatus(const QString &status)
{
    DispatchQueue::main()->async([view = QPointer(this), status] {
        if (view)
            view->m_statusLabel->setStringValue(status);
    });
}

void LauncherView::setServerVersion(const QString &version)
{
    m_serverVersionLabel->setStringValue(QStringLiteral("Server v") + version);
}

void LauncherView::setPlayButtonEnabled(bool isEnabled)
{
    m_isPlayButtonEnabled = isEnabled;
    m_playButton->setImage(isEnabled ? m_playButton->normalImage()
                                     : Picture::named(QStringLiteral("PLAY_DISABLED")));
    m_playButton->setRolloverEnabled(isEnabled);
    m_playButton->setAccessibleDescription(isEnabled ? QString() : tr("Not available at present"));
}

void LauncherView::hideLoginForm(bool hide)
{
    DispatchQueue::main()->async([view = QPointer(this), hide] {
        if (view)
            view->applyLoginFormHidden(hide);
    });
}

void LauncherView::applyLoginFormHidden(bool hide)
{
    const QPointer<QWidget> focused = window()->focusWidget();
    m_patcherProgressBar->setHidden(!hide);
    m_progressFrameView->setHidden(!hide);
    m_passwordField->setHidden(hide);
    m_accountIDField->setHidden(hide);
    m_playButton->setHidden(hide);
    m_forgotPasswordButton->setHidden(hide);
    m_accountPasswordView->setHidden(hide);
    m_createAccountButton->setHidden(hide);
    m_accountIDField->resignFirstResponder();
    m_passwordField->resignFirstResponder();
    // Without a control that has the keyboard the first one gets it as soon as the window comes
    // forward, and without one that was hidden the next one gets it at once. The login form is fine
    // for that, a link is not.
    if (focused && focused->isVisibleTo(this) && focused == window()->focusWidget())
        return;
    window()->setFocus();
    if (!hide)
        window()->clearFocus();
}

void LauncherView::prepareForLogin()
{
    m_statusLabel->setStringValue(QStringLiteral("Login"));
    hideLoginForm(false);
}

void LauncherView::controlTextDidChange(QObject *)
{
    if (m_delegate)
        m_delegate->textFieldUpdate(m_accountIDField->stringValue(),
                                    m_passwordField->stringValue());
}

void LauncherView::controlTextDidEndEditing(QObject *control, TextMovement movement)
{
    if (movement != TextMovement::Return)
        return;
    if (control == m_accountIDField)
        m_passwordField->becomeFirstResponder();
    else if (control == m_passwordField)
        playPressed(m_playButton);
    else if (control != m_statusLabel)
        SystemLog::write(QStringLiteral("Did you add a new textfield? This should not be called."));
}

void LauncherView::webViewDecidePolicyForNavigationAction(const QUrl &url,
                                                          DecisionListener &listener)
{
    // Compared as text: the same page with a query, a fragment or without its slash is another one.
    if (url.toEncoded() == m_newsUrl.toEncoded())
        listener.use();
    else
        m_services->workspace.openURL(url);
}

void LauncherView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    cutWindowToShape();
}

// Once there is a window to cut and a shape to cut it to, whichever comes last.
void LauncherView::cutWindowToShape()
{
    if (isVisible() && m_backgroundImage)
        cutToShape(*window(), *m_backgroundImage);
}

void LauncherView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    // The place in the window, not the bounds. They are the same while the view fills the window.
    painter.fillRect(geometry(), Qt::transparent);
}

void LauncherView::setPatcherProgressBar(VARNOProgressView *view) { m_patcherProgressBar = view; }
void LauncherView::setProgressFrameView(PictureView *view) { m_progressFrameView = view; }
void LauncherView::setAccountIDField(TextField *field) { m_accountIDField = field; }
void LauncherView::setPasswordField(TextField *field) { m_passwordField = field; }
void LauncherView::setSwordsmenImage(PictureView *view) { m_swordsmenImage = view; }

VARNOProgressView *LauncherView::patcherProgressBar() const { return m_patcherProgressBar; }
PictureView *LauncherView::progressFrameView() const { return m_progressFrameView; }
TextField *LauncherView::accountIDField() const { return m_accountIDField; }
TextField *LauncherView::passwordField() const { return m_passwordField; }
PictureView *LauncherView::swordsmenImage() const { return m_swordsmenImage; }
