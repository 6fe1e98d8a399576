// Does with the fingerprint login what the launcher does, one command a line of standard input, and
// tells on standard output, one line each, what came of it.

#include "FakeAlertPresenter.h"
#include "account/LocalAuthenticationHandler.h"
#include "platform/BiometricContext.h"
#include "platform/BiometricPrompt.h"
#include "platform/DispatchQueue.h"

#include <QCoreApplication>
#include <QHash>
#include <QSocketNotifier>
#include <QTemporaryDir>

#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace {

constexpr int MillisecondsToEnd = 10000;

void tell(const QString &line)
{
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

class Prompt final : public BiometricPrompt
{
public:
    void show(const QString &reason, std::function<void()> cancelQuestion) override
    {
        tell(QStringLiteral("show ") + reason);
        cancel = std::move(cancelQuestion);
    }
    void retry(const QString &text) override { tell(QStringLiteral("retry ") + text); }
    void hide() override { tell(QStringLiteral("hide")); }

    std::function<void()> cancel;
};

class Probe
{
public:
    Probe()
        : m_context(makeBiometricContext(&m_prompt)),
          m_userDefaults(m_folder.filePath(QStringLiteral("settings"))),
          m_handler(*m_context, m_userDefaults, m_alerts)
    {
    }

    // False at the end.
    bool obey(const std::string &command)
    {
        if (command == "possible")
            tellWhetherPossible();
        else if (command == "evaluate")
            m_context->evaluatePolicy(QStringLiteral("Login to the game"), [](bool isOwner) {
                tell(isOwner ? QStringLiteral("owner") : QStringLiteral("refused"));
            });
        else if (command == "store")
            m_handler.setupWithUsername(QStringLiteral("mira"), QStringLiteral("lantern"));
        else if (command == "load")
            m_handler.loadCredentials([](const QString &username, const QString &password) {
                tell(QStringLiteral("credentials '%1' '%2'").arg(username, password));
            });
        else if (command == "cancel")
            m_prompt.cancel();
        else
            return false;
        return true;
    }

private:
    void tellWhetherPossible()
    {
        const auto evaluability = m_context->canEvaluatePolicy();
        if (evaluability.isPossible)
            tell(QStringLiteral("possible"));
        else
            tell(QStringLiteral("impossible ") +
                 evaluability.error.value_or(Error{}).localizedDescription);
    }

    QTemporaryDir m_folder;
    Prompt m_prompt;
    std::unique_ptr<BiometricContext> m_context;
    UserDefaults m_userDefaults;
    FakeAlertPresenter m_alerts;
    LocalAuthenticationHandler m_handler;
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    {
        Probe probe;
        QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
        std::ios::sync_with_stdio(false);
        QObject::connect(&input, &QSocketNotifier::activated, &application, [&] {
            std::string command;
            do {
                if (!std::getline(std::cin, command) || !probe.obey(command)) {
                    QCoreApplication::quit();
                    return;
                }
            } while (std::cin.rdbuf()->in_avail() > 0);
        });
        QCoreApplication::exec();
    }
    return DispatchQueue::drain(MillisecondsToEnd) ? 0 : 1;
}
