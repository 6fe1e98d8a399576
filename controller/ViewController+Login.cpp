// The login: what the player typed, the request, the reply, and the second step.
#include "account/LocalAuthenticationHandler.h"
#include "account/VARNOPostHelper.h"
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "controller/LoginReply.h"
#include "controller/ViewController.h"
#include "platform/AlertPresenter.h"
#include "platform/Alerts.h"
#include "platform/DispatchQueue.h"
#include "platform/UserDefaults.h"
#include "ui/LauncherView.h"
#include "ui/TextField.h"

void ViewController::loginUsername(const QString &username, const QString &password)
{
    if (m_launcherView.isPlayButtonEnabled())
        loginUsername(username, password, QString());
}

void ViewController::loginUsername(const QString &username, const QString &password,
                                   const QString &twoStepToken)
{
    LocalAuthenticationHandler &stored = m_services.localAuthentication;
    const bool isIncomplete = username.isEmpty() || password.isEmpty();
    if (isIncomplete && stored.canEvaluatePolicy() && stored.isTouchIDEnabled()) {
        // A refused finger brings two empty texts, and an empty login is sent all the same: the
        // server's answer tells the player.
        stored.loadCredentials(
            [self = shared_from_this(), twoStepToken](const QString &name, const QString &secret) {
                DispatchQueue::main()->async([self, name, secret, twoStepToken] {
                    self->m_launcherView.accountIDField()->setStringValue(name);
                    self->m_launcherView.passwordField()->setStringValue(secret);
                    self->postLoginWithUsername(name, secret, twoStepToken);
                });
            });
    } else if (username.isEmpty() && password.isEmpty()) {
        m_launcherView.setStatus(QStringLiteral("You must enter a Username and Password."));
    } else if (password.isEmpty()) {
        m_launcherView.setStatus(QStringLiteral("You must enter a Password."));
        m_launcherView.passwordField()->becomeFirstResponder();
    } else if (username.isEmpty()) {
        m_launcherView.setStatus(QStringLiteral("You must enter a Username."));
        m_launcherView.accountIDField()->becomeFirstResponder();
    } else {
        postLoginWithUsername(username, password, twoStepToken);
    }
}

std::optional<QString> ViewController::environmentFromUsername(const QString &username)
{
    const QStringList pieces = username.split(QLatin1Char('@'));
    if (pieces.size() != 2)
        return std::nullopt;
    return pieces.last().trimmed();
}

void ViewController::postLoginWithUsername(const QString &username, const QString &password,
                                           const QString &twoStepToken)
{
    {
        const std::lock_guard lock(m_mutex);
        m_currentEnvironment = environmentFromUsername(username);
    }
    m_launcherView.setPlayButtonEnabled(false);
    m_launcherView.setStatus(QStringLiteral("Contacting account server..."));
    m_postHelper->postToURL(m_services.configuration.loginUrl(),
                            {{QStringLiteral("username"), username},
                             {QStringLiteral("password"), password},
                             {QStringLiteral("gtoken"), twoStepToken}},
                            [self = shared_from_this()](const std::optional<QByteArray> &data,
                                                        const std::optional<Error> &error) {
                                self->parseLoginData(data, error);
                            });
}

void ViewController::parseLoginData(const std::optional<QByteArray> &data,
                                    const std::optional<Error> &error)
{
    if (!data || error) {
        ErrorHandler::log(error.value_or(Error{QStringLiteral("The login brought no data."), 0}));
        m_launcherView.setStatus(QStringLiteral("900: Couldn't connect to the account server."));
        m_launcherView.setPlayButtonEnabled(true);
        return;
    }
    takeLoginReply(LoginReply::parse(*data));
}

void ViewController::takeLoginReply(const LoginReply &reply)
{
    if (!reply.status) {
        m_launcherView.setPlayButtonEnabled(true);
        return;
    }
    const QString text = reply.statusText();
    m_launcherView.setStatus(text);

    if (*reply.status == LoginReply::LoggedIn) {
        loginSucceeded(reply);
        return;
    }
    if (*reply.status == LoginReply::TwoStepTokenRequired) {
        DispatchQueue::main()->async(
            [self = shared_from_this(), text] { self->showTwoStepAuthenticationAlertWith(text); });
    }
    m_launcherView.setPlayButtonEnabled(true);
}

void ViewController::loginSucceeded(const LoginReply &reply)
{
    m_services.userDefaults.set(QStringLiteral("prevUser"),
                                m_launcherView.accountIDField()->stringValue());
    // Not on this thread: a check may be saving thousands of entries at this moment.
    DispatchQueue::global(DispatchQueue::QualityOfService::Background)
        ->async([self = shared_from_this()] { self->m_services.userDefaults.synchronize(); });
    {
        const std::lock_guard lock(m_mutex);
        m_playCookie = reply.token;
        m_gameserver = reply.gameserver;
    }
    m_launcherView.setStatus(QStringLiteral("Checking for updates..."));
    m_launcherView.swordsmenImage()->setHidden(false);
    m_launcherView.hideLoginForm(true);
    downloadPatcherJSON(m_services.configuration.manifestUrl(currentEnvironment()),
                        [self = shared_from_this()] { self->startThePatcher(); });
    DispatchQueue::main()->async([self = shared_from_this()] { self->offerStoredCredentials(); });
}

void ViewController::offerStoredCredentials()
{
    LocalAuthenticationHandler &stored = m_services.localAuthentication;
    if (stored.canEvaluatePolicy() && stored.askUserToEnableTouchID())
        stored.setupWithUsername(m_launcherView.accountIDField()->stringValue(),
                                 m_launcherView.passwordField()->stringValue());
}

void ViewController::showTwoStepAuthenticationAlertWith(const QString &text)
{
    Alert alert;
    alert.messageText = Alerts::tr("Two-step Authentication");
    alert.informativeText = text;
    alert.buttons = {Alerts::tr("Confirm"), Alerts::tr("Cancel")};
    m_services.alertPresenter.beginSheet(
        alert, AlertTextField(), [self = shared_from_this()](int response, const QString &token) {
            if (response == AlertPresenter::FirstButtonReturn)
                self->loginUsername(self->m_launcherView.accountIDField()->stringValue(),
                                    self->m_launcherView.passwordField()->stringValue(), token);
        });
}
