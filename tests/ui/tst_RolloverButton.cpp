#include "TestMain.h"
#include "ui/RolloverButton.h"

#include <QAccessible>
#include <QEnterEvent>
#include <QSignalSpy>
#include <QTest>

class TestRolloverButton : public QObject
{
    Q_OBJECT

private slots:
    void takesItsNormalPictureFromTheInterfaceFile();
    void takesItsNormalPictureWhenMadeWithARolloverPicture();
    void showsTheRolloverPictureUnderTheMouse();
    void followsTheMouseWhileTheLauncherIsNotActive();
    void keepsItsPictureWhileHoveringIsOff();
    void keepsItsPictureWithoutARolloverPicture();
    void keepsItsPictureForAnUnknownName();
    void keepsTheRolloverPictureWithoutANormalOne();
    void showsNothingNewWhenAPropertyIsSet_data();
    void showsNothingNewWhenAPropertyIsSet();
    void looksSwitchedOffWithAPictureOfThat();
    void isPressedByMouseAndKeyboard();
    void isAButtonWithANameForAssistiveTechnology();
    void looksDifferentInEveryState();
    void paintsSharplyOnADenseScreen();
    void paintsCaptionsOfEveryScript_data();
    void paintsCaptionsOfEveryScript();

private:
    static void enter(RolloverButton &button);
    static void leave(RolloverButton &button);
    static Picture normal() { return Picture::named(QStringLiteral("CLOSE_NORMAL")); }
    static Picture rollover() { return Picture::named(QStringLiteral("CLOSE_ROLLOVER")); }
    static void prepare(RolloverButton &button);
};

void TestRolloverButton::enter(RolloverButton &button)
{
    const QPointF middle(button.rect().center());
    QEnterEvent event(middle, middle, button.mapToGlobal(middle));
    QCoreApplication::sendEvent(&button, &event);
}

void TestRolloverButton::leave(RolloverButton &button)
{
    QEvent event(QEvent::Leave);
    QCoreApplication::sendEvent(&button, &event);
}

void TestRolloverButton::prepare(RolloverButton &button)
{
    button.resize(28, 28);
    button.setImage(normal());
    button.awakeFromNib();
    button.setupWithRolloverImageName(QStringLiteral("CLOSE_ROLLOVER"));
}

void TestRolloverButton::takesItsNormalPictureFromTheInterfaceFile()
{
    RolloverButton button;
    button.setPictureName(QStringLiteral("CLOSE_NORMAL"));
    QVERIFY(!button.isRolloverEnabled());
    button.awakeFromNib();
    QVERIFY(button.isRolloverEnabled());
    QCOMPARE(button.normalImage().name(), QStringLiteral("CLOSE_NORMAL"));
    QVERIFY(button.rolloverImage().isNull());
}

void TestRolloverButton::takesItsNormalPictureWhenMadeWithARolloverPicture()
{
    RolloverButton button;
    button.setImage(normal());
    button.initWithRolloverImage(rollover());
    QVERIFY(button.isRolloverEnabled());
    QCOMPARE(button.normalImage(), normal());
    QCOMPARE(button.rolloverImage(), rollover());
    QCOMPARE(button.image(), normal());
}

void TestRolloverButton::showsTheRolloverPictureUnderTheMouse()
{
    RolloverButton button;
    prepare(button);
    QCOMPARE(button.image(), normal());
    enter(button);
    QCOMPARE(button.image(), rollover());
    leave(button);
    QCOMPARE(button.image(), normal());
}

void TestRolloverButton::followsTheMouseWhileTheLauncherIsNotActive()
{
    RolloverButton button;
    prepare(button);
    button.setAttribute(Qt::WA_ShowWithoutActivating);
    button.show();
    QVERIFY(!button.isActiveWindow());
    enter(button);
    QCOMPARE(button.image(), rollover());
}

void TestRolloverButton::keepsItsPictureWhileHoveringIsOff()
{
    RolloverButton button;
    prepare(button);
    button.setRolloverEnabled(false);
    enter(button);
    QCOMPARE(button.image(), normal());
    button.setImage(rollover());
    leave(button);
    QCOMPARE(button.image(), rollover());
}

void TestRolloverButton::keepsItsPictureWithoutARolloverPicture()
{
    RolloverButton button;
    button.setImage(normal());
    button.awakeFromNib();
    enter(button);
    QCOMPARE(button.image(), normal());
}

void TestRolloverButton::keepsItsPictureForAnUnknownName()
{
    RolloverButton button;
    prepare(button);
    button.setupWithRolloverImageName(QStringLiteral("NO_SUCH_PICTURE"));
    enter(button);
    QCOMPARE(button.image(), normal());
}

void TestRolloverButton::keepsTheRolloverPictureWithoutANormalOne()
{
    RolloverButton button;
    prepare(button);
    button.setNormalImage({});
    enter(button);
    leave(button);
    QCOMPARE(button.image(), rollover());
}

