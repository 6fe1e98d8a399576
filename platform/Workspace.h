#pragma once

#include <QString>
#include <QUrl>

#include <memory>

// What the desktop does for the launcher: opening pages and files with the player's programs.
// Any thread may call; no call waits for the program it starts.
class Workspace
{
public:
    virtual ~Workspace() = default;

    // Opens the URL in the player's default browser (mailto: in the mail program). URLs of other
    // schemes than https, http and mailto are refused and the refusal is logged.
    // Returns false when it was refused; a desktop that does not open it is logged.
    virtual bool openURL(const QUrl &url) = 0;

    // Opens the file with the named application, or with the default program for such files where
    // the desktop has no application of that name. Returns whether the desktop was asked.
    virtual bool openFile(const QString &path, const QString &application) = 0;

    // Gives the file the launcher's icon in file managers. Failure is silent.
    virtual void setIcon(const QString &path) = 0;
};

// The desktop of this session. Other threads than the main one hand their wishes to its event loop;
// what they ask for after that loop has ended is not opened.
std::unique_ptr<Workspace> makeWorkspace();
