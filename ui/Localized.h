#pragma once

#include <QCoreApplication>

// The text of an alert in the player's language; the English text is the key, and what is shown
// where there is no translation.
[[nodiscard]] inline QString localized(const char *text)
{
    return QCoreApplication::translate("Alerts", text);
}
