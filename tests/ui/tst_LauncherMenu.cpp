#include "TestMain.h"
#include "ui/LauncherMenu.h"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

namespace {

// A window with a field, a button and bare ground, and a menu whose choices are kept.
struct MenuWorld
{
    MenuWorld()
    {
        auto *column = new QVBoxLayout(&window);
        column->setContentsMargins(60, 60, 60, 60);
        column->addWidget(&field);
        column->addWidget(&button);
        QObject::connect(menu, &LauncherMenu::minimiseChosen, &window,
                         [this] { chosen += QStringLiteral("minimise"); });
        QObject::connect(menu, &LauncherMenu::resetFingerprintLoginChosen, &window,
                         [this] { chosen += QStringLiteral("reset"); });
        QObject::connect(menu, &LauncherMenu::copyDiagnosticsChosen, &window,
                         [this] { chosen += QStringLiteral("copy"); });
        QObject::connect(menu, &LauncherMenu::quitChosen, &window,
                         [this] { chosen += QStringLiteral("quit"); });
        window.show();
        window.activateWindow();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("The window did not get the keyboard.");
    }
    ~MenuWorld()
    {
        if (QWidget *popup = QApplication::activePopupWidget())
            popup->close();
    }

    // As a right click or the Menu key reaches a control.
    static void ask(QWidget &control, QContextMenuEvent::Reason reason)
    {
        const QPoint place(5, 5);
        QContextMenuEvent event(reason, place, control.mapToGlobal(place));
        QCoreApplication::sendEvent(&control, &event);
    }

    QStringList chosen;
    QWidget window;
    QLineEdit field;
    QPushButton button;
    LauncherMenu *menu = new LauncherMenu(&window); // the window's
};

} // namespace

Q_DECLARE_METATYPE(Qt::KeyboardModifiers)

class TestLauncherMenu : public QObject
{
    Q_OBJECT

private slots:
    void hasItsEntriesInOrder();
    void namesItselfAndItsEntriesForAssistiveTechnology();
    void tellsEachChoiceMadeByItsLetter_data();
    void tellsEachChoiceMadeByItsLetter();
    void isWalkedThroughWithTheArrows();
    void obeysShortcutsWithoutBeingOpen_data();
    void obeysShortcutsWithoutBeingOpen();
    void opensByKeyWhateverHasTheKeyboard_data();
    void opensByKeyWhateverHasTheKeyboard();
    void opensOnTheBackgroundAtTheMouse();
    void opensOnAControlWithoutAMenu();
    void leavesARightClickInAFieldToTheField();
    void givesTheMenusOfFieldsItsLook();
    void takesTheMenuKeyFromAField();
    void staysAwayFromOtherWindows();
    void closesWithEscapeWithoutAChoice();
    void givesTheKeyboardBack();
};

void TestLauncherMenu::hasItsEntriesInOrder()
{
    const MenuWorld world;
    QStringList entries;
    for (const QAction *action : world.menu->actions())
        entries += action->isSeparator() ? QStringLiteral("--")
                                         : QStringLiteral("%1 %2")
                                               .arg(action->text(), action->shortcut().toString())
                                               .trimmed();
    QCOMPARE(entries, (QStringList{QStringLiteral("&Minimise Ctrl+M"), QStringLiteral("--"),
                                   QStringLiteral("&Reset fingerprint login"),
                                   QStringLiteral("&Copy diagnostics"), QStringLiteral("--"),
                                   QStringLiteral("&Quit Ctrl+Q")}));
}

void TestLauncherMenu::namesItselfAndItsEntriesForAssistiveTechnology()
{
    const MenuWorld world;
    QAccessibleInterface *menu = QAccessible::queryAccessibleInterface(world.menu);
    QCOMPARE(menu->text(QAccessible::Name), QStringLiteral("Launcher"));
    QCOMPARE(menu->role(), QAccessible::PopupMenu);
    QStringList names;
    for (int i = 0; i < menu->childCount(); ++i)
        if (menu->child(i)->role() == QAccessible::MenuItem)
            names += menu->child(i)->text(QAccessible::Name);
    QCOMPARE(names,
             (QStringList{QStringLiteral("Minimise"), QStringLiteral("Reset fingerprint login"),
                          QStringLiteral("Copy diagnostics"), QStringLiteral("Quit")}));
}

void TestLauncherMenu::tellsEachChoiceMadeByItsLetter_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("minimise") << int(Qt::Key_M);
    QTest::newRow("reset") << int(Qt::Key_R);
    QTest::newRow("copy") << int(Qt::Key_C);
    QTest::newRow("quit") << int(Qt::Key_Q);
}

void TestLauncherMenu::tellsEachChoiceMadeByItsLetter()
{
    QFETCH(int, key);
    const MenuWorld world;
    world.menu->popupForKeyboard();
    QTest::keyClick(world.menu, Qt::Key(key));
    QCOMPARE(world.chosen, QStringList{QString::fromLatin1(QTest::currentDataTag())});
    QVERIFY(!world.menu->isVisible());
}

