#include "controller/ViewController.h"

#include "account/VARNOPostHelper.h"
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "controller/Manifest.h"
#include "controller/Reachability.h"
#include "patcher/VARNOPatcher.h"
#include "platform/ActivationPolicy.h"
#include "platform/DispatchQueue.h"
#include "platform/FileSystem.h"
#include "platform/NotificationCenter.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "ui/CustomTouchBarView.h"
#include "ui/CustomWindow.h"
#include "ui/InterfaceLoader.h"
#include "ui/LauncherView.h"
#include "ui/TextField.h"
#include "ui/VARNOProgressView.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <filesystem>
#include <vector>

using QualityOfService = DispatchQueue::QualityOfService;

ViewController::ViewController(LauncherView &launcherView, const ControllerServices &services)
    : m_launcherView(launcherView),
      m_services(services),
      m_postHelper(std::make_unique<VARNOPostHelper>(services.httpClient))
{
}

ViewController::~ViewController() = default;

void ViewController::viewDidLoad()
{
    setup();
    DispatchQueue::global(QualityOfService::High)->async([self = shared_from_this()] {
        self->createApplicationSupportDir();
    });
    m_launcherView.setDelegate(this);
    if (auto *window = qobject_cast<CustomWindow *>(m_launcherView.window()))
        window->center();
    m_reachabilityObserver = NotificationCenter::defaultCenter().addObserver(
        Reachability::ChangedNotification, [this](const void *) { checkNetworkStatus(); });
    m_services.reachability.whenReady([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self || self->m_hasDisappeared)
            return;
        self->watchNetwork();
        DispatchQueue::global(QualityOfService::Background)->async([self] {
            self->cleanUpOldDMGFiles();
        });
    });
}

void ViewController::setup()
{
    m_services.activationPolicy.setActivationPolicy(ActivationPolicy::Policy::Regular);
    m_launcherView.prepareForLogin();
    {
        const std::lock_guard lock(m_mutex);
        m_currentEnvironment.reset();
        m_needDownloadPatcher = true;
    }
    downloadPatcherJSON(m_services.configuration.manifestUrl(currentEnvironment()));
    setPlayable(false);
    m_launcherView.setPlayButtonEnabled(true);
    if (const auto previousUser = m_services.userDefaults.string(QStringLiteral("prevUser")))
        m_launcherView.accountIDField()->setStringValue(*previousUser);
}

void ViewController::viewDidAppear() { m_launcherView.accountIDField()->becomeFirstResponder(); }

void ViewController::viewWillDisappear()
{
    m_hasDisappeared = true;
    if (const auto token = std::exchange(m_reachabilityObserver, std::nullopt))
        NotificationCenter::defaultCenter().removeObserver(*token);
    m_launcherView.setDelegate(nullptr);
    // The engine holds its delegate: without this neither would ever go.
    if (const auto engine = patcher())
        engine->setDelegate(nullptr);
}

// The whole login URL stands where a host's name belongs; it is kept so.
void ViewController::watchNetwork()
{
    m_hostReachability = Reachability::reachabilityWithHostName(
        m_services.reachability, m_services.configuration.loginUrl());
    if (!m_hostReachability)
        return;
    m_previousInternetStatus = m_hostReachability->currentReachabilityStatus();
    m_hostReachability->startNotifier();
}

void ViewController::checkNetworkStatus()
{
    if (!m_hostReachability || m_previousInternetStatus != NotReachable ||
        m_hostReachability->currentReachabilityStatus() == NotReachable)
        return;
    downloadPatcherJSON(m_services.configuration.manifestUrl(currentEnvironment()));
    m_launcherView.downloadNews();
}

void ViewController::createApplicationSupportDir()
{
    const QString folder = m_services.configuration.dataFolder;
    if (QFileInfo::exists(folder))
        return;
    if (const auto error = FileSystem::createDirectory(folder))
        ErrorHandler::log(*error);
}

