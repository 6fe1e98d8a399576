#include "TestMain.h"
#include "ui/HeldInput.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QWindow>

class TestHeldInput : public QObject
{
    Q_OBJECT

private slots:
    void handsOnInItsOrderWhatHasCome();
    void holdsNothingBackAfterwards();
    void mayOutliveItsWindow();
};

namespace {

struct Form
{
    Form()
    {
        window.resize(300, 200);
        other.move(0, 50);
        button.move(0, 100);
        window.show();
        window.activateWindow();
        field.setFocus();
        if (!QTest::qWaitForWindowActive(&window))
            qFatal("The window did not get the keyboard.");
        held = std::make_unique<HeldInput>(*window.windowHandle());
        QObject::connect(&button, &QPushButton::clicked, &window, [this] { ++clicks; });
    }
    void types(const QString &text)
    {
        for (const QChar c : text)
            QTest::keyClick(window.windowHandle(), c.toLatin1());
    }

    QWidget window;
    QLineEdit field{&window};
    QLineEdit other{&window};
    QPushButton button{QStringLiteral("Button"), &window};
    int clicks = 0;
    std::unique_ptr<HeldInput> held;
};

} // namespace

void TestHeldInput::handsOnInItsOrderWhatHasCome()
{
    Form form;
    form.types(QStringLiteral("wren"));
    QTest::keyClick(form.window.windowHandle(), Qt::Key_Tab);
    form.types(QStringLiteral("secret"));
    QTest::mouseClick(form.window.windowHandle(), Qt::LeftButton, {},
                      form.button.geometry().center());
    QCoreApplication::processEvents();
    QCOMPARE(form.field.text(), QString());
    QCOMPARE(form.clicks, 0);

    form.field.setText(QStringLiteral("before"));
    form.field.selectAll();
    form.held->letGo();
    QTRY_COMPARE(form.clicks, 1);
    QCOMPARE(form.field.text(), QStringLiteral("wren"));
    QCOMPARE(form.other.text(), QStringLiteral("secret"));
}

void TestHeldInput::holdsNothingBackAfterwards()
{
    Form form;
    form.held->letGo();
    form.types(QStringLiteral("wren"));
    QCOMPARE(form.field.text(), QStringLiteral("wren"));
}

void TestHeldInput::mayOutliveItsWindow()
{
    auto form = std::make_unique<Form>();
    form->types(QStringLiteral("wren"));
    const auto held = std::move(form->held);
    form.reset();
    held->letGo();
    QCoreApplication::processEvents();
}

QUELLMOOR_TEST(TestHeldInput, "HeldInput")
#include "tst_HeldInput.moc"
