#include "Contrast.h"
#include "TestMain.h"
#include "ui/AlertPanel.h"
#include "ui/AlertPanelPresenter.h"
#include "ui/CustomWindow.h"
#include "ui/PictureView.h"
#include "ui/TextField.h"

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

constexpr int First = AlertPresenter::FirstButtonReturn;

Alert question()
{
    return {QStringLiteral("Title"),
            QStringLiteral("Text"),
            {QStringLiteral("Confirm"), QStringLiteral("Later"), QStringLiteral("Cancel")}};
}

QImage seen(QWidget &widget)
{
    QImage image(widget.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    widget.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
    return image;
}

AlertPanel *shownPanel()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows)
        if (auto *panel = qobject_cast<AlertPanel *>(window); panel && panel->isVisible())
            return panel;
    return nullptr;
}

} // namespace

class TestAlertPanel : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();
    void answersByKeyboard_data();
    void answersByKeyboard();
    void answersByButton_data();
    void answersByButton();
    void pressesTheFirstButtonByReturnWhereverTheFocusIs();
    void answersWithTheLastButtonWhenClosed();
    void standsOverTheMiddleOfTheWindow();
    void hasAButtonEvenWithoutNames();
    void showsMarkupAsText();
    void keepsItsButtonsOnTheScreenForALongText();

    void showsByLightnessWhichButtonHasTheKeyboard_data();
    void showsByLightnessWhichButtonHasTheKeyboard();

    void darkensItsWindowUntilItIsAnswered_data();
    void darkensItsWindowUntilItIsAnswered();
    void darkensItsWindowWhileItIsModal();
    void darkensItsWindowAsMuchAsTwoOfThem();
    void darkensItsWindowInsideTheArtworkOnly();
    void darkensForTheEyeAlone();

    void sheetReturnsAtOnceAndLetsNothingElseAnswer();
    void sheetHasAFieldOfThatSizeWithTheKeyboard();
    void sheetHandsTheTextOver_data();
    void sheetHandsTheTextOver();
    void sheetWithoutAFieldHandsNothingOver();
    void sheetSaysNothingWhenItsWindowGoes();

private:
    // Runs the block as soon as a modal panel is on the screen.
    static void whenShown(const std::function<void(AlertPanel &)> &block);
    [[nodiscard]] QRgb windowColor() { return m_window.grab().toImage().pixel(5, 5); }

    QWidget m_window;
    AlertPanelPresenter m_presenter;
};

void TestAlertPanel::initTestCase()
{
    m_window.setGeometry(100, 100, 600, 500);
    m_window.show();
    m_presenter.setWindow(&m_window);
}

// A panel that a failed test left behind would answer in the next one.
void TestAlertPanel::cleanup() { delete shownPanel(); }

void TestAlertPanel::whenShown(const std::function<void(AlertPanel &)> &block)
{
    QTimer::singleShot(0, qApp, [block] {
        AlertPanel *panel = shownPanel();
        QVERIFY(panel);
        QVERIFY(QTest::qWaitForWindowActive(panel));
        block(*panel);
    });
}

void TestAlertPanel::answersByKeyboard_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("answer");
    QTest::newRow("Return") << int(Qt::Key_Return) << First;
    QTest::newRow("Enter") << int(Qt::Key_Enter) << First;
    QTest::newRow("Space") << int(Qt::Key_Space) << First;
    QTest::newRow("Escape") << int(Qt::Key_Escape) << First + 2;
}

void TestAlertPanel::answersByKeyboard()
{
    QFETCH(int, key);
    whenShown([key](AlertPanel &panel) { QTest::keyClick(panel.focusWidget(), Qt::Key(key)); });
    QTEST(m_presenter.runModal(question()), "answer");
}

void TestAlertPanel::answersByButton_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<int>("answer");
    QTest::newRow("first") << QStringLiteral("Confirm") << First;
    QTest::newRow("second") << QStringLiteral("Later") << First + 1;
    QTest::newRow("third") << QStringLiteral("Cancel") << First + 2;
}

void TestAlertPanel::answersByButton()
{
    QFETCH(QString, button);
    whenShown([button](AlertPanel &panel) {
        const auto buttons = panel.findChildren<QPushButton *>();
        for (QPushButton *candidate : buttons)
            if (candidate->text() == button)
                QTest::mouseClick(candidate, Qt::LeftButton);
    });
    QTEST(m_presenter.runModal(question()), "answer");
}

void TestAlertPanel::pressesTheFirstButtonByReturnWhereverTheFocusIs()
{
    whenShown([](AlertPanel &panel) {
        QTest::keyClick(panel.focusWidget(), Qt::Key_Tab);
        QVERIFY(qobject_cast<QPushButton *>(panel.focusWidget())->text() !=
                QStringLiteral("Confirm"));
        QTest::keyClick(panel.focusWidget(), Qt::Key_Return);
    });
    QCOMPARE(m_presenter.runModal(question()), First);
}

