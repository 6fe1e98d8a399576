#include "FatalCheck.h"

#include "Sanitized.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr auto ChildVariable = "QUELLMOOR_FATAL_CHILD";
constexpr int ChildLimit = 60000;

// A sanitizer's own allocator ignores the system's limit and ends the process by default.
void limitSanitizer(QProcessEnvironment &environment, const QString &variable)
{
    environment.insert(variable,
                       environment.value(variable) +
                           QStringLiteral(":allocator_may_return_null=1:max_allocation_size_mb=%1")
                               .arg(FatalCheck::MostAtOnce / 1024 / 1024));
}

qint64 addressSpaceInUse()
{
    QFile sizes(QStringLiteral("/proc/self/statm"));
    if (!sizes.open(QIODevice::ReadOnly))
        qFatal("the size of the process is unknown");
    return sizes.readAll().split(' ').first().toLongLong() * sysconf(_SC_PAGESIZE);
}

} // namespace

bool FatalCheck::isChild() { return qEnvironmentVariableIsSet(ChildVariable); }

FatalCheck::Outcome FatalCheck::runChild(const char *className)
{
    QString function = QString::fromLatin1(QTest::currentTestFunction());
    if (const char *tag = QTest::currentDataTag())
        function += QLatin1Char(':') + QString::fromUtf8(tag);
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QString::fromLatin1(ChildVariable), QStringLiteral("1"));
    limitSanitizer(environment, QStringLiteral("ASAN_OPTIONS"));
    limitSanitizer(environment, QStringLiteral("TSAN_OPTIONS"));
    child.setProcessEnvironment(environment);
    child.setChildProcessModifier([] {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
    });
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(QCoreApplication::applicationFilePath(),
                {QString::fromLatin1(className), function, QStringLiteral("-nocrashhandler")});
    if (!child.waitForFinished(ChildLimit))
        qFatal("the child does not end");
    return {child.exitStatus() == QProcess::CrashExit, child.readAllStandardOutput()};
}

void FatalCheck::limitMemory(qint64 bytes)
{
    if (IsSanitized)
        return;
    const auto all = rlim_t(addressSpaceInUse() + bytes);
    const rlimit limit{all, all};
    setrlimit(RLIMIT_AS, &limit);
}
