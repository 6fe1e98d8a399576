#pragma once

#include "model/GameFolder.h"
#include "patcher/VARNOPatcherDelegate.h"
#include "platform/TouchBar.h"
#include "ui/LauncherViewDelegate.h"

#include <QJsonObject>
#include <QPointer>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class ActivationPolicy;
class AlertPresenter;
class CustomTouchBarView;
class HttpClient;
class LauncherView;
class QObject;
class QWidget;
struct QMetaObject;
class LocalAuthenticationHandler;
class Reachability;
class ReachabilityService;
class Timer;
class UserDefaults;
class VARNOPatcher;
class VARNOPostHelper;
class Workspace;
struct Configuration;
struct Error;
struct LoginReply;

// What the controller works with; everything outlives it.
struct ControllerServices
{
    const Configuration &configuration;
    HttpClient &httpClient;
    UserDefaults &userDefaults;
    Workspace &workspace;
    ActivationPolicy &activationPolicy;
    AlertPresenter &alertPresenter;
    LocalAuthenticationHandler &localAuthentication;
    Timer &timer;
    ReachabilityService &reachability;
};

// The launcher's one controller. The story of a run, and where to read it:
//
//   viewDidLoad -> setup -> downloadPatcherJSON -> didFinishDownloadingPatcherJSON (.cpp)
//     -> checkFiles, which fills an engine that nobody starts yet      (+FileCheck.cpp)
//   play -> loginUsername -> postLoginWithUsername -> parseLoginData               (+Login.cpp)
//     -> downloadPatcherJSON of the player's environment -> checkFiles -> startThePatcher
//   the engine's reports -> patcherUpdateWithMegaByteCount, patcherWriteUpdateWithCurrentFile
//   (+FileCheck.cpp)
//     -> patcherDidFinish -> checkFiles -> the engine once more, or
//   launchGame -> hidden while the game runs -> setup again            (+Launch.cpp)
//   Beside it the Touch Bar, which offers play when the form allows it (+TouchBar.cpp)
//
// Lives on the main thread; the functions marked "background" run on global queues and those of
// VARNOPatcherDelegate wherever the engine calls them. What threads share is guarded by one lock.
// Make it with std::make_shared: blocks under way hold it.
class ViewController final : public VARNOPatcherDelegate,
                             public LauncherViewDelegate,
                             public TouchBarDelegate,
                             public std::enable_shared_from_this<ViewController>
{
public:
    using Completion = std::function<void()>;

    // The view must outlive the controller.
    ViewController(LauncherView &launcherView, const ControllerServices &services);
    ~ViewController() override;

    // Life cycle, in the order in which they come.
    void viewDidLoad();
    void viewDidAppear();
    void viewWillDisappear();
    // The start-up flow, which begins anew after each game.
    void setup();

    // After each change of the network. Fetches the manifest and the news when the host can be
    // reached now and could not when the view was loaded; that first status is never updated.
    void checkNetworkStatus();

    // Background. Makes the launcher data folder; what is there already is not examined.
    void createApplicationSupportDir();
    // Background. Removes the installers (*.dmg) of earlier updates of the launcher.
    void cleanUpOldDMGFiles();

    // Fetches the manifest on a background queue and passes it on; says nothing when no data comes.
    // The completion runs on the main thread after the check.
    void downloadPatcherJSON(const QString &url, const Completion &completion = {});
    // Background. Keeps the manifest, checks versions and files. With an error (it did not parse)
    // the same URL is fetched again at once, without limit.
    void didFinishDownloadingPatcherJSON(const QJsonObject &patcherJson, const QString &url,
                                         const std::optional<Error> &error,
                                         const Completion &completion);
    // Starts the current engine, on the main thread, whatever thread calls.
    void startThePatcher();

    // Background. Replaces the engine by a new one and fills it with what is wrong in the game
    // folder. True when there was any.
    bool checkFiles(const QJsonObject &files, bool disablePatching);

    // Background. Starts the game, waits for its end and brings the launcher back.
    void launchGame();

    void loginUsername(const QString &username, const QString &password,
                       const QString &twoStepToken);
    void postLoginWithUsername(const QString &username, const QString &password,
                               const QString &twoStepToken);
    [[nodiscard]] static std::optional<QString> environmentFromUsername(const QString &username);
    void parseLoginData(const std::optional<QByteArray> &data, const std::optional<Error> &error);
    void showTwoStepAuthenticationAlertWith(const QString &text);

    // LauncherViewDelegate
    void loginUsername(const QString &username, const QString &password) override;
    void textFieldUpdate(const QString &username, const QString &password) override;

    // What a Touch Bar shows for the launcher. The controller must outlive whoever shows it.
    [[nodiscard]] TouchBar makeTouchBar();
    // TouchBarDelegate. Makes the one item, whatever the identifier. Its strip is the one that
    // follows the login form from then on; an earlier one no longer does.
    std::unique_ptr<CustomTouchBarItem>
    touchBarMakeItemForIdentifier(const TouchBar &touchBar, const QString &identifier) override;
    // Forgets the stored account, so that the next login offers Touch ID again, and tells the
    // player so. The sender is not looked at.
    void enableTouchID(QObject *sender);

    // VARNOPatcherDelegate
    void patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize, double speed,
                                        qint64 currentFile, const QString &filename,
                                        qint64 totalFiles) override;
    void patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                           const QString &filename) override;
    void patcherDidFinish() override;

    // The first object of that class, or of one derived from it, among the interface file's root
    // and the root's children; the caller owns it. Null, with a line in the log, when the file
    // cannot be loaded; null when it holds no such object.
    [[nodiscard]] static std::unique_ptr<QWidget> loadWithNibNamed(const QString &name,
                                                                   const QMetaObject &aClass);

    [[nodiscard]] LauncherView &launcherView() const { return m_launcherView; }
    // Null where no bar was ever asked for an item, and when that item has gone.
    [[nodiscard]] CustomTouchBarView *touchBarViewOrNil() const;
    [[nodiscard]] std::optional<QString> currentEnvironment() const;
    [[nodiscard]] QJsonObject patcherJson() const;
    [[nodiscard]] std::shared_ptr<VARNOPatcher> patcher() const;
    [[nodiscard]] bool needDownloadPatcher() const;
    [[nodiscard]] std::optional<QString> playCookie() const;
    [[nodiscard]] std::optional<QString> gameserver() const;
    [[nodiscard]] bool hasReturnedFromGame() const { return m_hasReturnedFromGame; }

