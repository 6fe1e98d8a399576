#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "platform/AlertPresenter.h"
#include "platform/Alerts.h"
#include "platform/DispatchQueue.h"
#include "platform/FileSystem.h"
#include "platform/HttpClient.h"
#include "platform/Limits.h"
#include "platform/Workspace.h"
#include "ui/LauncherView.h"

#include <algorithm>

namespace {

QString installerName(const QString &version)
{
    return QStringLiteral("VARNO_darwin_setup_%1.dmg").arg(version);
}

// A version comes from the manifest. One that names another folder names no installer.
bool canNameAFile(const QString &version)
{
    return !version.contains(QLatin1Char('/')) && !version.contains(QChar(0)) &&
           !version.startsWith(QLatin1Char('.'));
}

// Nothing when the version, which is used as it is, holds what a URL cannot hold.
std::optional<QUrl> installerUrl(const Configuration &configuration, const QString &version)
{
    const bool isAscii = std::all_of(version.begin(), version.end(), [](QChar c) {
        return c > QLatin1Char(' ') && c.unicode() < 0x7f;
    });
    const QUrl url(
        QStringLiteral("https://%1/%2").arg(configuration.downloadHost, installerName(version)),
        QUrl::StrictMode);
    if (!isAscii || !canNameAFile(version) || !url.isValid())
        return std::nullopt;
    return url;
}

void openDownloadPage(const LauncherViewServices &services)
{
    services.workspace.openURL(
        QUrl(services.configuration.websiteUrl(QStringLiteral("/play/?update=1"))));
    services.terminate();
}

// Background. Whatever happens, the launcher ends.
void fetchInstaller(const LauncherViewServices &services, const QString &version)
{
    const auto url = installerUrl(services.configuration, version);
    std::optional<QByteArray> image;
    if (url)
        image = services.httpClient.dataWithContentsOfURL(*url, Limits::Installer).data;
    if (!image)
        openDownloadPage(services);

    if (canNameAFile(version)) {
        const QString path =
            services.configuration.dataFolder + QLatin1Char('/') + installerName(version);
        // Without an image nothing is written and nothing fails, so that whatever lies at the path
        // from before is opened beside the page.
        const auto error = image ? FileSystem::write(path, *image) : std::nullopt;
        if (error) {
            ErrorHandler::log(*error);
            openDownloadPage(services);
        } else {
            services.workspace.openFile(path, QStringLiteral("DiskImageMounter"));
        }
    }
    services.terminate();
}

} // namespace

void LauncherView::showLauncherOutOfDate(const QString &version)
{
    hideLoginForm(true);
    Alert alert;
    alert.messageText = Alerts::tr("Launcher Update Required");
    alert.buttons = {Alerts::tr("Update"), Alerts::tr("Exit Launcher")};
    alert.informativeText = Alerts::tr("There is a required update available for the launcher.");
    if (m_services->alertPresenter.runModal(alert) != AlertPresenter::FirstButtonReturn) {
        m_services->terminate();
        return;
    }
    setStatus(QStringLiteral("Downloading new launcher..."));
    DispatchQueue::global(DispatchQueue::QualityOfService::High)
        ->async([services = *m_services, version] { fetchInstaller(services, version); });
}

void LauncherView::showDownloadLink() { openDownloadPage(*m_services); }
