#pragma once

#include "model/ValidationCache.h"
#include "platform/FileSystem.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <optional>

class GameFolder;

// Recognises the files that an earlier check found valid and that have not moved since, at the
// price of one attribute read each: no record of the file is made, the folder stays open while
// files lie in it, and what is asked for each file is put together in the same memory. Made for one
// check, in which files of one folder follow one another. One thread at a time.
class TrustedFiles
{
public:
    // `gameFilesUrl` ends in a slash. The references must outlive this.
    TrustedFiles(QString gameFilesUrl, GameFolder &gameFolder, ValidationCache &cache);

    // Where the file with that key is fetched.
    [[nodiscard]] static QUrl downloadUrl(const QString &gameFilesUrl, const QString &key);

    // Whether the file with that key of the manifest is valid against that hash without being read,
    // which is then counted in the cache. False also for a key that names no file.
    [[nodiscard]] bool contains(const QString &key, const QString &hash);

private:
    [[nodiscard]] bool enterFolderOf(const QString &key, qsizetype nameStart, bool isKeyPlain);
    void setKeysFor(const QString &key, bool isKeyPlain);
    void setName(QStringView name, bool isKeyPlain);

    const QString m_gameFilesUrl;
    const QString m_urlPath; // of the game files' URL; empty when that is not valid
    GameFolder &m_gameFolder;
    ValidationCache &m_cache;

    // The folder of the last file, as its key names it, and the longest key accepted in it.
    QString m_folderKey;
    qsizetype m_longestKey = -1;
    std::optional<FileSystem::Folder> m_folder;

    ValidationCache::Keys m_keys; // of the last file
    QByteArray m_name;
};
