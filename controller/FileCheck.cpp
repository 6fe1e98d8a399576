#include "controller/FileCheck.h"

#include "account/VARNOPostHelper.h"
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "model/GameFolder.h"
#include "model/VARNOPatchFile.h"
#include "model/VARNOResourceFile.h"
#include "model/ValidationCache.h"
#include "patcher/VARNOPatcher.h"
#include "platform/UserDefaults.h"

namespace {

QUrl downloadUrl(const QString &base, const QString &key)
{
    const QString text = VARNOPostHelper::urlEncode(base + key + QStringLiteral(".bz2"));
    return QUrl(text, QUrl::StrictMode);
}

void enqueueWhatIsNeeded(const std::shared_ptr<VARNOResourceFile> &file, bool disablePatching,
                         VARNOPatcher &patcher)
{
    if (!disablePatching)
        file->determinePatchFiles();
    if (disablePatching || file->patchFiles().isEmpty()) {
        patcher.enqueueWithFile(file);
        return;
    }
    for (const auto &patch : file->patchFiles())
        patcher.enqueueWithFile(patch);
}

} // namespace

FileCheck::FileCheck(const Configuration &configuration, UserDefaults &userDefaults)
    : m_configuration(configuration), m_userDefaults(userDefaults)
{
}

FileCheck::Result FileCheck::run(const QJsonObject &files,
                                 const std::optional<QString> &environment, bool disablePatching,
                                 VARNOPatcher &patcher, const Progress &progress) const
{
    Result result;
    GameFolder gameFolder(m_configuration.gameFolder());
    const auto cache = std::make_shared<ValidationCache>(m_userDefaults, gameFolder.path());
    const QString base = m_configuration.gameFilesUrl(environment);
    const QString patchesUrl = m_configuration.patchesUrl();

    for (auto entry = files.constBegin(); entry != files.constEnd(); ++entry) {
        const auto path = gameFolder.pathFor(entry.key());
        if (const auto *refusal = std::get_if<GameFolder::Refusal>(&path)) {
            ErrorHandler::log(QStringLiteral("The manifest's file %1 is left out: %2.")
                                  .arg(entry.key(), refusal->reason));
            ++result.refusedCount;
            continue;
        }
        const auto file = std::make_shared<VARNOResourceFile>(downloadUrl(base, entry.key()),
                                                              std::get<QString>(path),
                                                              entry.value(), cache, patchesUrl);
        if (!file->isValid()) {
            ++result.invalidCount;
            enqueueWhatIsNeeded(file, disablePatching, patcher);
        }
        ++result.checkedCount;
        if (progress)
            progress(result.checkedCount, files.size());
    }
    result.trustedCount = cache->trustedCount();
    m_userDefaults.synchronize();
    return result;
}
