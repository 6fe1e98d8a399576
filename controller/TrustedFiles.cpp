#include "controller/TrustedFiles.h"

#include "account/VARNOPostHelper.h"
#include "model/GameFolder.h"
#include "platform/HttpUrl.h"

#include <QFile>

#include <algorithm>

namespace {

constexpr auto Slash = QLatin1Char('/');
constexpr QLatin1String Suffix{".bz2"};

// Whether encoding and decoding it in the path of a URL yields it again; a "?" would begin the
// URL's query.
bool isPlain(QStringView text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [](QChar c) { return c >= u' ' && c <= u'~' && c != u'?'; });
}

} // namespace

TrustedFiles::TrustedFiles(QString gameFilesUrl, GameFolder &gameFolder, ValidationCache &cache)
    : m_gameFilesUrl(std::move(gameFilesUrl)),
      m_urlPath(
          HttpUrl::fromText(VARNOPostHelper::urlEncode(m_gameFilesUrl)).path(QUrl::FullyDecoded)),
      m_gameFolder(gameFolder),
      m_cache(cache)
{
}

QUrl TrustedFiles::downloadUrl(const QString &gameFilesUrl, const QString &key)
{
    return HttpUrl::fromText(VARNOPostHelper::urlEncode(gameFilesUrl + key + Suffix));
}

bool TrustedFiles::contains(const QString &key, const QString &hash)
{
    const bool isKeyPlain = isPlain(key);
    const qsizetype nameStart = key.lastIndexOf(Slash) + 1;
    if (!enterFolderOf(key, nameStart, isKeyPlain))
        return false;
    setKeysFor(key, isKeyPlain);
    setName(QStringView(key).mid(nameStart), isKeyPlain);
    return m_cache.isTrusted(m_keys, m_folder->modificationDate(m_name), hash);
}

// A plain key in the folder of an accepted one, and not longer, can only be refused for what its
// last part is, and of what no file can be named there is no date either.
bool TrustedFiles::enterFolderOf(const QString &key, qsizetype nameStart, bool isKeyPlain)
{
    const QStringView folderKey = QStringView(key).left(nameStart);
    const bool isSameFolder = m_folder && m_folderKey == folderKey;
    if (isSameFolder && isKeyPlain && key.size() <= m_longestKey)
        return true;
    const auto place = m_gameFolder.pathFor(key);
    const auto *path = std::get_if<QString>(&place);
    if (!path)
        return false;
    if (isSameFolder) {
        m_longestKey = std::max(m_longestKey, key.size());
        return true;
    }
    m_folder.emplace(path->left(path->lastIndexOf(Slash) + 1));
    m_folderKey = folderKey.toString();
    m_longestKey = key.size();
    return true;
}

void TrustedFiles::setKeysFor(const QString &key, bool isKeyPlain)
{
    const auto set = [](QString &text, QLatin1String prefix, const auto &...pieces) {
        text.truncate(0); // keeps its memory
        text += prefix;
        (text.append(pieces), ...);
    };
    const auto setBoth = [this, &set](const auto &...pieces) {
        set(m_keys.date, ValidationCache::DateKeyPrefix, pieces...);
        set(m_keys.hash, ValidationCache::HashKeyPrefix, pieces...);
    };
    if (isKeyPlain && !m_urlPath.isEmpty())
        setBoth(m_urlPath, key, Suffix);
    else
        setBoth(downloadUrl(m_gameFilesUrl, key).path(QUrl::FullyDecoded));
}

void TrustedFiles::setName(QStringView name, bool isKeyPlain)
{
    if (!isKeyPlain) {
        m_name = QFile::encodeName(name.toString());
        return;
    }
    m_name.resize(name.size());
    std::transform(name.cbegin(), name.cend(), m_name.begin(),
                   [](QChar c) { return char(c.unicode()); });
}
