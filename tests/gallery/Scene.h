#pragma once

#include "Camera.h"
#include "FakeBiometricContext.h"
#include "RecordingWorkspace.h"
#include "account/LocalAuthenticationHandler.h"
#include "app/Configuration.h"
#include "app/Translations.h"
#include "platform/HttpClient.h"
#include "platform/TouchBar.h"
#include "platform/UserDefaults.h"
#include "ui/AlertPanelPresenter.h"
#include "ui/CustomWindow.h"
#include "ui/FingerprintPrompt.h"
#include "ui/LauncherView.h"

#include <QTemporaryDir>

// What a scene is played in.
struct Setting
{
    bool isOnline = true;
    QString language = QStringLiteral("en");
};

// The launcher's window with all that it needs, on the screen; none of it leaves the machine, and
// only the local hosts are asked. Main thread only.
class Scene final : private TouchBarDelegate
{
public:
    Scene(Camera &sceneCamera, const Setting &setting);
    ~Scene() override;

    // Waits until the news can be read, or for as long as that takes at most.
    void waitForNews() const;

    void fill() const;
    void show(double progress, const QString &status) const;
    void ask(const QString &message, const QString &explanation, const QStringList &buttons,
             std::optional<AlertTextField> field = std::nullopt);
    void showTouchBar(bool isPlayable);

    // Pictures of the window with all that belongs to it, of some window, or of a control with
    // what is around it.
    void take(const QString &name) const;
    void take(const QString &name, const QWidget &control) const;

    [[nodiscard]] QWidget &child(const char *name) const;

    Camera &camera;
    Configuration configuration = Configuration::compiledIn();
    std::unique_ptr<Translations> translations;
    std::unique_ptr<HttpClient> httpClient;
    QTemporaryDir folder;
    UserDefaults userDefaults{folder.filePath(QStringLiteral("settings.sqlite"))};
    RecordingWorkspace workspace;
    AlertPanelPresenter alerts;
    FakeBiometricContext biometrics;
    LocalAuthenticationHandler stored{biometrics, userDefaults, alerts};
    FingerprintPrompt fingerprint;
    CustomWindow window{QRect(0, 0, 1, 1)};
    LauncherView *view = nullptr; // the window's

private:
    std::unique_ptr<CustomTouchBarItem>
    touchBarMakeItemForIdentifier(const TouchBar &touchBar, const QString &identifier) override;

    bool m_isPlayable = false;
    std::unique_ptr<TouchBarHost> m_touchBarHost;
};
