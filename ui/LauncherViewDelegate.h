#pragma once

#include <QString>

// What the launcher view tells whoever steers it. Main thread.
class LauncherViewDelegate
{
public:
    virtual ~LauncherViewDelegate() = default;

    // The player wants to log in and play, with what the two fields hold now. Sent whether or not
    // the play button is shown as enabled.
    virtual void loginUsername(const QString &username, const QString &password) = 0;

    // A key changed one of the fields; both texts as they are now.
    virtual void textFieldUpdate(const QString &username, const QString &password) = 0;
};
