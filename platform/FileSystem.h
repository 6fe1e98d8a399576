#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

// A moment to the nanosecond, as file systems keep it.
using Date = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

// The few file operations whose exact behaviour matters here. Paths are absolute. Every function
// may be called from any thread.
namespace FileSystem {

// The folder in which applications keep their data for this user (without a folder of ours).
[[nodiscard]] QString applicationSupportDirectory();

// A folder that only this user can enter and that lives as long as the process; made at first use.
// Empty when it cannot be made.
[[nodiscard]] QString temporaryDirectory();

// Where the program that runs lies.
[[nodiscard]] QString executablePath();

// Whether anything, even a link that leads nowhere, has that path.
[[nodiscard]] bool exists(const QString &path);

// When the regular file at that path was last changed. Nothing for a missing file, and for a link
// or a folder in its place: those are not files of a game. Costs one attribute read.
[[nodiscard]] std::optional<Date> modificationDate(const QString &path);

// A folder kept open, to ask for the dates of many of its files: the system then finds each by its
// name alone instead of walking the whole path again. One thread at a time.
class Folder
{
public:
    // Links on the way to it are followed. When it cannot be opened, no file in it has a date.
    explicit Folder(const QString &path);
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    // As above, for the file with that name, in the file system's encoding and without a slash.
    [[nodiscard]] std::optional<Date> modificationDate(const QByteArray &name) const;

private:
    const int m_descriptor;
};

// Lets the system fetch the beginning of the regular file at `path` from the disk meanwhile,
// because it will be read soon. Links are not followed; whatever goes wrong shows in the reading.
void willRead(const QString &path);

// Makes the folder and those above it. Nothing when it is there afterwards.
std::optional<Error> createDirectory(const QString &path);

// Puts a file with these bytes at `path`, whole or not at all: after a failure, a crash or a kill
// the old file is still there. A link at `path` is replaced, never written through; a folder there
// is an error. Keeps the permissions of a file that it replaces, except that its owner may then
// read and write it. The folder must exist. Does not wait for the disk: see synchronize().
std::optional<Error> writeAtomically(const QString &path, const QByteArray &bytes);

// Removes what a writeAtomically() to that path left beside it when it was killed; not for a file
// that another process may be writing. Whatever goes wrong leaves it there.
void removeUnfinishedWrite(const QString &path);

// Writes these bytes to `path` in place, making or truncating the file: after a failure a part of
// it may be there.
std::optional<Error> write(const QString &path, const QByteArray &bytes);

// Gives the regular file at `path` the permissions 0755. Links are not followed.
std::optional<Error> makeExecutable(const QString &path);

// Waits until everything written so far to the file system of that path is on the disk.
std::optional<Error> synchronize(const QString &path);

// Reads the regular file at `path` and hands its bytes to `piece`, in order; memory stays the same
// whatever the file's size. Links are not followed. False when it cannot be read to its end.
bool readInPieces(const QString &path, const std::function<void(const char *, size_t)> &piece);

} // namespace FileSystem
