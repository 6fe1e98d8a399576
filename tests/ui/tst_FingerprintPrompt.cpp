#include "TestMain.h"
#include "ui/FingerprintPanel.h"
#include "ui/FingerprintPrompt.h"
#include "ui/PictureView.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace {

const auto Reason = QStringLiteral("Login to Quellmoor");

struct PromptWorld
{
    PromptWorld()
    {
        window->setGeometry(50, 50, 900, 600);
        window->show();
        prompt.setWindow(window.get());
    }

    // As the reader does: cancelling ends the question, and its end hides the prompt.
    void ask()
    {
        prompt.show(Reason, [this] {
            ++cancellations;
            prompt.hide();
        });
    }
    // Null when none is on the screen.
    [[nodiscard]] static FingerprintPanel *panel()
    {
        FingerprintPanel *found = nullptr;
        for (QWidget *widget : QApplication::topLevelWidgets())
            if (auto *panel = qobject_cast<FingerprintPanel *>(widget))
                found = panel->isVisible() ? panel : found;
        return found;
    }

    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    int cancellations = 0;
    FingerprintPrompt prompt;
};

} // namespace

class TestFingerprintPrompt : public QObject
{
    Q_OBJECT

private slots:
    void showsTheReasonOverTheWindow();
    void showsAFinger();
    void tellsAssistiveTechnologyWhatToDo();
    void cancelsWithEscape();
    void cancelsWithItsButton();
    void cancelsWhenItIsClosed();
    void ignoresAReturnThatIsStillOnItsWay();
    void saysWhatToDoForAnotherTry();
    void goesAwayWithoutCancelling();
    void startsEachQuestionAfresh();
    void doesNothingWithoutAQuestion();
    void keepsTheWindowsControlsFromAnswering();
    void worksWithoutAWindow();
    void survivesTheEndOfTheWindow();
    void asksAgainFromWithinItsOwnCancel();
};

void TestFingerprintPrompt::showsTheReasonOverTheWindow()
{
    PromptWorld world;
    world.ask();
    const FingerprintPanel *panel = PromptWorld::panel();
    QVERIFY(panel);
    QCOMPARE(panel->windowTitle(), Reason);
    QStringList texts;
    for (const QLabel *label : panel->findChildren<QLabel *>())
        texts += label->text();
    QCOMPARE(texts, (QStringList{Reason, QStringLiteral("Put your finger on the reader.")}));
    QVERIFY(world.window->geometry().contains(panel->geometry()));
    QCOMPARE(world.cancellations, 0);
}

void TestFingerprintPrompt::showsAFinger()
{
    PromptWorld world;
    world.ask();
    const FingerprintPanel *panel = PromptWorld::panel();
    const auto *picture = panel->findChild<PictureView *>();
    QVERIFY(picture);
    QCOMPARE(picture->pictureName(), QStringLiteral("touchbar_fingerprint_over"));
    QVERIFY(panel->rect().contains(picture->geometry()));
    for (const QWidget *widget : panel->findChildren<QWidget *>())
        QVERIFY(widget == picture || !widget->geometry().intersects(picture->geometry()));
}

void TestFingerprintPrompt::tellsAssistiveTechnologyWhatToDo()
{
    PromptWorld world;
    world.ask();
    const QAccessibleInterface *panel = QAccessible::queryAccessibleInterface(PromptWorld::panel());
    QCOMPARE(panel->text(QAccessible::Name), Reason);
    QCOMPARE(panel->text(QAccessible::Description),
             QStringLiteral("Put your finger on the reader."));
    world.prompt.retry(QStringLiteral("Try again."));
    QCOMPARE(panel->text(QAccessible::Description), QStringLiteral("Try again."));
}

void TestFingerprintPrompt::cancelsWithEscape()
{
    PromptWorld world;
    world.ask();
    QTest::keyClick(PromptWorld::panel(), Qt::Key_Escape);
    QCOMPARE(world.cancellations, 1);
    QVERIFY(!PromptWorld::panel());
}

