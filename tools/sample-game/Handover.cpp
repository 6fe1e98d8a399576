#include "Handover.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <array>
#include <cstdio>

namespace {

constexpr std::array Names = {"VARNO_PLAYCOOKIE", "VARNO_GAMESERVER", "VARNO_DEV",
                              "DYLD_FRAMEWORK_PATH", "DYLD_LIBRARY_PATH"};

} // namespace

Handover Handover::read(const char *argv0)
{
    Handover handover;
    for (const char *name : Names) {
        const bool given = qEnvironmentVariableIsSet(name);
        handover.m_variables += {name, given ? std::optional(qgetenv(name)) : std::nullopt};
    }
    handover.m_workingDirectory = QDir::currentPath();
    handover.m_argv0 = QString::fromLocal8Bit(argv0);
    return handover;
}

void Handover::print() const
{
    for (const Variable &variable : m_variables)
        std::printf("%s=%s\n", variable.name.constData(),
                    variable.value.value_or("(not set)").constData());
    std::printf("cwd=%s\n", m_workingDirectory.toLocal8Bit().constData());
    std::fflush(stdout);
}

bool Handover::report(const QString &path) const
{
    const QByteArray content = json();
    QSaveFile file(path);
    // Buffered, a full disk would go unnoticed and leave half a report.
    const bool whole = file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) &&
                       file.write(content) == content.size() && file.commit();
    if (!whole) {
        file.cancelWriting();
        std::fprintf(stderr, "%s: %s\n", qPrintable(path), qPrintable(file.errorString()));
    }
    return whole;
}

QString Handover::value(const char *name) const
{
    for (const Variable &variable : m_variables) {
        if (variable.name == name)
            return QString::fromLocal8Bit(variable.value.value_or(QByteArray()));
    }
    return {};
}

QByteArray Handover::json() const
{
    QJsonObject object;
    for (const Variable &variable : m_variables) {
        const auto &value = variable.value;
        object.insert(QString::fromLatin1(variable.name),
                      value ? QJsonValue(QString::fromLocal8Bit(*value)) : QJsonValue());
    }
    object.insert(QStringLiteral("pid"), QCoreApplication::applicationPid());
    object.insert(QStringLiteral("cwd"), m_workingDirectory);
    object.insert(QStringLiteral("argv0"), m_argv0);
    return QJsonDocument(object).toJson();
}
