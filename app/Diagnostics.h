#pragma once

#include <QString>
#include <QStringList>

struct Configuration;

// What whoever helps a player wants to know first.
namespace Diagnostics {

// Versions, the system, the session, hosts and paths, then these lines of the log. Plain text for a
// message; it names the player's home folder and no account.
[[nodiscard]] QString text(const Configuration &configuration, const QStringList &logLines);

} // namespace Diagnostics
