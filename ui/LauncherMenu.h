#pragma once

#include <QMenu>

// What a player expects of any desktop program and the artwork has no place for: a menu on the
// window's background, on the Menu key and on Shift+F10, and shortcuts that work without it. It
// tells what was chosen and knows nothing about what comes of it. Main thread only.
class LauncherMenu : public QMenu
{
    Q_OBJECT

public:
    // Belongs to that window from then on, and so do the shortcuts. The window's other menus, those
    // of text fields, look like this one.
    explicit LauncherMenu(QWidget *window);

    // Beside the control that has the keyboard.
    void popupForKeyboard();

    bool eventFilter(QObject *watched, QEvent *event) override;

signals:
    void minimiseChosen();
    void resetFingerprintLoginChosen();
    void copyDiagnosticsChosen();
    void quitChosen();

private:
    void addEntry(const QString &text, const QKeySequence &shortcut,
                  void (LauncherMenu::*chosen)());
    [[nodiscard]] bool isInWindow(const QObject *object) const;
    [[nodiscard]] bool comesFromWindow(const QObject *menu) const;
};
