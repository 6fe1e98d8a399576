#include "model/GameFolder.h"

#include <QFile>
#include <QFileInfo>

#include <climits>

namespace {

constexpr auto Slash = QLatin1Char('/');

// What FileSystem::writeAtomically() puts around a name must still fit.
constexpr qsizetype LongestName = NAME_MAX;

} // namespace

GameFolder::GameFolder(QString path)
    : m_path(std::move(path)), m_canonicalPath(QFileInfo(m_path).canonicalFilePath())
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
        // A link that leads nowhere has no canonical path and counts as leading out.
        const QString canonical = folder.canonicalFilePath();
        isInside = canonical.startsWith(m_canonicalPath + Slash) || canonical == m_canonicalPath;
        isInside = isInside && !canonical.isEmpty();
    }
    m_isInside.insert(relativeFolder, isInside);
    return isInside;
}
