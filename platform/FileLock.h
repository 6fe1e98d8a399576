#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// A lock that one process at a time holds, by a file at `path`. The system lets it go with the
// process however that ends, and nothing in the file says who holds it: one that a killed process
// left behind, also in the moment it was made, never keeps anybody out. Programs that are started
// meanwhile do not inherit it. One thread at a time.
class FileLock
{
public:
    enum class Result {
        Taken,
        Held,  // by somebody else
        Failed // nobody can: the file cannot be opened, or its file system has no locks
    };

    explicit FileLock(const QString &path);
    // Removes the file when this one holds the lock.
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    // Never waits. Links are not followed. Taken when it is held already.
    [[nodiscard]] Result tryLock();

private:
    [[nodiscard]] std::optional<Result> tryOnce();
    [[nodiscard]] std::optional<bool> isStillAtItsPlace() const;
    void close();

    const QByteArray m_path;
    int m_descriptor = -1;
};
