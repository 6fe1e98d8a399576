#include "platform/FileSystem.h"

#include "platform/linux/PieceReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <mutex>

namespace FileSystem {

namespace {

constexpr off_t BytesReadAhead = 1024L * 1024;
constexpr mode_t NewFileMode = 0666;
constexpr auto PartSuffix = ".quellmoor-part";
constexpr qsizetype LongestName = 255;

class Descriptor
{
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    ~Descriptor() { close(); }

    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }
    [[nodiscard]] int get() const { return m_descriptor; }

    // False when the file system reports only now that it could not keep the data.
    bool close()
    {
        const int descriptor = std::exchange(m_descriptor, -1);
        return descriptor < 0 || ::close(descriptor) == 0;
    }

private:
    int m_descriptor;
};

Error systemError(const QString &what, const QString &path, int number)
{
    return {QStringLiteral("%1 %2: %3").arg(what, path, qt_error_string(number)), number};
}

bool writeAll(int descriptor, const QByteArray &bytes)
{
    const char *at = bytes.constData();
    size_t left = size_t(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(descriptor, at, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        at += written;
        left -= size_t(written);
    }
    return true;
}

// The name under which a file is prepared: always the same for a target, so that what a killed
// launcher left behind is taken over by its next write to that target.
QByteArray partPath(const QByteArray &path)
{
    const qsizetype slash = path.lastIndexOf('/');
    QByteArray name = path.mid(slash + 1);
    const qsizetype room = LongestName - 1 - qsizetype(qstrlen(PartSuffix));
    if (name.size() > room)
        name = name.left(room - 9) + '-' + QByteArray::number(qHash(name) & 0xffffffffU, 16);
    return path.left(slash + 1) + '.' + name + PartSuffix;
}

// Two writers of one target would share its prepared file; they take turns.
std::mutex &writerMutex(const QByteArray &path)
{
    static std::array<std::mutex, 64> mutexes;
    return mutexes[qHash(path) % mutexes.size()];
}

mode_t modeOfReplacedFile(const QByteArray &path, mode_t otherwise)
{
    struct stat attributes
    {
    };
    if (lstat(path.constData(), &attributes) != 0 || !S_ISREG(attributes.st_mode))
        return otherwise;
    return (attributes.st_mode & 0777U) | S_IRUSR | S_IWUSR;
}

std::optional<Date> dateOf(const struct stat &attributes)
{
    if (!S_ISREG(attributes.st_mode))
        return std::nullopt;
    return Date(std::chrono::seconds(attributes.st_mtim.tv_sec) +
                std::chrono::nanoseconds(attributes.st_mtim.tv_nsec));
}

// Without O_NONBLOCK a pipe in the place of a file would hold the caller for ever.
int openForReading(const QString &path)
{
    return open(QFile::encodeName(path).constData(),
                O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
}

// Lets the disk begin with a large file now, and waits for nothing: so much less is left to do when
// a check waits for the whole file system.
void beginWritingBack(int file, const QByteArray &bytes)
{
#ifdef SYNC_FILE_RANGE_WRITE
    constexpr qsizetype large = qsizetype(256) * 1024;
    if (bytes.size() >= large)
        sync_file_range(file, 0, 0, SYNC_FILE_RANGE_WRITE);
#endif
}

// The error number, or 0.
int writePart(const QByteArray &part, const QByteArray &target, const QByteArray &bytes)
{
    if (unlink(part.constData()) != 0 && errno != ENOENT)
        return errno;
    Descriptor file(
        open(part.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, NewFileMode));
    if (!file.isOpen())
        return errno;
    const mode_t mode = modeOfReplacedFile(target, 0);
    if (mode != 0 && fchmod(file.get(), mode) != 0)
        return errno;
    if (!writeAll(file.get(), bytes))
        return errno;
    beginWritingBack(file.get(), bytes);
    return file.close() ? 0 : errno;
}

} // namespace

QString applicationSupportDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
}

QString temporaryDirectory()
{
    static const QTemporaryDir directory(
        QDir(QDir::tempPath()).filePath(QStringLiteral("quellmoor-XXXXXX")));
    return directory.isValid() ? directory.path() : QString();
}

QString executablePath() { return QFile::symLinkTarget(QStringLiteral("/proc/self/exe")); }

bool exists(const QString &path)
{
    struct stat attributes
    {
    };
    return lstat(QFile::encodeName(path).constData(), &attributes) == 0;
}

std::optional<Date> modificationDate(const QString &path)
{
    struct stat attributes
    {
    };
    if (lstat(QFile::encodeName(path).constData(), &attributes) != 0)
        return std::nullopt;
    return dateOf(attributes);
}

Folder::Folder(const QString &path)
    : m_descriptor(open(QFile::encodeName(path).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC))
{
}

Folder::~Folder()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

std::optional<Date> Folder::modificationDate(const QByteArray &name) const
{
    struct stat attributes
    {
    };
    if (fstatat(m_descriptor, name.constData(), &attributes, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return dateOf(attributes);
}

void willRead(const QString &path)
{
    const Descriptor file(openForReading(path));
    if (file.isOpen()) // of what is no regular file the system takes no notice
        posix_fadvise(file.get(), 0, BytesReadAhead, POSIX_FADV_WILLNEED);
}

std::optional<Error> createDirectory(const QString &path)
{
    errno = 0;
    if (QDir().mkpath(path))
        return std::nullopt;
    return systemError(QStringLiteral("Cannot create the folder"), path, errno ? errno : ENOTDIR);
}

std::optional<Error> writeAtomically(const QString &path, const QByteArray &bytes)
{
    const QByteArray target = QFile::encodeName(path);
    const QByteArray part = partPath(target);
    const std::lock_guard lock(writerMutex(target));

    int number = writePart(part, target, bytes);
    if (number == 0 && rename(part.constData(), target.constData()) != 0)
        number = errno;
    if (number == 0)
        return std::nullopt;
    unlink(part.constData());
    return systemError(QStringLiteral("Cannot write"), path, number);
}

void removeUnfinishedWrite(const QString &path)
{
    const QByteArray target = QFile::encodeName(path);
    const std::lock_guard lock(writerMutex(target));
    unlink(partPath(target).constData());
}

std::optional<Error> write(const QString &path, const QByteArray &bytes)
{
    Descriptor file(open(QFile::encodeName(path).constData(),
                         O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, NewFileMode));
    if (!file.isOpen() || !writeAll(file.get(), bytes) || !file.close())
        return systemError(QStringLiteral("Cannot write"), path, errno);
    return std::nullopt;
}

std::optional<Error> makeExecutable(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat attributes
    {
    };
    int number = lstat(name.constData(), &attributes) == 0 ? 0 : errno;
    if (number == 0 && !S_ISREG(attributes.st_mode))
        number = EINVAL;
    if (number == 0 && chmod(name.constData(), 0755) != 0)
        number = errno;
    if (number == 0)
        return std::nullopt;
    return systemError(QStringLiteral("Cannot make executable"), path, number);
}

std::optional<Error> synchronize(const QString &path)
{
    const Descriptor file(open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen() || syncfs(file.get()) != 0)
        return systemError(QStringLiteral("Cannot synchronise"), path, errno);
    return std::nullopt;
}

bool readInPieces(const QString &path, const std::function<void(const char *, size_t)> &piece)
{
    const Descriptor file(openForReading(path));
    struct stat attributes
    {
    };
    if (!file.isOpen() || fstat(file.get(), &attributes) != 0 || !S_ISREG(attributes.st_mode))
        return false;
    return readPieces(file.get(), attributes.st_size, piece);
}

} // namespace FileSystem
