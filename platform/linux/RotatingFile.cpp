#include "platform/linux/RotatingFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace {

constexpr mode_t OwnerOnly = 0600;

// With those above it, as private as their contents.
void createFolder(const QString &path)
{
    constexpr mode_t ownersFolder = 0700;
    if (path.isEmpty() || QFileInfo::exists(path))
        return;
    createFolder(QFileInfo(path).path());
    mkdir(QFile::encodeName(path).constData(), ownersFolder);
}

void createFolderOf(const QByteArray &path)
{
    createFolder(QFileInfo(QFile::decodeName(path)).path());
}

} // namespace

RotatingFile::RotatingFile(const QString &path) : m_path(QFile::encodeName(path)) {}

RotatingFile::~RotatingFile() { close(); }

bool RotatingFile::write(const QByteArray &line)
{
    QByteArray bytes = line.left(SizeLimit - 2) + '\n';
    if (m_hasTornLine)
        bytes.prepend('\n');
    if (!makeRoomFor(bytes.size()))
        return false;
    const ssize_t written = ::write(m_descriptor, bytes.constData(), size_t(bytes.size()));
    if (written == bytes.size()) {
        m_hasTornLine = false;
        return true;
    }
    m_hasTornLine = m_hasTornLine || written > 0;
    return false;
}

// A pipe or a link in the place of the file is none of ours, and a pipe must not hold us up.
bool RotatingFile::open()
{
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    close();
    m_descriptor = ::open(m_path.constData(), flags, OwnerOnly);
    if (m_descriptor < 0 && errno == ENOENT) {
        createFolderOf(m_path);
        m_descriptor = ::open(m_path.constData(), flags, OwnerOnly);
    }
    struct stat status = {};
    if (m_descriptor >= 0 && fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
        fchmod(m_descriptor, OwnerOnly) == 0)
        return true;
    close();
    return false;
}

void RotatingFile::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}

// Another process may have set it aside, and the player may have removed it.
bool RotatingFile::isStillAtItsPlace(struct stat &status) const
{
    struct stat atPath = {};
    return m_descriptor >= 0 && fstat(m_descriptor, &status) == 0 &&
           lstat(m_path.constData(), &atPath) == 0 && status.st_dev == atPath.st_dev &&
           status.st_ino == atPath.st_ino;
}

// Another process may set the file aside just when it is opened here. It fills the next one first.
bool RotatingFile::openAtItsPlace(struct stat &status)
{
    for (int tries = 0; tries < FileCount; ++tries) {
        if (!open())
            return false;
        if (isStillAtItsPlace(status))
            return true;
    }
    return false;
}

// The lock is on the file that is full: whoever waited for it finds it moved and looks again.
bool RotatingFile::makeRoomFor(qint64 size)
{
    struct stat status = {};
    if (!isStillAtItsPlace(status) && !openAtItsPlace(status))
        return false;
    if (status.st_size + size <= SizeLimit)
        return true;
    flock(m_descriptor, LOCK_EX);
    if (isStillAtItsPlace(status))
        setAside();
    return openAtItsPlace(status) && status.st_size + size <= SizeLimit;
}

void RotatingFile::setAside() const
{
    for (int age = FileCount - 1; age > 0; --age)
        rename(nameOf(age - 1).constData(), nameOf(age).constData());
}

QByteArray RotatingFile::nameOf(int age) const
{
    return age == 0 ? m_path : m_path + '.' + QByteArray::number(age);
}
