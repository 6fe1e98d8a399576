#include "ui/LauncherMenu.h"

#include "platform/WindowShape.h"
#include "ui/Typography.h"

#include <QApplication>
#include <QContextMenuEvent>

namespace {

QString name(QRgb color) { return QColor::fromRgb(color).name(); }

QString menuStyle()
{
    return QStringLiteral(
               "QMenu { color: %1; border: 1px solid #5a6a64; border-radius: 8px; padding: 6px;"
               " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #1b2725,"
               " stop:1 #0e1517) }"
               "QMenu::item { padding: 8px 26px 8px 16px; margin: 1px 0; border-radius: 5px;"
               " background: transparent }"
               "QMenu::item:selected { color: %2; background: #4a4830 }"
               "QMenu::item:disabled { color: #6f807a; background: transparent }"
               "QMenu::separator { height: 1px; background: #33413d; margin: 5px 10px }")
        .arg(name(Palette::Text), name(Palette::Bright));
}

// Before the menu has a window.
void dress(QMenu &menu)
{
    menu.setWindowFlags(menu.windowFlags() | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint);
    menu.setAttribute(Qt::WA_TranslucentBackground);
    menu.setFont(Typography::text(14));
    menu.setStyleSheet(menuStyle());
}

} // namespace

LauncherMenu::LauncherMenu(QWidget *window) : QMenu(window)
{
    setTitle(tr("Launcher"));
    setAccessibleName(tr("Launcher"));
    dress(*this);

    addEntry(tr("&Minimise"), Qt::CTRL | Qt::Key_M, &LauncherMenu::minimiseChosen);
    addSeparator();
    addEntry(tr("&Reset fingerprint login"), {}, &LauncherMenu::resetFingerprintLoginChosen);
    addEntry(tr("&Copy diagnostics"), {}, &LauncherMenu::copyDiagnosticsChosen);
    addSeparator();
    addEntry(tr("&Quit"), Qt::CTRL | Qt::Key_Q, &LauncherMenu::quitChosen);
    window->addActions(actions());

    auto *open = new QAction(tr("Open the menu"), this);
    open->setShortcuts({Qt::Key_Menu, Qt::SHIFT | Qt::Key_F10});
    connect(open, &QAction::triggered, this, &LauncherMenu::popupForKeyboard);
    window->addAction(open);

    // The whole application: text fields would keep the Menu key for a menu of their own.
    qApp->installEventFilter(this);
}

void LauncherMenu::addEntry(const QString &text, const QKeySequence &shortcut,
                            void (LauncherMenu::*chosen)())
{
    QAction *action = addAction(text);
    action->setShortcut(shortcut);
    action->setShortcutVisibleInContextMenu(true);
    connect(action, &QAction::triggered, this, chosen);
}

void LauncherMenu::popupForKeyboard()
{
    if (isVisible())
        return;
    const QWidget *window = parentWidget();
    const QWidget *focused = window->focusWidget();
    const QWidget *place = focused ? focused : window;
    popup(place->mapToGlobal(place->rect().center()));
    setActiveAction(actions().constFirst());
}

bool LauncherMenu::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Polish && watched != this && comesFromWindow(watched))
        dress(static_cast<QMenu &>(*watched));
    if (event->type() == QEvent::Show && comesFromWindow(watched)) {
        auto &menu = static_cast<QMenu &>(*watched);
        cutToShape(menu, menu);
    }
    if (event->type() != QEvent::ContextMenu || !isInWindow(watched))
        return QMenu::eventFilter(watched, event);
    const auto &request = static_cast<QContextMenuEvent &>(*event);
    if (request.reason() == QContextMenuEvent::Keyboard) {
        popupForKeyboard();
        return true;
    }
    // A control that has a menu of its own has taken the event before it comes to the window.
    if (watched != parentWidget())
        return QMenu::eventFilter(watched, event);
    popup(request.globalPos());
    return true;
}

bool LauncherMenu::isInWindow(const QObject *object) const
{
    const auto *widget = qobject_cast<const QWidget *>(object);
    return widget && widget->window() == parentWidget();
}

bool LauncherMenu::comesFromWindow(const QObject *menu) const
{
    if (!qobject_cast<const QMenu *>(menu))
        return false;
    const QObject *owner = menu->parent();
    while (owner && owner != parent())
        owner = owner->parent();
    return owner;
}
