#include "TestMain.h"
#include "ui/AlertPanel.h"
#include "ui/CustomSecureTextFieldCell.h"
#include "ui/CustomTextFieldCell.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTest>

namespace {

// Keeps the bounds that the padded cell asks about, and answers with something of its own.
class AskedField : public TextField
{
public:
    using TextField::TextField;

    [[nodiscard]] QRectF drawingRectForBounds(const QRectF &bounds) const override
    {
        asked = bounds;
        return {bounds.x() + 1, bounds.y() + 2, bounds.width() - 3, bounds.height() - 4};
    }

    mutable QRectF asked;
};

// The columns of a field in which something changes when it holds that text, from the first to the
// last one; with the caret at its beginning or its end, or all of it selected.
std::pair<int, int> inkedColumns(TextField &field, const QString &text, const QByteArray &place)
{
    field.setPlaceholderText({});
    field.setStringValue({});
    const QImage empty = field.grab().toImage();
    field.setStringValue(text);
    if (place == "selected")
        field.selectAll();
    else if (place == "beginning")
        field.home(false);
    const QImage filled = field.grab().toImage();
    std::pair<int, int> columns{empty.width(), -1};
    for (int x = 0; x < empty.width(); ++x)
        for (int y = 0; y < empty.height(); ++y)
            if (empty.pixel(x, y) != filled.pixel(x, y))
                columns = {std::min(columns.first, x), x};
    return columns;
}

std::unique_ptr<TextField> loginField(const QByteArray &kind)
{
    std::unique_ptr<TextField> field;
    if (kind == "password")
        field = std::make_unique<CustomSecureTextFieldCell>();
    else
        field = std::make_unique<CustomTextFieldCell>();
    field->resize(280, 40);
    field->setProperty("leftPadding", 12.0);
    return field;
}

class RecordingFieldDelegate final : public TextFieldDelegate
{
public:
    void controlTextDidChange(QObject *) override { calls += QStringLiteral("change"); }
    void controlTextDidEndEditing(QObject *, TextMovement movement) override
    {
        calls += QStringLiteral("end %1").arg(int(movement));
    }

    QStringList calls;
};

} // namespace

class TestTextFields : public QObject
{
    Q_OBJECT

private slots:
    void hasNoPaddingUntilOneIsSet();
    void asksItsBaseForTheMovedRectangle();
    void takesThePaddingFromAStoredAttribute();
    void textAndCaretStartAtThePadding();
    void keepsItsEndsFree_data();
    void keepsItsEndsFree();
    void keepsTheEndsOfATokenFieldFree_data() { texts(); }
    void keepsTheEndsOfATokenFieldFree();
    void hidesWhatIsTypedInASecureField();
    void keepsSecretsFromTheClipboard();
    void tellsEachKeystroke();
    void doesNotTellWhatTheProgramSets();
    void tellsWhatEndedTheEditing_data();
    void tellsWhatEndedTheEditing();

private:
    static void texts();
};

void TestTextFields::hasNoPaddingUntilOneIsSet()
{
    QCOMPARE(CustomTextFieldCell().leftPadding(), 0.0);
    QCOMPARE(CustomSecureTextFieldCell().leftPadding(), 0.0);
}

void TestTextFields::asksItsBaseForTheMovedRectangle()
{
    PaddedTextFieldCell<AskedField> cell;
    cell.setLeftPadding(8);
    const QRectF answer = cell.drawingRectForBounds(QRectF(0, 0, 200, 22));
    QCOMPARE(cell.asked, QRectF(8, 0, 192, 22));
    QCOMPARE(answer, QRectF(9, 2, 189, 18));
}

void TestTextFields::takesThePaddingFromAStoredAttribute()
{
    CustomTextFieldCell text;
    CustomSecureTextFieldCell secret;
    QVERIFY(text.setProperty("leftPadding", 12.0));
    QVERIFY(secret.setProperty("leftPadding", 7.5));
    QCOMPARE(text.leftPadding(), 12.0);
    QCOMPARE(secret.leftPadding(), 7.5);
}

void TestTextFields::textAndCaretStartAtThePadding()
{
    CustomTextFieldCell cell;
    cell.resize(200, 30);
    cell.setStringValue(QStringLiteral("text"));
    const int before = cell.cursorPositionAt(QPoint(20, 15));
    cell.setLeftPadding(100);
    QCOMPARE(cell.textMargins().left(), 100);
    QVERIFY(before > 0);
    QCOMPARE(cell.cursorPositionAt(QPoint(20, 15)), 0);
}