void ViewController::cleanUpOldDMGFiles()
{
    const QString path = m_services.configuration.dataFolder;
    std::error_code error;
    std::filesystem::directory_iterator item(QFile::encodeName(path).toStdString(), error);
    std::vector<std::filesystem::path> images;
    for (; !error && item != std::filesystem::directory_iterator(); item.increment(error)) {
        if (item->path().filename().string().ends_with(".dmg"))
            images.push_back(item->path());
    }
    if (error) {
        ErrorHandler::log(Error{QStringLiteral("Cannot list %1: %2")
                                    .arg(path, QString::fromLocal8Bit(error.message().c_str())),
                                error.value()});
        return;
    }
    // Links go, what they lead to stays; what cannot be removed stays, too.
    for (const auto &image : images)
        std::filesystem::remove_all(image, error);
}

void ViewController::downloadPatcherJSON(const QString &url, const Completion &completion)
{
    DispatchQueue::global(QualityOfService::High)
        ->async([self = shared_from_this(), url, completion] {
            if (self->m_hasDisappeared)
                return;
            const Manifest::Fetched fetched = Manifest::fetch(self->m_services.httpClient, url);
            if (fetched.outcome == Manifest::Fetched::Outcome::NoData)
                return;
            self->didFinishDownloadingPatcherJSON(fetched.json, url, fetched.error, completion);
        });
}

void ViewController::didFinishDownloadingPatcherJSON(const QJsonObject &patcherJson,
                                                     const QString &url,
                                                     const std::optional<Error> &error,
                                                     const Completion &completion)
{
    if (error) {
        ErrorHandler::log(*error);
        downloadPatcherJSON(url, completion); // without limit and without delay, deliberately
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_needDownloadPatcher = false;
        m_patcherJson = patcherJson;
    }
    DispatchQueue::main()->async(
        [self = shared_from_this(), patcherJson] { self->checkVersions(patcherJson); });
    constexpr bool disablePatching = true;
    checkFiles(patcherJson[QStringLiteral("files")].toObject(), disablePatching);
    if (completion)
        DispatchQueue::main()->async(completion);
}

void ViewController::checkVersions(const QJsonObject &patcherJson)
{
    const QJsonValue serverVersion = patcherJson[QStringLiteral("server-version")];
    if (serverVersion.isString())
        m_launcherView.setServerVersion(serverVersion.toString());

    const QJsonValue launcherVersion = patcherJson[QStringLiteral("mac-launcher-version")];
    if (launcherVersion.isString() &&
        launcherVersion.toString() != QCoreApplication::applicationVersion() &&
        !currentEnvironment())
        m_launcherView.showLauncherOutOfDate(launcherVersion.toString());
}

void ViewController::startThePatcher()
{
    DispatchQueue::main()->async([self = shared_from_this()] {
        self->m_launcherView.swordsmenImage()->setHidden(false);
        self->m_launcherView.patcherProgressBar()->setValue(0.0);
        if (const auto engine = self->patcher())
            engine->start();
    });
}

std::unique_ptr<QWidget> ViewController::loadWithNibNamed(const QString &name,
                                                          const QMetaObject &aClass)
{
    std::unique_ptr<QWidget> root(InterfaceLoader().load(name));
    if (!root) {
        SystemLog::write(QStringLiteral("Couldn't load nib named ") + name);
        return nullptr;
    }
    if (root->metaObject()->inherits(&aClass))
        return root;
    for (QObject *object : InterfaceLoader::topLevelObjects(root.get())) {
        auto *widget = qobject_cast<QWidget *>(object);
        if (widget && widget->metaObject()->inherits(&aClass)) {
            widget->setParent(nullptr); // outlives its root
            return std::unique_ptr<QWidget>(widget);
        }
    }
    return nullptr;
}

std::optional<QString> ViewController::currentEnvironment() const
{
    const std::lock_guard lock(m_mutex);
    return m_currentEnvironment;
}

QJsonObject ViewController::patcherJson() const
{
    const std::lock_guard lock(m_mutex);
    return m_patcherJson;
}

std::shared_ptr<VARNOPatcher> ViewController::patcher() const
{
    const std::lock_guard lock(m_mutex);
    return m_patcher;
}

bool ViewController::needDownloadPatcher() const
{
    const std::lock_guard lock(m_mutex);
    return m_needDownloadPatcher;
}

std::optional<QString> ViewController::playCookie() const
{
    const std::lock_guard lock(m_mutex);
    return m_playCookie;
}

std::optional<QString> ViewController::gameserver() const
{
    const std::lock_guard lock(m_mutex);
    return m_gameserver;
}
