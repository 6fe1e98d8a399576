#include "account/TouchID.h"
#include "app/Configuration.h"
#include "platform/AlertPresenter.h"
#include "platform/Alerts.h"
#include "platform/Workspace.h"
#include "ui/LauncherView.h"
#include "ui/LauncherViewDelegate.h"
#include "ui/RolloverButton.h"

void LauncherView::bindActions()
{
    using Action = void (LauncherView::*)(QObject *);
    const std::pair<RolloverButton *, Action> actions[] = {
        {m_closeButton, &LauncherView::closePressed},
        {m_minimizeButton, &LauncherView::minimizePressed},
        {m_playButton, &LauncherView::playPressed},
        {m_forgotPasswordButton, &LauncherView::forgotPasswordPressed},
        {m_websiteButton, &LauncherView::websitePressed},
        {m_supportButton, &LauncherView::supportPressed},
        {m_communityButton, &LauncherView::communityButtonPressed},
        {m_manageButton, &LauncherView::manageButtonPressed},
        {m_playersGuideButton, &LauncherView::playersGuideButtonPressed},
        {m_releaseNotesButton, &LauncherView::releaseNotesButtonPressed},
        {m_createAccountButton, &LauncherView::createAccountButtonPressed},
    };
    for (const auto &[button, action] : actions)
        connect(button, &QAbstractButton::clicked, this, [this, sender = button, perform = action] {
            if (m_services)
                (this->*perform)(sender);
        });
}

void LauncherView::closePressed(QObject *) { m_services->terminate(); }

void LauncherView::minimizePressed(QObject *) { window()->showMinimized(); }

void LauncherView::playPressed(QObject *)
{
    if (m_delegate)
        m_delegate->loginUsername(m_accountIDField->stringValue(), m_passwordField->stringValue());
}

void LauncherView::forgotPasswordPressed(QObject *)
{
    open(m_services->configuration.websiteUrl(QStringLiteral("/resetpass/")));
}

void LauncherView::websitePressed(QObject *) { open(m_services->configuration.websiteUrl({})); }

void LauncherView::supportPressed(QObject *)
{
    open(m_services->configuration.websiteUrl(QStringLiteral("/help/faq/")));
}

void LauncherView::communityButtonPressed(QObject *) { open(m_services->configuration.forumUrl()); }

void LauncherView::manageButtonPressed(QObject *)
{
    open(m_services->configuration.websiteUrl(QStringLiteral("/account/")));
}

void LauncherView::playersGuideButtonPressed(QObject *)
{
    open(m_services->configuration.wikiUrl());
}

void LauncherView::releaseNotesButtonPressed(QObject *)
{
    open(m_services->configuration.websiteUrl(QStringLiteral("/releases/")));
}

void LauncherView::createAccountButtonPressed(QObject *)
{
    open(m_services->configuration.websiteUrl(QStringLiteral("/register/")));
}

void LauncherView::touchIdPressed()
{
    if (!m_services)
        return;
    if (m_services->touchID.isTouchIDEnabled())
        playPressed(nullptr);
    else
        explainTouchID();
}

void LauncherView::explainTouchID()
{
    Alert alert;
    alert.buttons = {Alerts::tr("Ok")};
    if (m_services->touchID.canEvaluatePolicy()) {
        alert.messageText = Alerts::tr("Touch ID is not yet enabled");
        alert.informativeText =
            Alerts::tr("To enable Touch ID, please login to your account and press play.");
        // So that the login which the alert asks for makes the offer again.
        m_services->touchID.setHasAskedUserForTouchID(false);
    } else {
        alert.messageText = Alerts::tr("Touch ID is not available");
        alert.informativeText = Alerts::tr("Touch ID is not available on this device.");
    }
    m_services->alertPresenter.runModal(alert);
}

void LauncherView::open(const QString &url) { m_services->workspace.openURL(QUrl(url)); }
