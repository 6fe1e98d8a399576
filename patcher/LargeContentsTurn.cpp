#include "patcher/LargeContentsTurn.h"

#include "platform/Limits.h"

#include <QThread>

#include <algorithm>

qint64 LargeContentsTurn::large()
{
    constexpr qint64 megabyte = 1024LL * 1024;
    static const qint64 result =
        std::clamp(Limits::gameFileContents() / (4LL * QThread::idealThreadCount()), 32 * megabyte,
                   256 * megabyte);
    return result;
}

bool LargeContentsTurn::tryToHold(qint64 size)
{
    return size <= large() || m_turn.owns_lock() || m_turn.try_lock();
}

void LargeContentsTurn::waitToHold(qint64 size)
{
    if (!tryToHold(size))
        m_turn.lock();
}

std::mutex &LargeContentsTurn::theOnlyOne()
{
    static std::mutex turn;
    return turn;
}
