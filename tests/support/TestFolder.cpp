#include "TestFolder.h"

#include <QDirIterator>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

void require(bool isDone, const QString &what)
{
    if (!isDone)
        qFatal("the test folder: %s", qPrintable(what));
}

QString describe(const QString &root, const QFileInfo &entry)
{
    const QString name = entry.filePath().mid(root.size() + 1);
    if (entry.isSymbolicLink())
        return name + QStringLiteral(" -> ") + QFile::symLinkTarget(entry.filePath());
    if (entry.isDir())
        return name + QLatin1Char('/');
    QFile file(entry.filePath());
    const bool isOpen = entry.isFile() && file.open(QIODevice::ReadOnly);
    return name + QLatin1Char('=') + (isOpen ? QString::fromUtf8(file.readAll()) : QString());
}

} // namespace

QString TestFolder::path(const QString &name) const { return path() + QLatin1Char('/') + name; }

void TestFolder::makeFolder(const QString &name) const { require(QDir().mkpath(path(name)), name); }

void TestFolder::write(const QString &name, const QByteArray &bytes) const
{
    const QString file = path(name);
    require(QDir().mkpath(QFileInfo(file).path()), name);
    QFile target(file);
    require(target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size(), name);
}

void TestFolder::link(const QString &target, const QString &name) const
{
    require(symlink(qPrintable(target), qPrintable(path(name))) == 0, name);
}

void TestFolder::makePipe(const QString &name) const
{
    require(mkfifo(qPrintable(path(name)), 0600) == 0, name);
    setMode(name, 0666);
}

void TestFolder::setModified(const QString &name, Date date) const
{
    const auto nanoseconds = date.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(nanoseconds);
    const timespec time{seconds.count(), long((nanoseconds - seconds).count())};
    const timespec times[]{time, time};
    require(utimensat(AT_FDCWD, qPrintable(path(name)), times, 0) == 0, name);
}

void TestFolder::setMode(const QString &name, unsigned mode) const
{
    require(chmod(qPrintable(path(name)), mode) == 0, name);
}

std::optional<QByteArray> TestFolder::read(const QString &name) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

Date TestFolder::modified(const QString &name) const
{
    struct stat attributes
    {
    };
    require(lstat(qPrintable(path(name)), &attributes) == 0, name);
    return Date(std::chrono::seconds(attributes.st_mtim.tv_sec) +
                std::chrono::nanoseconds(attributes.st_mtim.tv_nsec));
}

QStringList TestFolder::tree() const
{
    QStringList entries;
    QDirIterator walk(path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        entries += describe(path(), QFileInfo(walk.next()));
    entries.sort();
    return entries;
}
