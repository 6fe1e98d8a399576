#include "model/GameFolder.h"

#include <QFile>
#include <QFileInfo>

#include <climits>
#include <filesystem>

namespace {

constexpr auto Slash = QLatin1Char('/');

constexpr qsizetype LongestName = NAME_MAX;

// Empty when there is none. QFileInfo takes a ring of links for a path.
QString canonicalPath(const QString &path)
{
    std::error_code error;
    const auto canonical = std::filesystem::canonical(QFile::encodeName(path).toStdString(), error);
    return error ? QString() : QFile::decodeName(canonical.c_str());
}

} // namespace

GameFolder::GameFolder(QString path)
    : m_path(std::move(path)), m_canonicalPath(canonicalPath(m_path))
{
}

std::variant<QString, GameFolder::Refusal> GameFolder::pathFor(const QString &key)
{
    const QString reason = reasonAgainstName(key);
    if (!reason.isEmpty())
        return Refusal{reason};
    const qsizetype slash = key.lastIndexOf(Slash);
    if (slash >= 0 && !isInside(key.left(slash)))
        return Refusal{QStringLiteral("a link leads out of the game folder")};
    return m_path + Slash + key;
}

QString GameFolder::reasonAgainstName(const QString &key) const
{
    if (key.contains(QChar(u'\0')))
        return QStringLiteral("it holds a NUL character");
    if (QFile::encodeName(m_path).size() + QFile::encodeName(key).size() + 2 > PATH_MAX)
        return QStringLiteral("it is too long");
    for (const QStringView component : QStringView(key).split(Slash)) {
        if (component.isEmpty() || component == QLatin1String(".") ||
            component == QLatin1String(".."))
            return QStringLiteral("it does not name a file in the game folder");
        if (component.size() > LongestName ||
            QFile::encodeName(component.toString()).size() > LongestName)
            return QStringLiteral("a name in it is too long");
    }
    return {};
}

bool GameFolder::isInside(const QString &relativeFolder)
{
    const auto known = m_isInside.constFind(relativeFolder);
    if (known != m_isInside.cend())
        return *known;

    const qsizetype slash = relativeFolder.lastIndexOf(Slash);
    bool isInside = slash < 0 || this->isInside(relativeFolder.left(slash));
    const QFileInfo folder(m_path + Slash + relativeFolder);
    if (isInside && folder.isSymbolicLink()) {
        // A link that leads nowhere or in a ring has no canonical path, nor has a game folder that
        // was not there at first: neither tells where the link leads, so it counts as leading out.
        const QString canonical = canonicalPath(folder.filePath());
        isInside = !m_canonicalPath.isEmpty() &&
                   (canonical == m_canonicalPath || canonical.startsWith(m_canonicalPath + Slash));
    }
    m_isInside.insert(relativeFolder, isInside);
    return isInside;
}
