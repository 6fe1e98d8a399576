#pragma once

#include <QString>

#include <optional>

// The shell script that hands the play cookie and the game server to the game and runs it. The
// values go in unquoted, as the game's hosts expect; whoever serves them is trusted with the
// player's shell.
struct LaunchScript
{
    // Printed as "(null)" when missing.
    std::optional<QString> playCookie;
    std::optional<QString> gameserver;
    bool isDevelopmentRun = false;
    // Absolute path; blanks and round brackets in it are escaped, nothing else.
    QString gameExecutable;

    // Six lines, each after the first beginning with a blank. The game is the shell's last command.
    [[nodiscard]] QString text() const;
};
