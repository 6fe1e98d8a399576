#include "Stay.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <sys/resource.h>

namespace {

bool readSeconds(double &seconds)
{
    const QByteArray text = qgetenv("QUELLMOOR_SAMPLE_SECONDS");
    if (text.isEmpty())
        return true;
    bool isNumber = false;
    seconds = text.toDouble(&isNumber);
    return isNumber && seconds >= 0 && seconds < 1e6;
}

bool readEnd(Stay::Wishes &wishes)
{
    const QByteArray text = qgetenv("QUELLMOOR_SAMPLE_END");
    if (text.isEmpty())
        return true;
    wishes.bySignal = text == "signal";
    if (wishes.bySignal)
        return true;
    bool isNumber = false;
    wishes.code = text.startsWith("code:") ? text.mid(5).toInt(&isNumber) : 0;
    return isNumber && wishes.code >= 0 && wishes.code <= 255;
}

} // namespace

std::optional<Stay::Wishes> Stay::Wishes::read()
{
    Wishes wishes;
    wishes.untilFile = qEnvironmentVariable("QUELLMOOR_SAMPLE_UNTIL");
    if (!readSeconds(wishes.seconds)) {
        std::fputs("QUELLMOOR_SAMPLE_SECONDS has to be a number of seconds\n", stderr);
        return std::nullopt;
    }
    if (!readEnd(wishes)) {
        std::fputs("QUELLMOOR_SAMPLE_END has to be \"signal\" or \"code:N\"\n", stderr);
        return std::nullopt;
    }
    return wishes;
}

Stay::Stay(const Wishes &wishes, QObject *parent) : QObject(parent), m_wishes(wishes) {}

bool Stay::begin()
{
    if (m_wishes.untilFile.isEmpty()) {
        QTimer::singleShot(qRound(m_wishes.seconds * 1000), qApp, &QCoreApplication::quit);
        return true;
    }
    const QString folder = QFileInfo(m_wishes.untilFile).absolutePath();
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &Stay::endWhenFileIsThere);
    if (!m_watcher.addPath(folder)) {
        std::fprintf(stderr, "%s cannot be watched\n", qPrintable(folder));
        return false;
    }
    // It may have come before the watch began; only the event loop can be asked to quit.
    QTimer::singleShot(0, this, &Stay::endWhenFileIsThere);
    return true;
}

int Stay::end(const Wishes &wishes)
{
    if (wishes.bySignal) {
        const rlimit noCore = {0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        std::abort();
    }
    return wishes.code;
}

void Stay::endWhenFileIsThere() const
{
    if (QFileInfo::exists(m_wishes.untilFile))
        QCoreApplication::quit();
}
