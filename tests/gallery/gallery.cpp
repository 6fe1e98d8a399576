// Puts the launcher's window into each state that players meet and saves pictures of it:
//   gallery FOLDER [STATE...]
// The news come from the hosts that the program was built for. Run by scripts/gallery.
#include "States.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::addLibraryPath(QStringLiteral(QUELLMOOR_PLUGIN_FOLDER));
    QApplication::setApplicationVersion(QStringLiteral("1.0.0"));
    QApplication::setCursorFlashTime(0); // a caret that is always there
    QStringList wanted = QApplication::arguments().mid(1);
    if (wanted.isEmpty()) {
        std::fputs("usage: gallery FOLDER [STATE...]\n", stderr);
        return 64;
    }
    const QDir folder(wanted.takeFirst());
    folder.mkpath(QStringLiteral("."));
    Camera camera(folder);
    for (const auto &[key, state] : states()) {
        const QString name = QString::fromStdString(key);
        if (!wanted.isEmpty() && !wanted.contains(name))
            continue;
        Scene scene(camera, state.setting);
        state.arrange(scene);
        scene.take(name);
    }
    return camera.isWhole() ? 0 : 1;
}
