#pragma once

#include "platform/Error.h"

#include <QString>

// What an operation that must not go on would have thrown: reported, never thrown.
struct Exception
{
    QString name;
    QString reason;
};

// The diagnostics log. Each call writes one line to the system log and returns; the player sees
// nothing and the caller carries on. Any thread.
class ErrorHandler
{
public:
    ErrorHandler() = delete;

    static void log(const QString &description);
    static void log(const Error &error);
    // Writes the exception's reason.
    static void handle(const Exception &exception);
};