void TestRolloverButton::showsNothingNewWhenAPropertyIsSet_data()
{
    QTest::addColumn<RolloverButton::CaptionStyle>("style");
    QTest::addColumn<bool>("isDown");
    QTest::newRow("plate") << RolloverButton::Plate << false;
    QTest::newRow("plate held down") << RolloverButton::Plate << true;
    QTest::newRow("link") << RolloverButton::Link << false;
    QTest::newRow("link held down") << RolloverButton::Link << true;
}

void TestRolloverButton::showsNothingNewWhenAPropertyIsSet()
{
    QFETCH(const RolloverButton::CaptionStyle, style);
    QFETCH(const bool, isDown);
    RolloverButton button;
    prepare(button);
    button.resize(220, 64);
    button.setCaptionStyle(style);
    button.setText(QStringLiteral("PLAY"));
    for (const bool isHovered : {false, true}) {
        prepare(button);
        if (isHovered)
            enter(button);
        button.setDown(isDown);
        const Picture image = button.image();
        const QImage seen = button.grab().toImage();
        button.setNormalImage(rollover());
        button.setRolloverImage({});
        button.setRolloverEnabled(false);
        QCOMPARE(button.image(), image);
        QCOMPARE(button.grab().toImage(), seen);
    }
}

void TestRolloverButton::looksSwitchedOffWithAPictureOfThat()
{
    RolloverButton button;
    prepare(button);
    button.resize(220, 64);
    button.setCaptionStyle(RolloverButton::Plate);
    button.setImage(Picture::named(QStringLiteral("PLAY_DISABLED")));
    const QImage withoutCaption = button.grab().toImage();
    button.setText(QStringLiteral("PLAY"));
    const QImage seen = button.grab().toImage();
    QVERIFY(seen != withoutCaption);
    QCOMPARE(button.cursor().shape(), Qt::ArrowCursor);
    button.setDown(true);
    QCOMPARE(button.grab().toImage(), seen);
    button.setDown(false);
    button.setImage(normal());
    QCOMPARE(button.cursor().shape(), Qt::PointingHandCursor);
}

void TestRolloverButton::isPressedByMouseAndKeyboard()
{
    RolloverButton button;
    prepare(button);
    button.show();
    QSignalSpy spy(&button, &QAbstractButton::clicked);
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Space);
    QCOMPARE(spy.count(), 2);
}

void TestRolloverButton::isAButtonWithANameForAssistiveTechnology()
{
    RolloverButton button;
    button.setText(QStringLiteral("PLAY"));
    button.setAccessibleName(QStringLiteral("Play"));
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&button);
    QVERIFY(interface);
    QCOMPARE(interface->role(), QAccessible::Button);
    QCOMPARE(interface->text(QAccessible::Name), QStringLiteral("Play"));
}

void TestRolloverButton::looksDifferentInEveryState()
{
    RolloverButton button;
    prepare(button);
    button.show();
    button.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&button));
    button.clearFocus();
    leave(button);
    const QImage plain = button.grab().toImage();
    enter(button);
    const QImage hovered = button.grab().toImage();
    QTest::mousePress(&button, Qt::LeftButton);
    const QImage pressed = button.grab().toImage();
    QTest::mouseRelease(&button, Qt::LeftButton, {}, QPoint(-50, -50));
    leave(button);
    button.setFocus();
    const QImage focused = button.grab().toImage();

    const QList<QImage> states{plain, hovered, pressed, focused};
    for (qsizetype i = 0; i < states.size(); ++i)
        for (qsizetype j = 0; j < i; ++j)
            QVERIFY2(states[i] != states[j], qPrintable(QStringLiteral("%1 %2").arg(i).arg(j)));
}

void TestRolloverButton::paintsSharplyOnADenseScreen()
{
    RolloverButton button;
    prepare(button);
    QImage dense(56, 56, QImage::Format_ARGB32_Premultiplied);
    dense.setDevicePixelRatio(2);
    dense.fill(Qt::transparent);
    button.render(&dense, {}, {}, {});
    QImage stretched(28, 28, QImage::Format_ARGB32_Premultiplied);
    stretched.fill(Qt::transparent);
    button.render(&stretched, {}, {}, {});
    dense.setDevicePixelRatio(1);
    QVERIFY(dense != stretched.scaled(56, 56, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    QVERIFY(dense.pixelColor(28, 28).alpha() > 0);
}

void TestRolloverButton::paintsCaptionsOfEveryScript_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("other");
    QTest::addRow("Latin") << QStringLiteral("GRAĆ") << QStringLiteral("GRAĘ");
    QTest::addRow("Cyrillic") << QStringLiteral("ИГРА") << QStringLiteral("ГРАИ");
    QTest::addRow("Hebrew") << QStringLiteral("שלום") << QStringLiteral("לשום");
}

// Letters that no font has are boxes, which look all the same.
void TestRolloverButton::paintsCaptionsOfEveryScript()
{
    QFETCH(const QString, caption);
    QFETCH(const QString, other);
    RolloverButton button;
    button.resize(220, 64);
    button.setCaptionStyle(RolloverButton::Plate);
    button.setText(caption);
    const QImage seen = button.grab().toImage();
    button.setText(other);
    QVERIFY(button.grab().toImage() != seen);
}

QUELLMOOR_TEST(TestRolloverButton, "RolloverButton")
#include "tst_RolloverButton.moc"