void TestAlertPanel::answersWithTheLastButtonWhenClosed()
{
    whenShown([](AlertPanel &panel) { panel.close(); });
    QCOMPARE(m_presenter.runModal(question()), First + 2);
}

void TestAlertPanel::standsOverTheMiddleOfTheWindow()
{
    AlertPanel panel(question(), std::nullopt, &m_window);
    panel.show();
    const QPoint distance = panel.geometry().center() - m_window.geometry().center();
    QVERIFY2(distance.manhattanLength() <= 2, qPrintable(QString::number(distance.x())));
}

void TestAlertPanel::hasAButtonEvenWithoutNames()
{
    Alert alert = question();
    alert.buttons.clear();
    whenShown([](AlertPanel &panel) { QTest::keyClick(panel.focusWidget(), Qt::Key_Escape); });
    QCOMPARE(m_presenter.runModal(alert), First);
}

void TestAlertPanel::showsMarkupAsText()
{
    Alert alert = question();
    alert.informativeText = QStringLiteral("<b>bold</b>");
    const AlertPanel panel(alert, std::nullopt, nullptr);
    const auto labels = panel.findChildren<QLabel *>();
    QCOMPARE(labels.size(), 2);
    for (const QLabel *label : labels)
        QCOMPARE(label->textFormat(), Qt::PlainText);
    QCOMPARE(panel.accessibleDescription(), QStringLiteral("<b>bold</b>"));
}

void TestAlertPanel::keepsItsButtonsOnTheScreenForALongText()
{
    Alert alert = question();
    alert.informativeText = QStringLiteral("word ").repeated(20000);
    AlertPanel panel(alert, std::nullopt, &m_window);
    panel.show();
    QVERIFY2(panel.height() < 500, qPrintable(QString::number(panel.height())));
}

void TestAlertPanel::showsByLightnessWhichButtonHasTheKeyboard_data()
{
    QTest::addColumn<int>("index");
    QTest::newRow("default") << 0;
    QTest::newRow("other") << 1;
}

void TestAlertPanel::showsByLightnessWhichButtonHasTheKeyboard()
{
    QFETCH(int, index);
    AlertPanel panel(question(), std::nullopt, &m_window);
    panel.show();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    QPushButton *button = panel.findChildren<QPushButton *>().at(index);
    const QRect area(button->mapTo(&panel, QPoint()), button->size());
    button->setFocus();
    const QImage with = panel.grab().toImage().copy(area);
    button->clearFocus();
    const QImage without = panel.grab().toImage().copy(area);
    int differing = 0;
    for (int y = 0; y < with.height(); ++y)
        for (int x = 0; x < with.width(); ++x)
            differing += contrast(with.pixel(x, y), without.pixel(x, y)) >= 3 ? 1 : 0;
    // Three quarters of a ring as thick as a point: the corners are soft.
    const int enough = 2 * (area.width() + area.height()) * 3 / 4;
    QVERIFY2(differing >= enough,
             qPrintable(QStringLiteral("%1 of %2").arg(differing).arg(enough)));
}

void TestAlertPanel::darkensItsWindowUntilItIsAnswered_data()
{
    using End = std::function<void(AlertPanel &)>;
    QTest::addColumn<End>("end");
    QTest::newRow("button") << End([](AlertPanel &panel) {
        QTest::mouseClick(panel.findChild<QPushButton *>(), Qt::LeftButton);
    });
    QTest::newRow("Return") << End(
        [](AlertPanel &panel) { QTest::keyClick(&panel, Qt::Key_Return); });
    QTest::newRow("Escape") << End(
        [](AlertPanel &panel) { QTest::keyClick(&panel, Qt::Key_Escape); });
    QTest::newRow("closed") << End([](AlertPanel &panel) { panel.close(); });
    QTest::newRow("hidden") << End([](AlertPanel &panel) {
        panel.hide();
        panel.deleteLater();
    });
    QTest::newRow("deleted") << End([](AlertPanel &panel) { delete &panel; });
}

void TestAlertPanel::darkensItsWindowUntilItIsAnswered()
{
    QFETCH(std::function<void(AlertPanel &)>, end);
    const QRgb light = windowColor();
    m_presenter.beginSheet(question(), std::nullopt, [](int, const QString &) {});
    AlertPanel *panel = shownPanel();
    QVERIFY(panel);
    QVERIFY(QTest::qWaitForWindowActive(panel));
    QVERIFY(contrast(light, windowColor()) > 2);
    end(*panel);
    QCOMPARE(windowColor(), light);
}

void TestAlertPanel::darkensItsWindowWhileItIsModal()
{
    const QRgb light = windowColor();
    QRgb dark = light;
    whenShown([&](AlertPanel &panel) {
        dark = windowColor();
        panel.close();
    });
    m_presenter.runModal(question());
    QVERIFY(contrast(light, dark) > 2);
    QCOMPARE(windowColor(), light);
}

