#pragma once

#include "TestFolder.h"
#include "platform/FileSystem.h"

#include <QFile>
#include <QTest>

#include <sys/stat.h>

// What the tests of files share.

inline mode_t modeOf(const QString &path)
{
    struct stat attributes
    {
    };
    if (lstat(QFile::encodeName(path).constData(), &attributes) != 0)
        qFatal("no file to look at");
    return attributes.st_mode & 07777U;
}

inline std::optional<QByteArray> readInPieces(const QString &path)
{
    QByteArray bytes;
    const bool isWhole = FileSystem::readInPieces(
        path, [&bytes](const char *piece, size_t size) { bytes.append(piece, qsizetype(size)); });
    return isWhole ? std::optional(bytes) : std::nullopt;
}

// One of each kind of thing that is no regular file, under names that say so.
inline void addObstacles(const TestFolder &folder)
{
    folder.write(QStringLiteral("file"), "old");
    folder.link(folder.path(QStringLiteral("file")), QStringLiteral("link"));
    folder.link(QStringLiteral("nowhere"), QStringLiteral("dangling"));
    folder.makeFolder(QStringLiteral("empty"));
    folder.write(QStringLiteral("full/inner"), "inner");
    folder.makePipe(QStringLiteral("pipe"));
}

inline void addNames(const QStringList &names)
{
    QTest::addColumn<QString>("name");
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}
