#pragma once

#include <QByteArray>
#include <QString>

struct stat;

// A text file that grows at its end and is set aside when it is full: "name" becomes "name.1", that
// one "name.2" and so on; the oldest goes. Readable by its owner only. Several processes may write
// to one name. One thread at a time.
class RotatingFile
{
public:
    static constexpr qint64 SizeLimit = 1024 * 1024;
    static constexpr int FileCount = 5;

    // Nothing happens on the disk before the first line.
    explicit RotatingFile(const QString &path);
    ~RotatingFile();
    RotatingFile(const RotatingFile &) = delete;
    RotatingFile &operator=(const RotatingFile &) = delete;

    // Appends the line and a line break; what a file cannot hold of a line is cut off. True when it
    // is in the file. A line that cannot be written, as on a full disk, is lost, and the later ones
    // are tried again.
    bool write(const QByteArray &line);

private:
    bool open();
    bool openAtItsPlace(struct stat &status);
    void close();
    [[nodiscard]] bool isStillAtItsPlace(struct stat &status) const;
    bool makeRoomFor(qint64 size);
    void setAside() const;
    [[nodiscard]] QByteArray nameOf(int age) const;

    const QByteArray m_path;
    int m_descriptor = -1;
    bool m_hasTornLine = false;
};
