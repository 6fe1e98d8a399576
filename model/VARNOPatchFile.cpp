#include "model/VARNOPatchFile.h"

#include "platform/FileSystem.h"

#include <QCoreApplication>
#include <QProcess>

#include <algorithm>

namespace {

QString escapeBlanks(QString path) { return path.replace(QLatin1Char(' '), QStringLiteral("\\ ")); }

bool isPlainFileName(const QString &name)
{
    return !name.isEmpty() && name != QStringLiteral(".") && name != QStringLiteral("..") &&
           !name.contains(QLatin1Char('/')) && !name.contains(QChar(u'\0'));
}

bool isAscii(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 128; });
}

} // namespace

VARNOPatchFile::VARNOPatchFile(QString name, QString localPath, QString fromHash, QString toHash,
                               QString patchesUrl)
    : m_name(std::move(name)),
      m_fromHash(std::move(fromHash)),
      m_toHash(std::move(toHash)),
      m_localPath(std::move(localPath)),
      m_patchesUrl(std::move(patchesUrl))
{
}

QUrl VARNOPatchFile::downloadURL() const
{
    // Qt would encode other characters even in its strict mode.
    if (!isAscii(m_name))
        return {};
    return QUrl(m_patchesUrl + m_name + QStringLiteral(".bz2"), QUrl::StrictMode);
}

QString VARNOPatchFile::filePath() const
{
    return FileSystem::temporaryDirectory() + QLatin1Char('/') + m_name;
}

std::optional<Error> VARNOPatchFile::keep(const QByteArray &data) const
{
    if (!isPlainFileName(m_name))
        return Error{QStringLiteral("The patch %1 cannot name a file.").arg(m_name), 0};
    if (FileSystem::temporaryDirectory().isEmpty())
        return Error{QStringLiteral("There is no temporary directory."), 0};
    return FileSystem::writeAtomically(filePath(), data);
}

void VARNOPatchFile::writeToDisk(const std::optional<QByteArray> &data,
                                 const WriteCompletion &completion)
{
    const std::optional<Error> error = data ? keep(*data) : std::nullopt;
    completion(m_name, error, applyPatch());
}

QString VARNOPatchFile::applyPatchCommand() const
{
    const QString tool =
        QCoreApplication::applicationDirPath() + QStringLiteral("/Frameworks/apply_patch");
    return QStringLiteral("%1 %2 %3")
        .arg(escapeBlanks(tool), filePath(), escapeBlanks(m_localPath));
}

QString VARNOPatchFile::applyPatch() const
{
    QProcess process;
    process.setProgram(QStringLiteral("/bin/sh"));
    process.setArguments({QStringLiteral("-c"), applyPatchCommand()});
    return QString::fromLatin1("");
}
