#include "TestMain.h"
#include "ui/CustomWindow.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

namespace {

// On another window system.
class WindowElsewhere final : public CustomWindow
{
public:
    explicit WindowElsewhere(const QString &platform)
        : CustomWindow(QRect(0, 0, 400, 300)), m_platform(platform)
    {
    }
    int systemMoves = 0;

protected:
    [[nodiscard]] QString platformName() const override { return m_platform; }
    void startSystemMove() override { ++systemMoves; }

private:
    const QString m_platform;
};

} // namespace

class TestCustomWindow : public QObject
{
    Q_OBJECT

private slots:
    void hasNoFrameAndNoBackground();
    void standsInTheMiddleOfTheScreen();
    void canTakeTheKeyboard();
    void tellsOnceThatItHasAppeared();
    void tellsThatItHasAppearedWithoutTheKeyboard();
    void tellsThatItHasAppearedOutOfSight();
    void drawsTextsRightAfterTheFirstFrame();
    void endsTheProgramWhenItIsClosed();
    void keepsWhereTheMouseWasPressed();
    void originForDrag_data();
    void originForDrag();
    void followsTheMouse();
    void stopsAtTheTopOfTheVisibleArea();
    void isMovedByDraggingItsContent();
    void staysWhileAControlTakesTheMouse();
    void staysWhileAPressedButtonIsLeftBehind();
    void ignoresOtherMouseButtons();
    void leavesDraggingToADesktopThatPlacesWindows_data();
    void leavesDraggingToADesktopThatPlacesWindows();

private:
    static void press(QWidget &target, QPointF at, Qt::MouseButton button = Qt::LeftButton);
    static void drag(QWidget &target, QPointF to, Qt::MouseButton button = Qt::LeftButton);
};

void TestCustomWindow::press(QWidget &target, QPointF at, Qt::MouseButton button)
{
    QMouseEvent event(QEvent::MouseButtonPress, at, target.mapToGlobal(at), button, button, {});
    QCoreApplication::sendEvent(&target, &event);
}

void TestCustomWindow::drag(QWidget &target, QPointF to, Qt::MouseButton button)
{
    QMouseEvent event(QEvent::MouseMove, to, target.mapToGlobal(to), Qt::NoButton, button, {});
    QCoreApplication::sendEvent(&target, &event);
}

void TestCustomWindow::hasNoFrameAndNoBackground()
{
    const CustomWindow window(QRect(10, 20, 400, 300));
    QVERIFY(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    QVERIFY(window.testAttribute(Qt::WA_TranslucentBackground));
    QCOMPARE(window.windowOpacity(), 1.0);
}

void TestCustomWindow::standsInTheMiddleOfTheScreen()
{
    const CustomWindow window(QRect(10, 20, 400, 300));
    QCOMPARE(window.size(), QSize(400, 300));
    QCOMPARE(window.geometry().center(), window.screen()->availableGeometry().center());
}

void TestCustomWindow::canTakeTheKeyboard()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    QLineEdit field(&window);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    field.setFocus();
    QTest::keyClicks(&field, QStringLiteral("typed"));
    QVERIFY(CustomWindow::canBecomeKeyWindow());
    QCOMPARE(field.text(), QStringLiteral("typed"));
}

void TestCustomWindow::tellsOnceThatItHasAppeared()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    const QSignalSpy appeared(&window, &CustomWindow::appeared);
    bool hadKeyboard = false;
    connect(&window, &CustomWindow::appeared, &window,
            [&] { hadKeyboard = window.isActiveWindow(); });
    window.show();
    QCOMPARE(appeared.size(), 0);
    window.activateWindow();
    QTRY_COMPARE(appeared.size(), 1);
    QVERIFY(hadKeyboard);
    window.repaint();
    window.hide();
    window.show();
    window.repaint();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QCoreApplication::processEvents();
    QCOMPARE(appeared.size(), 1);
}

void TestCustomWindow::tellsThatItHasAppearedWithoutTheKeyboard()
{
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    CustomWindow window(QRect(0, 0, 400, 300), Qt::ToolTip); // such a one is not made active
    const QSignalSpy appeared(&window, &CustomWindow::appeared);
    QElapsedTimer time;
    time.start();
    window.show();
    QTRY_COMPARE(appeared.size(), 1);
    QVERIFY(!window.isActiveWindow());
    QVERIFY(time.elapsed() > 100); // it has waited for the keyboard
}

void TestCustomWindow::tellsThatItHasAppearedOutOfSight()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    window.setUpdatesEnabled(false); // as where nothing asks for its content
    const QSignalSpy appeared(&window, &CustomWindow::appeared);
    window.show();
    QTRY_COMPARE(appeared.size(), 1);
}

void TestCustomWindow::drawsTextsRightAfterTheFirstFrame()
{
    class Label final : public QWidget
    {
    public:
        using QWidget::QWidget;
        QList<bool> drawn;

    protected:
        void paintEvent(QPaintEvent *) override { drawn += CustomWindow::drawsTexts(*this); }
    };
    CustomWindow window(QRect(0, 0, 400, 300));
    Label label(&window);
    label.setGeometry(10, 20, 30, 40);
    window.grab();
    QCOMPARE(label.drawn, QList<bool>{true}); // nobody watches
    label.drawn.clear();
    QList<bool> drawnWhenItAppeared;
    connect(&window, &CustomWindow::appeared, &window, [&] { drawnWhenItAppeared = label.drawn; });
    window.show();
    QTRY_VERIFY(!drawnWhenItAppeared.isEmpty());
    QVERIFY(!drawnWhenItAppeared.first());
    QVERIFY(drawnWhenItAppeared.last());
    window.repaint();
    QVERIFY(label.drawn.last());

    Label elsewhere;
    elsewhere.show();
    QTRY_VERIFY(!elsewhere.drawn.isEmpty());
    QVERIFY(!elsewhere.drawn.contains(false));
}