void TestTextFields::texts()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("place");
    const QString hebrew = QString::fromUtf8("שליו");
    const std::pair<const char *, QString> kinds[] = {
        {"from right to left", hebrew},
        {"long", QString(200, QLatin1Char('w'))},
        {"long from right to left", hebrew.repeated(50)},
        {"in both directions", QString(30, QLatin1Char('w')) + hebrew.repeated(10)},
    };
    for (const auto &[name, text] : kinds)
        for (const char *place : {"beginning", "end", "selected"})
            QTest::addRow("%s, %s", name, place) << text << QByteArray(place);
}

void TestTextFields::keepsItsEndsFree_data() { texts(); }

void TestTextFields::keepsItsEndsFree()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, place);
    for (const char *kind : {"account", "password"}) {
        const auto field = loginField(kind);
        const auto [first, last] = inkedColumns(*field, text, place);
        QVERIFY2(last >= 0, kind);
        QVERIFY2(first >= 12 && last < 280 - 12,
                 qPrintable(
                     QStringLiteral("%1: %2 to %3").arg(QLatin1String(kind)).arg(first).arg(last)));
    }
}

void TestTextFields::keepsTheEndsOfATokenFieldFree()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, place);
    const AlertPanel panel({QStringLiteral("Two-step Authentication"), QString(), {}},
                           AlertTextField(), nullptr);
    auto *field = panel.findChild<TextField *>();
    QVERIFY(field);
    const auto [first, last] = inkedColumns(*field, text, place);
    QVERIFY(last >= 0);
    QVERIFY2(first >= 6 && last < field->width() - 6,
             qPrintable(QStringLiteral("%1 to %2 of %3").arg(first).arg(last).arg(field->width())));
}

void TestTextFields::hidesWhatIsTypedInASecureField()
{
    CustomSecureTextFieldCell cell;
    QTest::keyClicks(&cell, QStringLiteral("secret"));
    QCOMPARE(cell.stringValue(), QStringLiteral("secret"));
    QVERIFY(!cell.displayText().contains(QLatin1Char('s')));
    QVERIFY(cell.inputMethodHints().testFlag(Qt::ImhSensitiveData));
}

void TestTextFields::keepsSecretsFromTheClipboard()
{
    CustomSecureTextFieldCell cell;
    cell.setStringValue(QStringLiteral("secret"));
    cell.selectAll();
    QGuiApplication::clipboard()->setText(QStringLiteral("other"));
    cell.copy();
    cell.cut();
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("other"));
}

void TestTextFields::tellsEachKeystroke()
{
    RecordingFieldDelegate delegate;
    TextField field;
    field.setDelegate(&delegate);
    QTest::keyClicks(&field, QStringLiteral("ab"));
    QTest::keyClick(&field, Qt::Key_Backspace);
    QCOMPARE(delegate.calls, QStringList(3, QStringLiteral("change")));
}

void TestTextFields::doesNotTellWhatTheProgramSets()
{
    RecordingFieldDelegate delegate;
    TextField field;
    field.setDelegate(&delegate);
    field.setStringValue(QStringLiteral("set"));
    QCOMPARE(delegate.calls, QStringList());
}

void TestTextFields::tellsWhatEndedTheEditing_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("call");
    QTest::newRow("Return") << int(Qt::Key_Return) << QStringLiteral("end 16");
    QTest::newRow("Enter") << int(Qt::Key_Enter) << QStringLiteral("end 16");
    QTest::newRow("Tab") << int(Qt::Key_Tab) << QStringLiteral("end 17");
    QTest::newRow("Backtab") << int(Qt::Key_Backtab) << QStringLiteral("end 18");
    QTest::newRow("Escape") << int(Qt::Key_Escape) << QStringLiteral("end 23");
}

void TestTextFields::tellsWhatEndedTheEditing()
{
    QFETCH(int, key);
    QFETCH(QString, call);
    RecordingFieldDelegate delegate;
    QWidget window;
    auto *first = new TextField(&window);
    auto *field = new TextField(&window);
    auto *last = new TextField(&window);
    QWidget::setTabOrder(first, field);
    QWidget::setTabOrder(field, last);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    field->setFocus();
    field->setDelegate(&delegate);
    QTest::keyClick(field, Qt::Key(key));
    QCOMPARE(delegate.calls, QStringList{call});
}

QUELLMOOR_TEST(TestTextFields, "TextFields")
#include "tst_TextFields.moc"
