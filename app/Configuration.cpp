#include "app/Configuration.h"

#include <QDir>
#include <QRegularExpression>
#include <QStandardPaths>

namespace {

QString https(const QString &host, const QString &path)
{
    return QStringLiteral("https://") + host + path;
}

// An environment is typed by the player. One with a "/" or a ":" in it would name another host.
bool canBePartOfHostName(const QString &environment)
{
    static const QRegularExpression pattern(QStringLiteral("\\A[A-Za-z0-9._-]*\\z"));
    return pattern.match(environment).hasMatch();
}

} // namespace

Configuration Configuration::compiledIn()
{
    Configuration result;
    result.downloadHost = QStringLiteral(QUELLMOOR_DOWNLOAD_HOST);
    result.accountHost = QStringLiteral(QUELLMOOR_ACCOUNT_HOST);
    result.websiteHost = QStringLiteral(QUELLMOOR_WEBSITE_HOST);
    result.forumHost = QStringLiteral(QUELLMOOR_FORUM_HOST);
    result.wikiHost = QStringLiteral(QUELLMOOR_WIKI_HOST);
    result.extraCertificateFile = QStringLiteral(QUELLMOOR_EXTRA_CA_FILE);
    result.dataFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                        QStringLiteral("/Quellmoor");
    return result;
}

QString Configuration::gameFolder() const { return dataFolder + QStringLiteral("/Game"); }

QString Configuration::settingsFile() const
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/quellmoor-launcher/settings.sqlite");
}

QString Configuration::logFile()
{
#ifdef Q_OS_MACOS
    const QString folder = QDir::homePath() + QStringLiteral("/Library/Logs/Quellmoor Launcher");
#else
    const QString chosen = qEnvironmentVariable("XDG_STATE_HOME");
    const QString folder =
        (QDir::isAbsolutePath(chosen) ? chosen
                                      : QDir::homePath() + QStringLiteral("/.local/state")) +
        QStringLiteral("/quellmoor-launcher");
#endif
    return folder + QStringLiteral("/launcher.log");
}

std::optional<QString>
Configuration::downloadHostFor(const std::optional<QString> &environment) const
{
    if (!environment)
        return downloadHost;
    if (!canBePartOfHostName(*environment))
        return std::nullopt;
    static const QRegularExpression endOfFirstLabel(QStringLiteral("[.:]|\\z"));
    const qsizetype end = downloadHost.indexOf(endOfFirstLabel);
    return downloadHost.left(end) + QLatin1Char('-') + *environment + downloadHost.mid(end);
}

QString Configuration::manifestUrl(const std::optional<QString> &environment) const
{
    const auto host = downloadHostFor(environment);
    return host ? https(*host, QStringLiteral("/mac/patcher.json")) : QString();
}

QString Configuration::gameFilesUrl(const std::optional<QString> &environment) const
{
    const auto host = downloadHostFor(environment);
    return host ? https(*host, QStringLiteral("/mac/")) : QString();
}

QString Configuration::patchesUrl() const
{
    return https(downloadHost, QStringLiteral("/mac/patches/"));
}

QString Configuration::loginUrl() const { return https(accountHost, QStringLiteral("/login/")); }

QString Configuration::newsUrl() const { return https(accountHost, QStringLiteral("/launcher/")); }

QString Configuration::websiteUrl(const QString &path) const { return https(websiteHost, path); }

QString Configuration::forumUrl() const { return https(forumHost, QStringLiteral("/")); }

QString Configuration::wikiUrl() const
{
    return https(wikiHost, QStringLiteral("/wiki/Main_Page"));
}
