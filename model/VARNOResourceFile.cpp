#include "model/VARNOResourceFile.h"

#include "model/PatchSolver.h"
#include "model/SHA256.h"
#include "model/VARNOPatchFile.h"
#include "model/ValidationCache.h"
#include "platform/SystemLog.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

constexpr qsizetype ShortHashLength = 7;

std::optional<QString> stringOf(const QJsonValue &value)
{
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

QStringList namesIn(const QJsonValue &collection)
{
    if (collection.isObject())
        return collection.toObject().keys();
    QStringList names;
    const QJsonArray array = collection.toArray();
    for (const QJsonValue element : array) {
        if (element.isString())
            names += element.toString();
    }
    return names;
}

QString parentFolder(const QString &path) { return path.left(path.lastIndexOf(QLatin1Char('/'))); }

QString lastPathComponent(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

} // namespace

VARNOResourceFile::VARNOResourceFile(QUrl downloadURL, QString localPath, const QJsonValue &data,
                                     std::shared_ptr<ValidationCache> cache,
                                     const QString &patchesUrl)
    : m_downloadURL(std::move(downloadURL)),
      m_localPath(std::move(localPath)),
      m_cache(std::move(cache)),
      m_patchesUrl(patchesUrl),
      m_directoryPath(stringOf(data[QStringLiteral("path")])),
      m_hashValue(stringOf(data[QStringLiteral("hash")])),
      m_patchFiles(parsePatchFiles(data[QStringLiteral("patches")]))
{
}

QString VARNOResourceFile::name() const { return m_downloadURL.path(QUrl::FullyDecoded); }

VARNOResourceFile::PatchFiles VARNOResourceFile::parsePatchFiles(const QJsonValue &names) const
{
    PatchFiles patches;
    for (const QString &name : namesIn(names)) {
        const QStringList pieces =
            QString(name).remove(QStringLiteral(".patch")).split(QLatin1Char('_'));
        if (pieces.size() < 2) {
            SystemLog::write(QStringLiteral("Invalid patch file"));
            continue;
        }
        patches += std::make_shared<VARNOPatchFile>(name, m_localPath, pieces[pieces.size() - 2],
                                                    pieces.last(), m_patchesUrl);
    }
    return patches;
}

void VARNOResourceFile::determinePatchFiles()
{
    PatchSolver solver;
    m_patchFiles = solver.solve(m_patchFiles, hashFileAtPath(m_localPath), m_hashValue);
}

bool VARNOResourceFile::isEqual(const Downloadable *other) const
{
    if (other == this)
        return true;
    const auto *file = dynamic_cast<const VARNOResourceFile *>(other);
    return file && file->m_downloadURL == m_downloadURL &&
           file->m_directoryPath == m_directoryPath && file->m_hashValue == m_hashValue;
}

bool VARNOResourceFile::localFileExists() const { return FileSystem::exists(m_localPath); }

std::optional<Date> VARNOResourceFile::lastModified() const
{
    return FileSystem::modificationDate(m_localPath);
}

QString VARNOResourceFile::lastValidDateKey() const
{
    return ValidationCache::DateKeyPrefix + name();
}

QString VARNOResourceFile::lastValidHashKey() const
{
    return ValidationCache::HashKeyPrefix + name();
}

bool VARNOResourceFile::isValid() const
{
    const ValidationCache::Keys keys{lastValidDateKey(), lastValidHashKey()};
    // The date from before the file is read: a change meanwhile makes the entry worthless, as it
    // should.
    const std::optional<Date> modified = lastModified();
    if (m_cache->isTrusted(keys, modified, m_hashValue))
        return true;
    const std::optional<QString> hash = hashFileAtPath(m_localPath);
    if (!hash || hash != m_hashValue) {
        m_cache->forget(keys);
        return false;
    }
    m_cache->record(keys, modified, *hash);
    return true;
}

std::optional<QString> VARNOResourceFile::hashFileAtPath(const QString &path)
{
    std::optional<QString> digest = SHA256OfFile(path);
    if (digest)
        digest->truncate(ShortHashLength);
    return digest;
}

void VARNOResourceFile::writeToDisk(const std::optional<QByteArray> &data,
                                    const WriteCompletion &completion)
{
    std::optional<Error> error;
    if (data) {
        const QString folder = parentFolder(m_localPath);
        if (!FileSystem::exists(folder))
            FileSystem::createDirectory(folder); // what went wrong shows in the write
        error = FileSystem::writeAtomically(m_localPath, *data);
    }
    completion(lastPathComponent(m_localPath), error, QString::fromLatin1(""));
}
