#include "platform/Workspace.h"

#include "app/ErrorHandler.h"
#include "platform/DispatchQueue.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

namespace {

bool mayReachTheDesktop(const QUrl &url)
{
    static const QStringList schemes{QStringLiteral("https"), QStringLiteral("http"),
                                     QStringLiteral("mailto")};
    return url.isValid() && schemes.contains(url.scheme());
}

// The program that stands for the named application on this desktop, or empty.
QString programFor(const QString &application)
{
    if (application != QStringLiteral("DiskImageMounter"))
        return {};
    return QStandardPaths::findExecutable(QStringLiteral("gnome-disk-image-mounter"));
}

void openWithDefaultProgram(const QUrl &url)
{
    if (!QDesktopServices::openUrl(url))
        ErrorHandler::log(QStringLiteral("The desktop did not open %1.")
                              .arg(url.toDisplayString(QUrl::RemoveQuery)));
}

// The desktop's services belong to the main thread. There they are asked at once: whoever ends the
// launcher right after this call leaves the event loop without another turn.
void openOnMainThread(const QUrl &url)
{
    if (QThread::currentThread() == QCoreApplication::instance()->thread())
        openWithDefaultProgram(url);
    else
        DispatchQueue::main()->async([url] { openWithDefaultProgram(url); });
}

class DesktopWorkspace final : public Workspace
{
public:
    bool openURL(const QUrl &url) override
    {
        if (!mayReachTheDesktop(url)) {
            ErrorHandler::log(
                QStringLiteral("Refused to open a URL of the scheme \"%1\".").arg(url.scheme()));
            return false;
        }
        openOnMainThread(url);
        return true;
    }

    bool openFile(const QString &path, const QString &application) override
    {
        const QString program = programFor(application);
        if (program.isEmpty() || !QProcess::startDetached(program, {path}))
            openOnMainThread(QUrl::fromLocalFile(path));
        return true;
    }

    // File managers here take the icon from the launcher's desktop entry, not from the file.
    void setIcon(const QString &) override {}
};

} // namespace

std::unique_ptr<Workspace> makeWorkspace() { return std::make_unique<DesktopWorkspace>(); }