void TestLauncherMenu::isWalkedThroughWithTheArrows()
{
    const MenuWorld world;
    for (int downs = 0; downs < 4; ++downs) {
        world.menu->popupForKeyboard();
        for (int i = 0; i < downs; ++i)
            QTest::keyClick(world.menu, Qt::Key_Down);
        QTest::keyClick(world.menu, Qt::Key_Return);
    }
    QCOMPARE(world.chosen, (QStringList{QStringLiteral("minimise"), QStringLiteral("reset"),
                                        QStringLiteral("copy"), QStringLiteral("quit")}));
}

void TestLauncherMenu::obeysShortcutsWithoutBeingOpen_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("minimise") << int(Qt::Key_M);
    QTest::newRow("quit") << int(Qt::Key_Q);
}

void TestLauncherMenu::obeysShortcutsWithoutBeingOpen()
{
    QFETCH(int, key);
    MenuWorld world;
    for (QWidget *control : std::initializer_list<QWidget *>{&world.field, &world.button}) {
        control->setFocus();
        QTest::keyClick(control, Qt::Key(key), Qt::ControlModifier);
    }
    const QString choice = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(world.chosen, (QStringList{choice, choice}));
    QCOMPARE(world.field.text(), QString());
}

void TestLauncherMenu::opensByKeyWhateverHasTheKeyboard_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::newRow("menu key") << int(Qt::Key_Menu) << Qt::KeyboardModifiers();
    QTest::newRow("shift and f10") << int(Qt::Key_F10) << Qt::KeyboardModifiers(Qt::ShiftModifier);
}

void TestLauncherMenu::opensByKeyWhateverHasTheKeyboard()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    MenuWorld world;
    for (QWidget *control : std::initializer_list<QWidget *>{&world.field, &world.button}) {
        control->setFocus();
        QTest::keyClick(control, Qt::Key(key), modifiers);
        QVERIFY(world.menu->isVisible());
        QCOMPARE(world.menu->activeAction(), world.menu->actions().constFirst());
        QVERIFY(control->rect().contains(control->mapFromGlobal(world.menu->pos())));
        world.menu->close();
    }
    QCOMPARE(world.chosen, QStringList());
}

void TestLauncherMenu::opensOnTheBackgroundAtTheMouse()
{
    MenuWorld world;
    MenuWorld::ask(world.window, QContextMenuEvent::Mouse);
    QVERIFY(world.menu->isVisible());
    QCOMPARE(world.menu->pos(), world.window.mapToGlobal(QPoint(5, 5)));
}

void TestLauncherMenu::opensOnAControlWithoutAMenu()
{
    MenuWorld world;
    MenuWorld::ask(world.button, QContextMenuEvent::Mouse);
    QVERIFY(world.menu->isVisible());
}

void TestLauncherMenu::leavesARightClickInAFieldToTheField()
{
    MenuWorld world;
    MenuWorld::ask(world.field, QContextMenuEvent::Mouse);
    QVERIFY(!world.menu->isVisible());
    QVERIFY(QApplication::activePopupWidget());
}

void TestLauncherMenu::givesTheMenusOfFieldsItsLook()
{
    MenuWorld world;
    MenuWorld::ask(world.field, QContextMenuEvent::Mouse);
    const QWidget *menu = QApplication::activePopupWidget();
    QVERIFY(menu);
    QCOMPARE(menu->styleSheet(), world.menu->styleSheet());
    QVERIFY(menu->testAttribute(Qt::WA_TranslucentBackground));

    QMenu stranger;
    stranger.ensurePolished();
    QCOMPARE(stranger.styleSheet(), QString());
}

void TestLauncherMenu::takesTheMenuKeyFromAField()
{
    MenuWorld world;
    MenuWorld::ask(world.field, QContextMenuEvent::Keyboard);
    QCOMPARE(QApplication::activePopupWidget(), world.menu);
    // Some desktops send the key as well, and some the event only.
    QTest::keyClick(&world.field, Qt::Key_Menu);
    QCOMPARE(QApplication::activePopupWidget(), world.menu);
}

void TestLauncherMenu::staysAwayFromOtherWindows()
{
    const MenuWorld world;
    QWidget other;
    other.show();
    MenuWorld::ask(other, QContextMenuEvent::Mouse);
    MenuWorld::ask(other, QContextMenuEvent::Keyboard);
    QVERIFY(!world.menu->isVisible());
}

void TestLauncherMenu::closesWithEscapeWithoutAChoice()
{
    const MenuWorld world;
    world.menu->popupForKeyboard();
    QTest::keyClick(world.menu, Qt::Key_Escape);
    QVERIFY(!world.menu->isVisible());
    QCOMPARE(world.chosen, QStringList());
}

void TestLauncherMenu::givesTheKeyboardBack()
{
    MenuWorld world;
    world.field.setFocus();
    world.menu->popupForKeyboard();
    QTest::keyClick(world.menu, Qt::Key_Escape);
    QCOMPARE(QApplication::focusWidget(), &world.field);
}

QUELLMOOR_TEST(TestLauncherMenu, "LauncherMenu")
#include "tst_LauncherMenu.moc"
