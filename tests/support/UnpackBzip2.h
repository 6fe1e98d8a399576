#pragma once

#include "patcher/Bzip2.h"

// As a write unpacks a file, and gives its turn back at once.
inline std::optional<QByteArray> unpackBzip2(const QByteArray &stream)
{
    LargeContentsTurn turn;
    return decompressBzip2(stream, turn);
}
