#include "platform/FileLock.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr mode_t OwnerOnly = 0600;
// Each further one means that somebody let the lock go in between.
constexpr int MostTries = 10;

} // namespace

FileLock::FileLock(const QString &path) : m_path(QFile::encodeName(path)) {}

FileLock::~FileLock()
{
    // While the lock is held, so that it cannot be the file of the next one.
    if (isStillAtItsPlace().value_or(false))
        unlink(m_path.constData());
    close();
}

FileLock::Result FileLock::tryLock()
{
    if (m_descriptor >= 0)
        return Result::Taken;
    for (int tries = 0; tries < MostTries; ++tries) {
        const auto result = tryOnce();
        if (result != Result::Taken)
            close();
        if (result)
            return *result;
    }
    return Result::Held;
}

// Nothing when another one removed the file since it was opened.
std::optional<FileLock::Result> FileLock::tryOnce()
{
    m_descriptor =
        open(m_path.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, OwnerOnly);
    if (m_descriptor < 0)
        return Result::Failed;
    if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? Result::Held : Result::Failed;
    const auto isHere = isStillAtItsPlace();
    if (!isHere)
        return Result::Failed;
    return *isHere ? std::optional(Result::Taken) : std::nullopt;
}

// Nothing when that cannot be told.
std::optional<bool> FileLock::isStillAtItsPlace() const
{
    struct stat status = {};
    struct stat atPath = {};
    if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0)
        return std::nullopt;
    if (lstat(m_path.constData(), &atPath) != 0)
        return errno == ENOENT ? std::optional(false) : std::nullopt;
    return status.st_dev == atPath.st_dev && status.st_ino == atPath.st_ino;
}

void FileLock::close()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = -1;
}
