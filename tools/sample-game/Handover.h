#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// What the launcher handed over to the game: environment variables and the working directory as
// they were when the process started. A value type; read it once, before anything changes either.
class Handover
{
public:
    static Handover read(const char *argv0);

    // One "name=value" line each on standard output; "(not set)" stands for a missing variable.
    void print() const;

    // Replaces the file as a whole with a JSON object; a missing variable is null there. Says on
    // standard error why when it cannot, and returns false.
    [[nodiscard]] bool report(const QString &path) const;

    // The value of a variable, "" when it is missing.
    [[nodiscard]] QString value(const char *name) const;

private:
    struct Variable
    {
        QByteArray name;
        std::optional<QByteArray> value;
    };

    [[nodiscard]] QByteArray json() const;

    QList<Variable> m_variables;
    QString m_workingDirectory;
    QString m_argv0;
};