private:
    void checkVersions(const QJsonObject &patcherJson);
    void checkAgain();
    void setPlayable(bool isPlayable);
    void watchNetwork();
    void takeLoginReply(const LoginReply &reply);
    void loginSucceeded(const LoginReply &reply);
    void offerStoredCredentials();
    void hideWhileGameRuns();
    void returnFromGame();
    void runGame(const QString &executable);
    [[nodiscard]] std::variant<QString, GameFolder::Refusal> gameExecutable() const;
    void makeExecutable(const QString &gameExecutable) const;

    LauncherView &m_launcherView;
    QPointer<CustomTouchBarView> m_touchBarViewOrNil;
    const ControllerServices m_services;
    const std::unique_ptr<VARNOPostHelper> m_postHelper;
    std::atomic<bool> m_hasReturnedFromGame = false;
    std::atomic<bool> m_hasDisappeared = false; // ends the endless fetch of an unparsable manifest
    std::unique_ptr<Reachability> m_hostReachability; // null where the system has no source
    int m_previousInternetStatus = 0;
    std::optional<int> m_reachabilityObserver;

    std::mutex m_checkMutex;    // one check at a time; taken before m_mutex
    mutable std::mutex m_mutex; // guards everything below
    QJsonObject m_patcherJson;
    std::optional<QString> m_playCookie;
    std::optional<QString> m_gameserver;
    std::optional<QString> m_currentEnvironment;
    bool m_needDownloadPatcher = false; // kept as state; nothing reads it
    std::shared_ptr<VARNOPatcher> m_patcher;
};
