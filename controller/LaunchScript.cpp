#include "controller/LaunchScript.h"

#include <QStringList>

namespace {

QString escaped(QString path)
{
    return path.replace(QStringLiteral(" "), QStringLiteral("\\ "))
        .replace(QStringLiteral("("), QStringLiteral("\\("))
        .replace(QStringLiteral(")"), QStringLiteral("\\)"));
}

QString exported(const QString &name, const QString &value)
{
    return QStringLiteral("export ") + name + QLatin1Char('=') + value;
}

} // namespace

QString LaunchScript::text() const
{
    const auto missing = QStringLiteral("(null)");
    const QStringList lines{
        exported(QStringLiteral("VARNO_PLAYCOOKIE"), playCookie.value_or(missing)),
        exported(QStringLiteral("VARNO_GAMESERVER"), gameserver.value_or(missing)),
        exported(QStringLiteral("DYLD_FRAMEWORK_PATH"), QStringLiteral("Frameworks/")),
        exported(QStringLiteral("DYLD_LIBRARY_PATH"), QStringLiteral("libs/")),
        isDevelopmentRun ? exported(QStringLiteral("VARNO_DEV"), QStringLiteral("YES")) : QString(),
        escaped(gameExecutable)};
    return lines.join(QStringLiteral("\n ")) + QLatin1Char('\n');
}
