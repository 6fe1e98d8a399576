#pragma once

#include "ui/NewsView.h"
#include "ui/PictureView.h"
#include "ui/TextField.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>

class AlertPresenter;
class HttpClient;
class LauncherViewDelegate;
class RolloverButton;
class TextLabel;
class TouchID;
class VARNOProgressView;
class Workspace;
struct Configuration;

// What the launcher view works with; everything outlives the view and the update that it may have
// under way.
struct LauncherViewServices
{
    const Configuration &configuration;
    HttpClient &httpClient;
    Workspace &workspace;
    AlertPresenter &alertPresenter;
    TouchID &touchID;
    // Asks the application to end. From any thread; may be called more than once.
    std::function<void()> terminate;
    // Makes what shows the news; without it none are shown.
    NewsView::PageFactory newsPageFactory = {};
};

// The one content view of the launcher window: window buttons, version labels, the status line, the
// login form or the progress display, a row of links and the news. It knows nothing about logging
// in or updating: the player's wishes go to the delegate, and the controller drives the rest.
//
// Made from the interface file "Launcher"; whoever loads it calls awakeFromNib() and setServices(),
// once each. Without services it is there to be looked at and typed into: its buttons do nothing
// and there are no news. Main thread only, except where said. The widgets are its children; the
// outlets only point at them.
class LauncherView : public QWidget, public TextFieldDelegate, public WebPolicyDelegate
{
    Q_OBJECT

public:
    explicit LauncherView(QWidget *parent = nullptr);
    ~LauncherView() override;

    void setServices(const LauncherViewServices &services);
    // Finds the outlets, binds the actions and prepares every control.
    void awakeFromNib();

    // Loads the news page, anew if it is there. The first time comes by itself, once there are
    // services and outlets.
    void downloadNews();

    // Any thread. Shown later, on the main thread, in the order of the calls.
    void setStatus(const QString &status);
    // Shows "Server v" and the version.
    void setServerVersion(const QString &version);
    // Changes how the play button looks and whether it reacts to hovering. It can be pressed all
    // the same; the delegate looks at isPlayButtonEnabled().
    void setPlayButtonEnabled(bool isEnabled);
    // Any thread. Later, on the main thread, shows the progress display instead of the login form,
    // or with false the other way round; takes the keyboard from the two fields either way.
    void hideLoginForm(bool hide);
    // Shows "Login" at once, and the login form as hideLoginForm() does.
    void prepareForLogin();

    // Asks whether to update the launcher, in a nested event loop, and ends the launcher or, on
    // "Update", fetches the installer of that version in the background, opens it and ends the
    // launcher then. There is no way back from here.
    void showLauncherOutOfDate(const QString &version);
    // Any thread. Opens the page with the installer in the browser and ends the launcher.
    void showDownloadLink();

    // What the buttons do. The sender is not looked at and may be null.
    void closePressed(QObject *sender);
    void minimizePressed(QObject *sender);
    void playPressed(QObject *sender);
    void forgotPasswordPressed(QObject *sender);
    void websitePressed(QObject *sender);
    void supportPressed(QObject *sender);
    void communityButtonPressed(QObject *sender);
    void manageButtonPressed(QObject *sender);
    void playersGuideButtonPressed(QObject *sender);
    void releaseNotesButtonPressed(QObject *sender);
    void createAccountButtonPressed(QObject *sender);
    // Of the Touch Bar: presses play when Touch ID is enabled, else explains in an alert why not.
    // Does nothing without services.
    void touchIdPressed();

    // TextFieldDelegate
    void controlTextDidChange(QObject *control) override;
    void controlTextDidEndEditing(QObject *control, TextMovement movement) override;

    // WebPolicyDelegate. The news page itself is used; anything else goes to the browser.
    void webViewDecidePolicyForNavigationAction(const QUrl &url,
                                                DecisionListener &listener) override;

    // The delegate outlives the view or is taken away; null for none.
    void setDelegate(LauncherViewDelegate *delegate) { m_delegate = delegate; }
    void setIsPlayButtonEnabled(bool isEnabled) { m_isPlayButtonEnabled = isEnabled; }
    // Store what the view uses from now on, in place of what the interface file gave; never null.
    void setPatcherProgressBar(VARNOProgressView *view);
    void setProgressFrameView(PictureView *view);
    void setAccountIDField(TextField *field);
    void setPasswordField(TextField *field);
    void setSwordsmenImage(PictureView *view);

    [[nodiscard]] LauncherViewDelegate *delegate() const { return m_delegate; }
    [[nodiscard]] bool isPlayButtonEnabled() const { return m_isPlayButtonEnabled; }
    [[nodiscard]] VARNOProgressView *patcherProgressBar() const;
    [[nodiscard]] PictureView *progressFrameView() const;
    [[nodiscard]] TextField *accountIDField() const;
    [[nodiscard]] TextField *passwordField() const;
    [[nodiscard]] PictureView *swordsmenImage() const;

protected:
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void beginNews();
    void cutWindowToShape();
    void bindOutlets();
    void bindActions();
    void setupRolloverImages();
    void applyLoginFormHidden(bool hide);
    void open(const QString &url);
    void explainTouchID();

    std::optional<LauncherViewServices> m_services;
    QUrl m_newsUrl;

    QPointer<PictureView> m_backgroundImage;
    QPointer<RolloverButton> m_minimizeButton;
    QPointer<RolloverButton> m_closeButton;
    QPointer<TextLabel> m_serverVersionLabel;
    QPointer<TextLabel> m_launcherVersionLabel;
    QPointer<TextLabel> m_statusLabel;
    QPointer<PictureView> m_accountPasswordView;
    QPointer<RolloverButton> m_playButton;
    QPointer<RolloverButton> m_forgotPasswordButton;
    QPointer<RolloverButton> m_websiteButton;
    QPointer<RolloverButton> m_supportButton;
    QPointer<RolloverButton> m_communityButton;
    QPointer<RolloverButton> m_manageButton;
    QPointer<RolloverButton> m_playersGuideButton;
    QPointer<RolloverButton> m_releaseNotesButton;
    QPointer<RolloverButton> m_createAccountButton;
    QPointer<NewsView> m_newsView;
    bool m_isPlayButtonEnabled = false;
    QPointer<VARNOProgressView> m_patcherProgressBar;
    LauncherViewDelegate *m_delegate = nullptr;
    QPointer<PictureView> m_progressFrameView;
    QPointer<TextField> m_accountIDField;
    QPointer<TextField> m_passwordField;
    QPointer<PictureView> m_swordsmenImage;
};
