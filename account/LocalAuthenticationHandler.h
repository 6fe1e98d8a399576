#pragma once

#include "account/TouchID.h"
#include "platform/UserDefaults.h"

#include <QString>

#include <functional>
#include <memory>

class AlertPresenter;
class BiometricContext;

// Login by fingerprint: offers once to remember the account, keeps it in the settings, and gives it
// out again after a finger was recognised. Main thread only, where nothing else is said. What it is
// given must outlive it; it must outlive the questions it has asked.
class LocalAuthenticationHandler final : public TouchID
{
public:
    using Completion = std::function<void(const QString &username, const QString &password)>;

    LocalAuthenticationHandler(BiometricContext &context, UserDefaults &userDefaults,
                               AlertPresenter &alertPresenter);

    // The one of this process. Asking before one is installed is fatal.
    static LocalAuthenticationHandler &shared();
    // Keeps it for the process's life, or until null is installed.
    static void install(std::unique_ptr<LocalAuthenticationHandler> handler);

    // Shows the offer unless it has been shown before. Returns whether Touch ID is now enabled.
    bool askUserToEnableTouchID();

    void setTouchID(bool isEnabled);
    void setHasAskedUserForTouchID(bool hasAsked) override;

    // Stores the account and enables Touch ID where fingers can be read; otherwise only logs.
    void setupWithUsername(const QString &username, const QString &password);
    void saveUsername(const QString &username, const QString &password);

    // Asks for a finger and calls `completion` once: on the main thread with the stored account;
    // with two empty strings when fingers cannot be read (at once), when this one was refused or
    // when nothing readable is stored (both on the thread on which the system answers).
    void loadCredentials(Completion completion);

    // Forgets account and choice, so that the next login offers again, and tells the player so. At
    // the next turn of the main loop. Any thread.
    void resetTouchID();

    // Writes one line to the system log. Any thread.
    void debug(const QString &text) const;

    [[nodiscard]] bool canEvaluatePolicy() const override;
    [[nodiscard]] bool isTouchIDEnabled() const override;
    [[nodiscard]] bool hasAskedUserForTouchID() const;

private:
    void giveStoredCredentials(const Completion &completion) const;
    void resetNow();
    void save();

    BiometricContext &m_context;
    UserDefaults &m_userDefaults;
    AlertPresenter &m_alertPresenter;
};
