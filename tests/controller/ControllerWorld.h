#pragma once

#include "AdjustableHttpClient.h"
#include "CompressBzip2.h"
#include "FakeAlertPresenter.h"
#include "FakeBiometricContext.h"
#include "FakeReachability.h"
#include "FakeTimer.h"
#include "LogCapture.h"
#include "RecordingActivationPolicy.h"
#include "RecordingWorkspace.h"
#include "TestFolder.h"
#include "TestServer.h"
#include "account/LocalAuthenticationHandler.h"
#include "app/Configuration.h"
#include "controller/ViewController.h"
#include "platform/HttpClient.h"
#include "platform/UserDefaults.h"
#include "ui/CustomWindow.h"
#include "ui/LauncherView.h"

#include <memory>

// A controller with its real view, settings, files and network on a local server, between a
// desktop, a finger reader and a clock that the test holds in its hands.
class ControllerWorld
{
public:
    ControllerWorld();
    // Lets everything that is under way end.
    ~ControllerWorld();

    // Shows the window and starts the controller's life.
    void start();

    // Serves the manifest of these files and the files themselves, compressed. `others` are the
    // manifest's further members.
    void publish(const QMap<QString, QByteArray> &files, const QJsonObject &others = {});
    // Serves that as the manifest, whatever it is.
    void publishManifest(const QByteArray &text);
    // The answer to each login from now on.
    void answerLogin(const QJsonObject &reply);
    void answerLogin(const TestReply &reply) { server.route("/login/", reply); }

    // Types both texts and presses play.
    void login(const QString &username, const QString &password);

    [[nodiscard]] QString status() const;
    // The log's lines, without those of the clean-up of a folder that is not there yet.
    [[nodiscard]] QStringList logLines() const;
    [[nodiscard]] QString label(const char *name) const;
    [[nodiscard]] bool isShown(const char *name) const;
    // "METHOD host/path" of every request so far, without the news.
    [[nodiscard]] QStringList requests() const;
    // Requests whose path ends so.
    [[nodiscard]] int requestCount(const QByteArray &pathEnd) const;

    TestServer server;
    TestFolder folder;
    LogCapture log;
    Configuration configuration;
    std::unique_ptr<AdjustableHttpClient> httpClient;
    std::unique_ptr<UserDefaults> userDefaults;
    RecordingWorkspace workspace;
    RecordingActivationPolicy activationPolicy;
    FakeAlertPresenter alerts;
    FakeBiometricContext biometrics;
    FakeTimer timer;
    FakeReachability network;
    std::unique_ptr<LocalAuthenticationHandler> localAuthentication;
    bool isTerminated = false;
    // The texts of the status line so far.
    QStringList statuses;
    // The URLs that the news view was told to load.
    QStringList newsLoads;
    CustomWindow window;
    LauncherView *view = nullptr; // the window's
    std::shared_ptr<ViewController> controller;
};
