#include "Mutator.h"

#include <algorithm>

namespace {

constexpr int MostChanges = 8;
constexpr int LongestPiece = 64;
constexpr qsizetype LongestInput = 8192;
constexpr int Kinds = 7;

} // namespace

QByteArray Mutator::next()
{
    QByteArray bytes = m_seeds[below(m_seeds.size())];
    for (qsizetype left = 1 + below(MostChanges); left > 0; --left)
        change(bytes);
    bytes.truncate(LongestInput);
    return bytes;
}

QByteArray Mutator::pieceOf(const QByteArray &bytes)
{
    return bytes.isEmpty() ? bytes : bytes.mid(below(bytes.size()), 1 + below(LongestPiece));
}

void Mutator::change(QByteArray &bytes)
{
    const qsizetype at = below(bytes.size() + 1);
    const qsizetype inside = std::min(at, bytes.size() - 1);
    switch (below(Kinds)) {
    case 0:
        if (inside >= 0)
            bytes[inside] = char(bytes[inside] ^ 1 << below(8));
        break;
    case 1:
        if (inside >= 0)
            bytes[inside] = char(below(256));
        break;
    case 2:
        bytes.insert(at, char(below(256)));
        break;
    case 3:
        bytes.remove(at, 1 + below(LongestPiece));
        break;
    case 4:
        bytes.insert(at, pieceOf(bytes));
        break;
    case 5:
        bytes.insert(at, pieceOf(m_seeds[below(m_seeds.size())]));
        break;
    default:
        bytes.truncate(at);
    }
}
