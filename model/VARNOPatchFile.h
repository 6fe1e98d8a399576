#pragma once

#include "patcher/Downloadable.h"

// One binary patch of the manifest: it turns one version of a game file into another. Immutable;
// any thread.
class VARNOPatchFile final : public Downloadable
{
public:
    // `name` as listed, ".patch" included; `localPath` of the file that it changes; short hashes of
    // the versions before and after; `patchesUrl` ends in a slash.
    VARNOPatchFile(QString name, QString localPath, QString fromHash, QString toHash,
                   QString patchesUrl);

    [[nodiscard]] const QString &name() const { return m_name; }
    [[nodiscard]] const QString &fromHash() const { return m_fromHash; }
    [[nodiscard]] const QString &toHash() const { return m_toHash; }
    [[nodiscard]] const QString &localPath() const { return m_localPath; }

    // `name` and ".bz2" below the patches' URL, without any encoding: a name that would need it
    // gives an invalid URL.
    [[nodiscard]] QUrl downloadURL() const override;
    // Where the patch is kept: `name` in the process's temporary directory.
    [[nodiscard]] QString filePath() const;

    // Keeps the patch at filePath() and prepares its application. A name that is not that of a file
    // in the temporary directory is an error, and nothing is written.
    void writeToDisk(const std::optional<QByteArray> &data,
                     const WriteCompletion &completion) override;

    // Prepares the process that would apply the patch and returns an empty text. The process is
    // not started: a file that went through patches fails its next check and is fetched whole.
    [[nodiscard]] QString applyPatch() const;
    // The command line of that process, with blanks in the tool's and the target's path escaped.
    [[nodiscard]] QString applyPatchCommand() const;

private:
    [[nodiscard]] std::optional<Error> keep(const QByteArray &data) const;

    const QString m_name;
    const QString m_fromHash;
    const QString m_toHash;
    const QString m_localPath;
    const QString m_patchesUrl;
};
