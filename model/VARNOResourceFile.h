#pragma once

#include "patcher/Downloadable.h"
#include "platform/FileSystem.h"

#include <QJsonValue>
#include <QList>

#include <memory>

class ValidationCache;
class VARNOPatchFile;

// One game file as the manifest lists it. Any thread, one at a time; isValid() and
// determinePatchFiles() read the file and so never run on the main thread.
class VARNOResourceFile final : public Downloadable
{
public:
    using PatchFiles = QList<std::shared_ptr<VARNOPatchFile>>;

    // `downloadURL` of the whole file, percent-encoded; `localPath` absolute; `data` the manifest's
    // entry: whatever of it is missing or of another type is absent in the record. `patchesUrl`
    // ends in a slash. The record keeps the cache.
    VARNOResourceFile(QUrl downloadURL, QString localPath, const QJsonValue &data,
                      std::shared_ptr<ValidationCache> cache, const QString &patchesUrl);

    [[nodiscard]] QUrl downloadURL() const override { return m_downloadURL; }
    [[nodiscard]] const QString &localPath() const { return m_localPath; }
    // The entry's "path" and "hash".
    [[nodiscard]] const std::optional<QString> &directoryPath() const { return m_directoryPath; }
    [[nodiscard]] const std::optional<QString> &hashValue() const { return m_hashValue; }
    // All patches listed; after determinePatchFiles() the chosen chain only.
    [[nodiscard]] const PatchFiles &patchFiles() const { return m_patchFiles; }
    // The decoded path of the URL; it names the cache's entries.
    [[nodiscard]] QString name() const;

    // Names are any text, "_", the hash before, "_", the hash after, ".patch"; others are logged
    // and left out. An object's member names serve like an array's strings.
    [[nodiscard]] PatchFiles parsePatchFiles(const QJsonValue &names) const;
    // Keeps the chain of patches that leads from the file on disk to the wanted version, or none.
    void determinePatchFiles();

    // Same URL, "path" and "hash". The local path and the patches do not matter.
    [[nodiscard]] bool isEqual(const Downloadable *other) const;

    [[nodiscard]] bool localFileExists() const;
    // Nothing for a missing file and for what is not a regular file.
    [[nodiscard]] std::optional<Date> lastModified() const;
    [[nodiscard]] QString lastValidDateKey() const;
    [[nodiscard]] QString lastValidHashKey() const;
    // Whether the file on disk is the one that the manifest wants: by the cache while its date has
    // not moved since it was last found valid, else by reading it. Keeps the answer in the cache.
    [[nodiscard]] bool isValid() const;
    // The first 7 digits of the digest; nothing when the file cannot be read.
    [[nodiscard]] static std::optional<QString> hashFileAtPath(const QString &path);

    // Makes the folders above and puts the file there whole or not at all.
    void writeToDisk(const std::optional<QByteArray> &data,
                     const WriteCompletion &completion) override;

private:
    const QUrl m_downloadURL;
    const QString m_localPath;
    const std::shared_ptr<ValidationCache> m_cache;
    const QString m_patchesUrl;
    std::optional<QString> m_directoryPath;
    std::optional<QString> m_hashValue;
    PatchFiles m_patchFiles;
};
