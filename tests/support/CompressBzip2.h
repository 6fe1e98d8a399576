#pragma once

#include <QByteArray>

#include <bzlib.h>

// The bytes as one bzip2 stream with blocks of that many 100,000 bytes.
inline QByteArray compressBzip2(QByteArray contents, int blockSize = 9)
{
    QByteArray result(contents.size() + contents.size() / 50 + 700, Qt::Uninitialized);
    auto size = unsigned(result.size());
    const int status = BZ2_bzBuffToBuffCompress(result.data(), &size, contents.data(),
                                                unsigned(contents.size()), blockSize, 0, 0);
    if (status != BZ_OK)
        qFatal("bzip2 cannot compress: %d", status);
    result.truncate(qsizetype(size));
    return result;
}