void TestFingerprintPrompt::cancelsWithItsButton()
{
    PromptWorld world;
    world.ask();
    const auto buttons = PromptWorld::panel()->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(buttons.first()->text(), QStringLiteral("Cancel"));
    QTest::keyClick(buttons.first(), Qt::Key_Space);
    QCOMPARE(world.cancellations, 1);
    QVERIFY(!PromptWorld::panel());
}

void TestFingerprintPrompt::cancelsWhenItIsClosed()
{
    PromptWorld world;
    world.ask();
    PromptWorld::panel()->close();
    QCOMPARE(world.cancellations, 1);
    QVERIFY(!PromptWorld::panel());
}

void TestFingerprintPrompt::ignoresAReturnThatIsStillOnItsWay()
{
    PromptWorld world;
    world.ask();
    FingerprintPanel *panel = PromptWorld::panel();
    QTest::keyClick(panel, Qt::Key_Return);
    QTest::keyClick(panel->findChild<QPushButton *>(), Qt::Key_Return);
    QCOMPARE(world.cancellations, 0);
    QVERIFY(panel->isVisible());
}

void TestFingerprintPrompt::saysWhatToDoForAnotherTry()
{
    PromptWorld world;
    world.ask();
    world.prompt.retry(QStringLiteral("The swipe was too short. Try again."));
    QCOMPARE(PromptWorld::panel()->hint(), QStringLiteral("The swipe was too short. Try again."));
    QCOMPARE(PromptWorld::panel()->windowTitle(), Reason);
    QCOMPARE(world.cancellations, 0);
}

void TestFingerprintPrompt::goesAwayWithoutCancelling()
{
    PromptWorld world;
    world.ask();
    world.prompt.hide();
    QVERIFY(!PromptWorld::panel());
    QCOMPARE(world.cancellations, 0);
}

void TestFingerprintPrompt::startsEachQuestionAfresh()
{
    PromptWorld world;
    world.ask();
    world.prompt.retry(QStringLiteral("Try again."));
    world.prompt.hide();
    world.ask();
    QCOMPARE(PromptWorld::panel()->hint(), QStringLiteral("Put your finger on the reader."));
    QTest::keyClick(PromptWorld::panel(), Qt::Key_Escape);
    QCOMPARE(world.cancellations, 1);
}

void TestFingerprintPrompt::doesNothingWithoutAQuestion()
{
    PromptWorld world;
    world.prompt.retry(QStringLiteral("Try again."));
    world.prompt.hide();
    world.prompt.hide();
    QVERIFY(!PromptWorld::panel());
    QCOMPARE(world.cancellations, 0);
}

void TestFingerprintPrompt::keepsTheWindowsControlsFromAnswering()
{
    PromptWorld world;
    world.ask();
    QCOMPARE(PromptWorld::panel()->windowModality(), Qt::WindowModal);
    QCOMPARE(PromptWorld::panel()->parentWidget(), world.window.get());
}

void TestFingerprintPrompt::worksWithoutAWindow()
{
    FingerprintPrompt prompt;
    prompt.show(Reason, [] {});
    QVERIFY(PromptWorld::panel());
    prompt.hide();
    QVERIFY(!PromptWorld::panel());
}

void TestFingerprintPrompt::survivesTheEndOfTheWindow()
{
    PromptWorld world;
    world.ask();
    world.window.reset();
    QVERIFY(!PromptWorld::panel());
    world.prompt.retry(QStringLiteral("Try again."));
    world.prompt.hide();
    QCOMPARE(world.cancellations, 0);
}

void TestFingerprintPrompt::asksAgainFromWithinItsOwnCancel()
{
    PromptWorld world;
    world.prompt.show(Reason, [&world] { world.ask(); });
    QTest::keyClick(PromptWorld::panel(), Qt::Key_Escape);
    QVERIFY(PromptWorld::panel());
    QCOMPARE(world.cancellations, 0);
    QTest::keyClick(PromptWorld::panel(), Qt::Key_Escape);
    QCOMPARE(world.cancellations, 1);
}

QUELLMOOR_TEST(TestFingerprintPrompt, "FingerprintPrompt")
#include "tst_FingerprintPrompt.moc"
