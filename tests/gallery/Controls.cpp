#include "States.h"

#include "ui/AlertPanel.h"
#include "ui/LauncherMenu.h"
#include "ui/RolloverButton.h"
#include "ui/TextField.h"

#include <QApplication>
#include <QCursor>
#include <QMenu>
#include <QPushButton>
#include <QTest>

#include <cstdio>

namespace {

constexpr int Patience = 3000;
constexpr QPoint Nowhere(1, 1);

void pointAt(const QWidget &control)
{
    QCursor::setPos(control.mapToGlobal(control.rect().center()));
    if (!QTest::qWaitFor([&] { return control.underMouse(); }, Patience))
        std::fprintf(stderr, "gallery: the mouse is not over %s\n",
                     qPrintable(control.objectName()));
}

void pointAwayFrom(const QWidget &control)
{
    QCursor::setPos(Nowhere);
    if (!QTest::qWaitFor([&] { return !control.underMouse(); }, Patience))
        std::fprintf(stderr, "gallery: the mouse stays over %s\n",
                     qPrintable(control.objectName()));
}

void takeUnderTheMouse(const Scene &scene, const QString &name, QWidget &control)
{
    pointAt(control);
    scene.take(name + QStringLiteral("-hover"), control);
    QTest::mousePress(&control, Qt::LeftButton);
    scene.take(name + QStringLiteral("-pressed"), control);
    // Let go elsewhere, so that nothing comes of it.
    QTest::mouseRelease(&control, Qt::LeftButton, {}, QPoint(-50, -50));
    pointAwayFrom(control);
}

void takeWithTheKeyboard(const Scene &scene, const QString &name, QWidget &control)
{
    control.setFocus(Qt::TabFocusReason);
    scene.take(name + QStringLiteral("-focus"), control);
    control.clearFocus();
}

template<typename Window>
Window *shown()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (auto *found = qobject_cast<Window *>(window); found && found->isVisible())
            return found;
    return nullptr;
}

} // namespace

void lookAtControls(Scene &scene)
{
    scene.fill();
    for (const char *name : {"accountIDField", "passwordField"})
        takeWithTheKeyboard(scene, QStringLiteral("controls-") + QLatin1String(name),
                            scene.child(name));
    const auto buttons = scene.view->findChildren<RolloverButton *>();
    for (RolloverButton *button : buttons) {
        const QString name = QStringLiteral("controls-") + button->objectName();
        takeUnderTheMouse(scene, name, *button);
        takeWithTheKeyboard(scene, name, *button);
    }
    scene.view->setPlayButtonEnabled(false);
    auto &play = scene.child("playButton");
    takeUnderTheMouse(scene, QStringLiteral("controls-playButton-disabled"), play);
    takeWithTheKeyboard(scene, QStringLiteral("controls-playButton-disabled"), play);
}

void lookAtStrip(Scene &scene)
{
    scene.showTouchBar(true);
    const auto windows = QApplication::topLevelWidgets();
    for (const QWidget *window : windows) {
        const auto buttons = window == &scene.window ? QList<RolloverButton *>()
                                                     : window->findChildren<RolloverButton *>();
        for (RolloverButton *button : buttons)
            if (window->isVisible())
                takeUnderTheMouse(scene, QStringLiteral("strip-") + button->objectName(), *button);
    }
}

void lookAtAlert(Scene &scene)
{
    auto *panel = shown<AlertPanel>();
    if (!panel)
        return;
    if (auto *field = panel->findChild<TextField *>()) {
        field->setStringValue(QStringLiteral("731902"));
        takeWithTheKeyboard(scene, QStringLiteral("alert-field"), *field);
    }
    const auto buttons = panel->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        const QString name = QStringLiteral("alert-") + button->text().toLower();
        takeUnderTheMouse(scene, name, *button);
        takeWithTheKeyboard(scene, name, *button);
    }
}

void openMenu(Scene &scene)
{
    auto *menu = new LauncherMenu(&scene.window);
    menu->popup(scene.window.mapToGlobal(QPoint(230, 560)));
    QTest::keyClick(menu, Qt::Key_Down);
}
