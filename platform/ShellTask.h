#pragma once

#include "platform/Error.h"

#include <QString>

#include <optional>

// A child process "/bin/sh -c script". It has a session of its own and this process's standard
// streams, and goes on when this process ends or is killed. Any thread; one at a time.
class ShellTask
{
public:
    ShellTask(QString script, QString workingDirectory);
    // Leaves a running child alone.
    ~ShellTask() = default;

    // Starts the child. An error when it cannot be started, as when the folder is not there.
    [[nodiscard]] std::optional<Error> launch();

    // Waits until the child has ended, however it does; returns at once when none was started.
    void waitUntilExit();

private:
    const QString m_script;
    const QString m_workingDirectory;
    int m_processIdentifier = -1;
};