void TestCustomWindow::endsTheProgramWhenItIsClosed()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    window.show();
    QTimer::singleShot(0, &window, &QWidget::close);
    QTimer::singleShot(10000, &window, [] { QCoreApplication::exit(1); });
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(window.isVisible()); // it goes with the program
}

void TestCustomWindow::keepsWhereTheMouseWasPressed()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    press(window, QPointF(37, 41));
    QCOMPARE(window.initialLocation(), QPointF(37, 41));
    window.setInitialLocation(QPointF(5, 6));
    QCOMPARE(window.initialLocation(), QPointF(5, 6));
}

void TestCustomWindow::originForDrag_data()
{
    QTest::addColumn<QPointF>("location");
    QTest::addColumn<QRect>("visibleFrame");
    QTest::addColumn<QPoint>("origin");

    const QRect screen(0, 30, 1600, 900);
    QTest::newRow("not moved") << QPointF(50, 60) << screen << QPoint(500, 400);
    QTest::newRow("with the mouse") << QPointF(57, 49) << screen << QPoint(507, 389);
    QTest::newRow("far left") << QPointF(-2950, 60) << screen << QPoint(-2500, 400);
    QTest::newRow("far right") << QPointF(3050, 60) << screen << QPoint(3500, 400);
    QTest::newRow("far down") << QPointF(50, 3060) << screen << QPoint(500, 3400);
    QTest::newRow("to the top") << QPointF(50, -310) << screen << QPoint(500, 30);
    QTest::newRow("one above the top") << QPointF(50, -311) << screen << QPoint(500, 30);
    QTest::newRow("far above the top") << QPointF(150, -3000) << screen << QPoint(600, 30);
    QTest::newRow("without a screen") << QPointF(50, -3000) << QRect(0, 0, 0, 0) << QPoint(500, 0);
}

void TestCustomWindow::originForDrag()
{
    QFETCH(QPointF, location);
    QFETCH(QRect, visibleFrame);
    QTEST(CustomWindow::originForDrag(QRect(500, 400, 300, 200), QPointF(50, 60), location,
                                      visibleFrame),
          "origin");
}

void TestCustomWindow::followsTheMouse()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    window.move(100, 100);
    press(window, QPointF(50, 50));
    drag(window, QPointF(62, 45));
    drag(window, QPointF(50, 60));
    QCOMPARE(window.pos(), QPoint(112, 105));
}

void TestCustomWindow::stopsAtTheTopOfTheVisibleArea()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    window.move(100, 100);
    press(window, QPointF(50, 50));
    drag(window, QPointF(50, -5000));
    QCOMPARE(window.pos(), QPoint(100, window.screen()->availableGeometry().top()));
}

void TestCustomWindow::isMovedByDraggingItsContent()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    auto *content = new QWidget;
    content->resize(400, 300);
    window.setContentView(content);
    window.move(100, 100);
    window.show();
    press(*content, QPointF(50, 50));
    drag(*content, QPointF(70, 80));
    QCOMPARE(window.pos(), QPoint(120, 130));
}

void TestCustomWindow::staysWhileAControlTakesTheMouse()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    auto *field = new QLineEdit(QStringLiteral("a text to select"), &window);
    window.move(100, 100);
    window.show();
    press(*field, QPointF(5, 5));
    drag(*field, QPointF(60, 5));
    QCOMPARE(window.pos(), QPoint(100, 100));
}

void TestCustomWindow::staysWhileAPressedButtonIsLeftBehind()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    auto *button = new QPushButton(&window);
    window.move(100, 100);
    window.show();
    QTest::mouseClick(&window, Qt::LeftButton);
    press(*button, QPointF(5, 5));
    drag(*button, QPointF(200, 200));
    drag(*button, QPointF(210, 210));
    QCOMPARE(window.pos(), QPoint(100, 100));
}

void TestCustomWindow::ignoresOtherMouseButtons()
{
    CustomWindow window(QRect(0, 0, 400, 300));
    window.move(100, 100);
    press(window, QPointF(50, 50), Qt::RightButton);
    drag(window, QPointF(80, 80), Qt::RightButton);
    QCOMPARE(window.pos(), QPoint(100, 100));
}

void TestCustomWindow::leavesDraggingToADesktopThatPlacesWindows_data()
{
    QTest::addColumn<QString>("platform");
    QTest::addColumn<int>("systemMoves");
    QTest::newRow("Wayland") << QStringLiteral("wayland") << 1;
    QTest::newRow("Wayland through EGL") << QStringLiteral("wayland-egl") << 1;
    QTest::newRow("X11") << QStringLiteral("xcb") << 0;
    QTest::newRow("macOS") << QStringLiteral("cocoa") << 0;
}

void TestCustomWindow::leavesDraggingToADesktopThatPlacesWindows()
{
    QFETCH(QString, platform);
    QFETCH(int, systemMoves);
    WindowElsewhere window(platform);
    const QPoint origin = window.pos();
    press(window, {100, 100});
    drag(window, {150, 130});
    drag(window, {170, 150}); // the desktop has taken over
    QCOMPARE(window.systemMoves, systemMoves);
    QCOMPARE(window.pos() == origin, systemMoves > 0);
}

QUELLMOOR_TEST(TestCustomWindow, "CustomWindow")
#include "tst_CustomWindow.moc"
