#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

// Watches how long the main thread's event loop takes for a turn, as a player would notice it on a
// machine with nothing else to do: the time for which other programs kept the thread from the
// processor does not count, the time for which it waits for anything does. Beats while it lives.
class Heartbeat
{
public:
    Heartbeat()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
        beat();
        m_longest = 0;
        m_timer.start(1);
    }

    // Milliseconds of the longest turn, up to now.
    [[nodiscard]] qint64 longestTurn()
    {
        beat();
        return m_longest / 1000000;
    }

private:
    void beat()
    {
        const qint64 kept = keptFromTheProcessor();
        const qint64 turn = m_clock.isValid() ? m_clock.nsecsElapsed() - (kept - m_kept) : 0;
        m_longest = std::max(m_longest, turn);
        m_kept = kept;
        m_clock.start();
    }

    // Nanoseconds that this thread could have run and did not, so far.
    static qint64 keptFromTheProcessor()
    {
        QFile file(QStringLiteral("/proc/thread-self/schedstat"));
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        return file.readAll().split(' ').value(1).toLongLong();
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_kept = 0;
    qint64 m_longest = 0;
};
