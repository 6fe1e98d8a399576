#include "account/LocalAuthenticationHandler.h"

#include "account/KeychainItem.h"
#include "app/ErrorHandler.h"
#include "platform/AlertPresenter.h"
#include "platform/Alerts.h"
#include "platform/BiometricContext.h"
#include "platform/DispatchQueue.h"
#include "platform/SystemLog.h"

namespace {

const auto ItemDataKey = QStringLiteral("keychain-Item-Data-Key");
const auto EnabledKey = QStringLiteral("touchID-Enabled-Key");
const auto HasAskedKey = QStringLiteral("has-Asked-User-For-TouchID");
const auto ProductName = QStringLiteral("Quellmoor");

Alert makeOffer()
{
    // The text ends in a space of its own, so that the player reads two before the name.
    const QString text = Alerts::tr("Use Touch ID to login to ");
    return {Alerts::tr("Enable Touch ID"),
            text + QLatin1Char(' ') + ProductName + QLatin1Char('.'),
            {Alerts::tr("Enable"), Alerts::tr("Cancel")}};
}

Alert makeResetNotice()
{
    return {Alerts::tr("Touch ID Has Been Reset"),
            Alerts::tr("To setup Touch ID again login to your account with the "
                       "correct username and password and select Enable."),
            {Alerts::tr("Close")}};
}

std::unique_ptr<LocalAuthenticationHandler> &sharedHandler()
{
    static std::unique_ptr<LocalAuthenticationHandler> handler;
    return handler;
}

} // namespace

LocalAuthenticationHandler::LocalAuthenticationHandler(BiometricContext &context,
                                                       UserDefaults &userDefaults,
                                                       AlertPresenter &alertPresenter)
    : m_context(context), m_userDefaults(userDefaults), m_alertPresenter(alertPresenter)
{
}

LocalAuthenticationHandler &LocalAuthenticationHandler::shared()
{
    if (!sharedHandler())
        qFatal("No LocalAuthenticationHandler is installed.");
    return *sharedHandler();
}

void LocalAuthenticationHandler::install(std::unique_ptr<LocalAuthenticationHandler> handler)
{
    sharedHandler() = std::move(handler);
}

bool LocalAuthenticationHandler::askUserToEnableTouchID()
{
    if (hasAskedUserForTouchID())
        return isTouchIDEnabled();
    const int response = m_alertPresenter.runModal(makeOffer());
    const bool isEnabled = response == AlertPresenter::FirstButtonReturn;
    m_userDefaults.set(HasAskedKey, true);
    m_userDefaults.set(EnabledKey, isEnabled);
    save();
    return isEnabled;
}

void LocalAuthenticationHandler::setTouchID(bool isEnabled)
{
    m_userDefaults.set(EnabledKey, isEnabled);
    save();
}

void LocalAuthenticationHandler::setHasAskedUserForTouchID(bool hasAsked)
{
    m_userDefaults.set(HasAskedKey, hasAsked);
    save();
}

void LocalAuthenticationHandler::setupWithUsername(const QString &username, const QString &password)
{
    if (canEvaluatePolicy())
        saveUsername(username, password);
    else
        debug(QStringLiteral("TouchID is not available."));
}

void LocalAuthenticationHandler::saveUsername(const QString &username, const QString &password)
{
    KeychainItem item(username, password);
    m_userDefaults.set(ItemDataKey, item.archivedData());
    m_userDefaults.set(EnabledKey, true);
    save();
    item.eraseData();
}

void LocalAuthenticationHandler::loadCredentials(Completion completion)
{
    if (!m_context.canEvaluatePolicy().isPossible) {
        completion(QString(), QString());
        return;
    }
    m_context.evaluatePolicy(Alerts::tr("Login to %1").arg(ProductName),
                             [this, completion = std::move(completion)](bool isOwner) {
                                 if (isOwner)
                                     giveStoredCredentials(completion);
                                 else
                                     completion(QString(), QString());
                             });
}

void LocalAuthenticationHandler::giveStoredCredentials(const Completion &completion) const
{
    const auto data = m_userDefaults.data(ItemDataKey);
    auto item = data ? KeychainItem::unarchive(*data) : std::nullopt;
    if (!item) {
        completion(QString(), QString());
        return;
    }
    DispatchQueue::main()->async([completion, item = std::move(*item)]() mutable {
        completion(item.username(), item.password());
        item.eraseData();
    });
}

void LocalAuthenticationHandler::resetTouchID()
{
    DispatchQueue::main()->async([this] { resetNow(); });
}

void LocalAuthenticationHandler::resetNow()
{
    setHasAskedUserForTouchID(false);
    // Where fingers can be read this overwrites the stored account with an empty one.
    setupWithUsername(QString(), QString());
    setTouchID(false);
    m_alertPresenter.runModal(makeResetNotice());
}

void LocalAuthenticationHandler::debug(const QString &text) const { SystemLog::write(text); }

bool LocalAuthenticationHandler::canEvaluatePolicy() const
{
    const BiometricContext::Evaluability evaluability = m_context.canEvaluatePolicy();
    if (evaluability.exception) {
        ErrorHandler::handle(*evaluability.exception);
        return false;
    }
    if (evaluability.error)
        ErrorHandler::log(*evaluability.error);
    return evaluability.isPossible;
}

bool LocalAuthenticationHandler::isTouchIDEnabled() const
{
    return m_userDefaults.boolean(EnabledKey);
}

bool LocalAuthenticationHandler::hasAskedUserForTouchID() const
{
    return m_userDefaults.boolean(HasAskedKey);
}

// A failure is logged by the settings, which keep the changes for their next save.
void LocalAuthenticationHandler::save() { m_userDefaults.synchronize(); }
