#include "platform/ShellTask.h"

#include <QFile>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace {

// What the child starts with: its own session, so that a signal for the launcher's terminal does
// not reach it, and no signals blocked or ignored.
class SpawnAttributes
{
public:
    SpawnAttributes()
    {
        posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        sigset_t all;
        sigfillset(&all);
        posix_spawnattr_setsigmask(&m_attributes, &none);
        posix_spawnattr_setsigdefault(&m_attributes, &all);
        posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                    POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes &) = delete;
    SpawnAttributes &operator=(const SpawnAttributes &) = delete;
    ~SpawnAttributes() { posix_spawnattr_destroy(&m_attributes); }

    [[nodiscard]] const posix_spawnattr_t *get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

class FileActions
{
public:
    explicit FileActions(const QByteArray &workingDirectory)
    {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_addchdir_np(&m_actions, workingDirectory.constData());
    }
    FileActions(const FileActions &) = delete;
    FileActions &operator=(const FileActions &) = delete;
    ~FileActions() { posix_spawn_file_actions_destroy(&m_actions); }

    [[nodiscard]] const posix_spawn_file_actions_t *get() const { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

} // namespace

ShellTask::ShellTask(QString script, QString workingDirectory)
    : m_script(std::move(script)), m_workingDirectory(std::move(workingDirectory))
{
}

std::optional<Error> ShellTask::launch()
{
    QByteArray script = m_script.toUtf8();
    QByteArray shell = QByteArrayLiteral("/bin/sh");
    QByteArray option = QByteArrayLiteral("-c");
    char *const arguments[] = {shell.data(), option.data(), script.data(), nullptr};

    const FileActions actions(QFile::encodeName(m_workingDirectory));
    const SpawnAttributes attributes;
    const int number = posix_spawn(&m_processIdentifier, shell.constData(), actions.get(),
                                   attributes.get(), arguments, environ);
    if (number == 0)
        return std::nullopt;
    m_processIdentifier = -1;
    return Error{QStringLiteral("Cannot start a shell in %1: %2")
                     .arg(m_workingDirectory, qt_error_string(number)),
                 number};
}

void ShellTask::waitUntilExit()
{
    if (m_processIdentifier < 0)
        return;
    while (waitpid(m_processIdentifier, nullptr, 0) < 0 && errno == EINTR) {
    }
    m_processIdentifier = -1;
}