void TestAlertPanel::darkensItsWindowAsMuchAsTwoOfThem()
{
    const QRgb light = windowColor();
    auto first = std::make_unique<AlertPanel>(question(), std::nullopt, &m_window);
    first->show();
    const QRgb dark = windowColor();
    AlertPanel second(question(), std::nullopt, &m_window);
    second.show();
    QCOMPARE(windowColor(), dark);
    first.reset();
    QCOMPARE(windowColor(), dark);
    second.close();
    QCOMPARE(windowColor(), light);
}

void TestAlertPanel::darkensItsWindowInsideTheArtworkOnly()
{
    QWidget window;
    window.setFixedSize(1000, 640);
    window.setAttribute(Qt::WA_TranslucentBackground);
    PictureView backdrop(&window);
    backdrop.setPictureName(QStringLiteral("backdrop"));
    backdrop.setReplacesBackground(true);
    backdrop.resize(window.size());
    window.show();
    const QImage light = seen(window);
    AlertPanel panel(question(), std::nullopt, &window);
    panel.show();
    const QImage dark = seen(window);

    const QPoint inside(200, 100);
    QCOMPARE(qAlpha(light.pixel(inside)), 255);
    QVERIFY(luminance(dark.pixel(inside)) < luminance(light.pixel(inside)));
    for (int y = 0; y < light.height(); ++y)
        for (int x = 0; x < light.width(); ++x)
            if (qAlpha(light.pixel(x, y)) < 128)
                QCOMPARE(dark.pixel(x, y), light.pixel(x, y));
}

void TestAlertPanel::darkensForTheEyeAlone()
{
    CustomWindow window(QRect(0, 0, 600, 500));
    QPushButton button(&window);
    button.setGeometry(10, 10, 80, 30);
    window.show();
    AlertPanel panel(question(), std::nullopt, &window);
    panel.show();
    QCOMPARE(window.childAt(20, 20), &button);
    QCOMPARE(QAccessible::queryAccessibleInterface(&window)->childCount(), 1);
}

void TestAlertPanel::sheetReturnsAtOnceAndLetsNothingElseAnswer()
{
    QList<int> answers;
    m_presenter.beginSheet(question(), std::nullopt,
                           [&](int response, const QString &) { answers += response; });
    AlertPanel *panel = shownPanel();
    QVERIFY(panel);
    QCOMPARE(answers, QList<int>());
    QCOMPARE(panel->windowModality(), Qt::WindowModal);
    QCOMPARE(panel->parentWidget(), &m_window);
    QVERIFY(QTest::qWaitForWindowActive(panel));
    QTest::keyClick(panel, Qt::Key_Escape);
    QCOMPARE(answers, QList<int>{First + 2});
    QTRY_VERIFY(!shownPanel());
}

void TestAlertPanel::sheetHasAFieldOfThatSizeWithTheKeyboard()
{
    m_presenter.beginSheet(question(), AlertTextField{}, [](int, const QString &) {});
    AlertPanel *panel = shownPanel();
    QVERIFY(panel);
    QVERIFY(QTest::qWaitForWindowActive(panel));
    auto *field = panel->findChild<TextField *>();
    QVERIFY(field && field->hasFocus());
    QCOMPARE(field->size(), QSize(100, 25));
    QCOMPARE(field->echoMode(), QLineEdit::Normal);
    QVERIFY(!field->accessibleName().isEmpty());
    panel->close();
}

void TestAlertPanel::sheetHandsTheTextOver_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("answer");
    QTest::newRow("confirmed") << int(Qt::Key_Return) << First;
    QTest::newRow("cancelled") << int(Qt::Key_Escape) << First + 2;
}

void TestAlertPanel::sheetHandsTheTextOver()
{
    QFETCH(int, key);
    QList<std::pair<int, QString>> answers;
    m_presenter.beginSheet(question(), AlertTextField{}, [&](int response, const QString &text) {
        answers += std::pair(response, text);
    });
    AlertPanel *panel = shownPanel();
    QVERIFY(panel);
    QVERIFY(QTest::qWaitForWindowActive(panel));
    QTest::keyClicks(panel->focusWidget(), QStringLiteral("123456"));
    QTest::keyClick(panel->focusWidget(), Qt::Key(key));
    QFETCH(int, answer);
    QCOMPARE(answers, (QList{std::pair(answer, QStringLiteral("123456"))}));
}

void TestAlertPanel::sheetWithoutAFieldHandsNothingOver()
{
    std::optional<QString> text;
    m_presenter.beginSheet(question(), std::nullopt,
                           [&](int, const QString &fieldText) { text = fieldText; });
    shownPanel()->close();
    QCOMPARE(text, QString());
}

void TestAlertPanel::sheetSaysNothingWhenItsWindowGoes()
{
    int answers = 0;
    auto window = std::make_unique<QWidget>();
    window->show();
    AlertPanelPresenter presenter;
    presenter.setWindow(window.get());
    presenter.beginSheet(question(), std::nullopt, [&](int, const QString &) { ++answers; });
    QVERIFY(shownPanel());
    window.reset();
    QVERIFY(!shownPanel());
    QCOMPARE(answers, 0);
}

QUELLMOOR_TEST(TestAlertPanel, "AlertPanel")
#include "tst_AlertPanel.moc"
