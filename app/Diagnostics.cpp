#include "app/Diagnostics.h"

#include "app/Configuration.h"

#include <QCoreApplication>
#include <QLocale>
#include <QSysInfo>

namespace Diagnostics {

namespace {

QString environmentOf(const char *variable)
{
    const QString value = qEnvironmentVariable(variable);
    return value.isEmpty() ? QStringLiteral("unknown") : value;
}

QString entry(const QString &name, const QString &value)
{
    return QStringLiteral("%1 %2\n").arg(name + QLatin1Char(':'), -15).arg(value);
}

QString hostsOf(const Configuration &configuration)
{
    return QStringList{configuration.downloadHost, configuration.accountHost,
                       configuration.websiteHost, configuration.forumHost, configuration.wikiHost}
        .join(QStringLiteral(", "));
}

} // namespace

QString text(const Configuration &configuration, const QStringList &logLines)
{
    QString result = QStringLiteral("Quellmoor launcher\n\n");
    result += entry(QStringLiteral("Launcher"), QCoreApplication::applicationVersion());
    result += entry(QStringLiteral("Qt"), QString::fromLatin1(qVersion()));
    result += entry(QStringLiteral("System"),
                    QStringLiteral("%1, %2 %3, %4")
                        .arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                             QSysInfo::kernelVersion(), QSysInfo::currentCpuArchitecture()));
    result += entry(QStringLiteral("Desktop"),
                    QStringLiteral("%1, %2").arg(environmentOf("XDG_CURRENT_DESKTOP"),
                                                 environmentOf("XDG_SESSION_TYPE")));
    result += entry(QStringLiteral("Language"), QLocale().name());
    result += entry(QStringLiteral("Hosts"), hostsOf(configuration));
    result += entry(QStringLiteral("Data folder"), configuration.dataFolder);
    result += entry(QStringLiteral("Game folder"), configuration.gameFolder());
    result += entry(QStringLiteral("Settings"), configuration.settingsFile());
    result += entry(QStringLiteral("Log file"), Configuration::logFile());
    result += QStringLiteral("\nLog:\n");
    result += logLines.isEmpty() ? QStringLiteral("(empty)") : logLines.join(QLatin1Char('\n'));
    return result + QLatin1Char('\n');
}

} // namespace Diagnostics
