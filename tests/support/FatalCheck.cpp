#include "FatalCheck.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <sys/resource.h>

namespace {

constexpr auto ChildVariable = "QUELLMOOR_FATAL_CHILD";
constexpr int ChildLimit = 60000;

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
