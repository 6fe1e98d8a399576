#include "app/ErrorHandler.h"

#include "platform/SystemLog.h"

namespace {

// The names and line numbers are part of the output and stay as they are, although they point
// nowhere: people search old logs for them.
void writeLine(const QString &function, int line, const QString &description)
{
    SystemLog::write(QStringLiteral("%1 [line %2]: ").arg(function).arg(line) + description);
}

} // namespace

void ErrorHandler::log(const QString &description)
{
    writeLine(QStringLiteral("+[ErrorHandler log:]"), 14, description);
}

void ErrorHandler::log(const Error &error) { log(error.localizedDescription); }

void ErrorHandler::handle(const Exception &exception)
{
    writeLine(QStringLiteral("+[ErrorHandler handle:]"), 18, exception.reason);
}
