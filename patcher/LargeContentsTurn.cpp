#include "patcher/LargeContentsTurn.h"

void LargeContentsTurn::waitToHold(qint64 size)
{
    if (size > Large && !m_turn.owns_lock())
        m_turn.lock();
}

std::mutex &LargeContentsTurn::theOnlyOne()
{
    static std::mutex turn;
    return turn;
}
