#include "controller/FileCheck.h"

#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "controller/TrustedFiles.h"
#include "model/GameFolder.h"
#include "model/VARNOPatchFile.h"
#include "model/VARNOResourceFile.h"
#include "model/ValidationCache.h"
#include "patcher/VARNOPatcher.h"
#include "platform/UserDefaults.h"

namespace {

// One run over the manifest. A file that has to be read is held back until the next such file is
// known, whose beginning the system then fetches while the first is hashed.
class Run
{
public:
    Run(const Configuration &configuration, UserDefaults &userDefaults,
        const std::optional<QString> &environment, bool disablePatching, VARNOPatcher &patcher)
        : m_gameFilesUrl(configuration.gameFilesUrl(environment)),
          m_patchesUrl(configuration.patchesUrl()),
          m_disablePatching(disablePatching),
          m_patcher(patcher),
          m_gameFolder(configuration.gameFolder()),
          m_cache(std::make_shared<ValidationCache>(userDefaults, m_gameFolder.path())),
          m_trustedFiles(m_gameFilesUrl, m_gameFolder, *m_cache)
    {
    }

    FileCheck::Result check(const QJsonObject &files, const FileCheck::Progress &progress)
    {
        std::optional<FileToRead> heldBack;
        const auto readHeldBack = [&] {
            if (!heldBack)
                return;
            read(*heldBack);
            count(files.size(), progress);
        };
        for (auto entry = files.constBegin(); entry != files.constEnd(); ++entry) {
            const QString key = entry.key();
            const QJsonValue value = entry.value();
            if (isTrusted(key, value)) {
                count(files.size(), progress);
            } else if (const auto path = acceptedPath(key)) {
                if (heldBack)
                    FileSystem::willRead(*path);
                readHeldBack();
                heldBack = {key, *path, value};
            }
        }
        readHeldBack();
        m_result.trustedCount = m_cache->trustedCount();
        return m_result;
    }

private:
    struct FileToRead
    {
        QString key;
        QString path;
        QJsonValue value;
    };

    [[nodiscard]] bool isTrusted(const QString &key, const QJsonValue &value)
    {
        const QJsonValue hash = value[QStringLiteral("hash")];
        return hash.isString() && m_trustedFiles.contains(key, hash.toString());
    }

    [[nodiscard]] std::optional<QString> acceptedPath(const QString &key)
    {
        auto path = m_gameFolder.pathFor(key);
        if (const auto *refusal = std::get_if<GameFolder::Refusal>(&path)) {
            ErrorHandler::log(QStringLiteral("The manifest's file %1 is left out: %2.")
                                  .arg(key, refusal->reason));
            ++m_result.refusedCount;
            return std::nullopt;
        }
        return std::get<QString>(std::move(path));
    }

    void read(const FileToRead &what)
    {
        const auto file =
            std::make_shared<VARNOResourceFile>(TrustedFiles::downloadUrl(m_gameFilesUrl, what.key),
                                                what.path, what.value, m_cache, m_patchesUrl);
        if (file->isValid()) {
            // A write only began after the file's entry was gone, so that a killed launcher leaves
            // nothing beside a file that is trusted; beside a wrong one the next write takes it
            // over.
            FileSystem::removeUnfinishedWrite(what.path);
            return;
        }
        ++m_result.invalidCount;
        enqueueWhatIsNeeded(file);
    }

    void enqueueWhatIsNeeded(const std::shared_ptr<VARNOResourceFile> &file)
    {
        if (!m_disablePatching)
            file->determinePatchFiles();
        if (m_disablePatching || file->patchFiles().isEmpty()) {
            m_patcher.enqueueWithFile(file);
            return;
        }
        for (const auto &patch : file->patchFiles())
            m_patcher.enqueueWithFile(patch);
    }

    void count(qint64 totalCount, const FileCheck::Progress &progress)
    {
        ++m_result.checkedCount;
        if (progress)
            progress(m_result.checkedCount, totalCount);
    }

    const QString m_gameFilesUrl;
    const QString m_patchesUrl;
    const bool m_disablePatching;
    VARNOPatcher &m_patcher;
    GameFolder m_gameFolder;
    const std::shared_ptr<ValidationCache> m_cache;
    TrustedFiles m_trustedFiles;
    FileCheck::Result m_result;
};

} // namespace

FileCheck::FileCheck(const Configuration &configuration, UserDefaults &userDefaults)
    : m_configuration(configuration), m_userDefaults(userDefaults)
{
}

FileCheck::Result FileCheck::run(const QJsonObject &files,
                                 const std::optional<QString> &environment, bool disablePatching,
                                 VARNOPatcher &patcher, const Progress &progress) const
{
    const Result result =
        Run(m_configuration, m_userDefaults, environment, disablePatching, patcher)
            .check(files, progress);
    m_userDefaults.synchronize();
    return result;
}
