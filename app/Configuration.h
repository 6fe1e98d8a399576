#pragma once

#include <QString>
#include <QUrl>

#include <optional>

// Which hosts the launcher talks to and where it keeps its files. A plain value, made once at start
// and handed down.
struct Configuration
{
    // Each "host" or "host:port"; always spoken to over https.
    QString downloadHost;
    QString accountHost;
    QString websiteHost;
    QString forumHost;
    QString wikiHost;
    // A file of certificates trusted besides the system's; empty for none.
    QString extraCertificateFile;
    // The launcher data folder; the game lies in its folder "Game".
    QString dataFolder;

    // What was decided when the launcher was built, with the data folder of this user.
    static Configuration compiledIn();

    [[nodiscard]] QString gameFolder() const;
    [[nodiscard]] QString settingsFile() const;
    // Of the program, whatever the configuration: where this user's programs keep their logs.
    [[nodiscard]] static QString logFile();

    // The download host, or, with an environment, that host with "-" and the environment behind its
    // first label. Nothing when the environment cannot be a part of a host name; an empty one can.
    [[nodiscard]] std::optional<QString>
    downloadHostFor(const std::optional<QString> &environment) const;

    // URLs as text, ready for a request. Empty when the environment cannot be a part of a host
    // name.
    [[nodiscard]] QString manifestUrl(const std::optional<QString> &environment) const;
    [[nodiscard]] QString gameFilesUrl(const std::optional<QString> &environment) const;
    // Patches lie on the download host in every environment.
    [[nodiscard]] QString patchesUrl() const;
    [[nodiscard]] QString loginUrl() const;
    [[nodiscard]] QString newsUrl() const;
    // `path` begins with "/", or is empty for the host's root without a slash.
    [[nodiscard]] QString websiteUrl(const QString &path) const;
    [[nodiscard]] QString forumUrl() const;
    [[nodiscard]] QString wikiUrl() const;
};
