#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// What the launcher was started to do.
struct CommandLine
{
    enum class Action { Window, Verify, Update, Help, Version, Mistake };

    Action action = Action::Window;
    // --environment NAME; an empty name is an environment, too.
    std::optional<QString> environment;
    // Show the Touch Bar's stand-in under the window.
    bool showsTouchBar = false;
    // For Help, Version and Mistake: what to print. For Window: what was not understood, which may
    // yet be words of the toolkit.
    QString text;

    // `arguments` with the program's name first. Needs no application object and no display.
    // Options of the toolkit (-platform, -style and the like) are left to it.
    [[nodiscard]] static CommandLine parse(const QStringList &arguments);
};
