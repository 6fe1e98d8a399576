// The game: its script, the launcher out of sight while it runs, and the way back.
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "controller/LaunchScript.h"
#include "controller/ViewController.h"
#include "platform/ActivationPolicy.h"
#include "platform/DispatchQueue.h"
#include "platform/FileSystem.h"
#include "platform/ShellTask.h"
#include "platform/Timer.h"
#include "platform/Workspace.h"
#include "ui/LauncherView.h"
#include "ui/VARNOProgressView.h"

namespace {

constexpr std::chrono::milliseconds HideDelay{5000};

} // namespace

void ViewController::launchGame()
{
    const auto found = gameExecutable();
    if (const auto *refusal = std::get_if<GameFolder::Refusal>(&found)) {
        ErrorHandler::log(
            QStringLiteral("The game's executable is refused: %1.").arg(refusal->reason));
        DispatchQueue::main()->async([self = shared_from_this()] { self->returnFromGame(); });
        return;
    }
    const auto &executable = std::get<QString>(found);
    m_services.workspace.setIcon(executable);
    makeExecutable(executable);
    runGame(executable);
    DispatchQueue::main()->async([self = shared_from_this()] { self->returnFromGame(); });
}

void ViewController::runGame(const QString &executable)
{
    LaunchScript script;
    script.playCookie = playCookie();
    script.gameserver = gameserver();
    script.isDevelopmentRun = currentEnvironment().has_value();
    script.gameExecutable = executable;
    ShellTask task(script.text(), m_services.configuration.gameFolder());
    m_hasReturnedFromGame = false;
    if (const auto error = task.launch())
        ErrorHandler::log(*error);
    else
        hideWhileGameRuns();
    {
        const DispatchQueue::OutsideWait theGameGoesOn;
        task.waitUntilExit();
    }
    m_hasReturnedFromGame = true;
}

// The name comes from outside, like the files' keys, and must stay in the game folder like them.
std::variant<QString, GameFolder::Refusal> ViewController::gameExecutable() const
{
    const QString name =
        patcherJson()[QStringLiteral("exec")].toString(QStringLiteral("Quellmoor"));
    return GameFolder(m_services.configuration.gameFolder()).pathFor(name);
}

// Both are tried; if any fails that is logged once, and the launch goes on.
void ViewController::makeExecutable(const QString &gameExecutable) const
{
    std::optional<Error> failure = FileSystem::makeExecutable(gameExecutable);
    const auto second = FileSystem::makeExecutable(m_services.configuration.gameFolder() +
                                                   QStringLiteral("/Frameworks/Cg.framework/Cg"));
    if (second)
        failure = second;
    if (failure)
        ErrorHandler::log(*failure);
}

void ViewController::hideWhileGameRuns()
{
    m_services.timer.asyncAfter(HideDelay, [self = shared_from_this()] {
        if (!self->m_hasReturnedFromGame)
            self->m_services.activationPolicy.setActivationPolicy(
                ActivationPolicy::Policy::Accessory);
    });
}

void ViewController::returnFromGame()
{
    m_launcherView.swordsmenImage()->setHidden(true);
    m_launcherView.patcherProgressBar()->setHidden(true);
    m_launcherView.progressFrameView()->setHidden(true);
    m_services.activationPolicy.setActivationPolicy(ActivationPolicy::Policy::Regular);
    m_services.activationPolicy.activateIgnoringOtherApps();
    setup();
}
