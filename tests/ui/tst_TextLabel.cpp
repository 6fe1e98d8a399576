#include "TestMain.h"
#include "ui/TextLabel.h"

#include <QHelpEvent>
#include <QSignalSpy>
#include <QTest>

namespace {

// As when the mouse rests on the label.
QString toolTipOf(TextLabel &label)
{
    QHelpEvent event(QEvent::ToolTip, QPoint(1, 1), label.mapToGlobal(QPoint(1, 1)));
    QCoreApplication::sendEvent(&label, &event);
    return label.toolTip();
}

} // namespace

class TestTextLabel : public QObject
{
    Q_OBJECT

private slots:
    void breaksLinesWhereTheTextDoes();
    void wrapsLongLines();
    void breaksWordsThatAreLongerThanALine();
    void endsInAnEllipsisWhenThereIsMore();
    void cutsBetweenWordsWhereItCan();
    void showsOneLineInSingleLineMode();
    void showsMarkupAsText();
    void hasTheWholeTextInTheToolTipOnlyWhenItIsCut();
    void announcesEachChangeOnce();
    void announcesFirstLinesOnly();
    void announcesTheNewestAfterAPause();
    void saysNothingUnlessAskedTo();

private:
    static void prepare(TextLabel &label);
};

void TestTextLabel::prepare(TextLabel &label)
{
    label.resize(340, 60);
    label.setUsesSingleLineMode(false);
    label.setWraps(true);
}

void TestTextLabel::breaksLinesWhereTheTextDoes()
{
    TextLabel label;
    prepare(label);
    label.setStringValue(
        QStringLiteral("Updating file 1 of 2...\na.dds\n[1.00/2.00MB @ 3.00MB/s]"));
    QCOMPARE(label.shownLines(),
             (QStringList{QStringLiteral("Updating file 1 of 2..."), QStringLiteral("a.dds"),
                          QStringLiteral("[1.00/2.00MB @ 3.00MB/s]")}));
}

void TestTextLabel::wrapsLongLines()
{
    TextLabel label;
    prepare(label);
    const QString text =
        QStringLiteral("Some words that do not fit into one line of this label, not at all");
    label.setStringValue(text);
    QVERIFY(label.shownLines().size() > 1);
    QCOMPARE(label.shownLines().join(QLatin1Char(' ')), text);
}

void TestTextLabel::breaksWordsThatAreLongerThanALine()
{
    TextLabel label;
    prepare(label);
    label.setStringValue(QString(70, QLatin1Char('m')));
    const QFontMetrics metrics(label.font());
    QVERIFY(label.shownLines().size() > 1);
    for (const QString &line : label.shownLines())
        QVERIFY(metrics.horizontalAdvance(line) <= label.width());
}

void TestTextLabel::endsInAnEllipsisWhenThereIsMore()
{
    TextLabel label;
    prepare(label);
    label.setStringValue(QStringLiteral("word ").repeated(200));
    QCOMPARE(label.shownLines().size(), 3);
    QVERIFY(label.shownLines().last().endsWith(QChar(0x2026)));
    QVERIFY(QFontMetrics(label.font()).horizontalAdvance(label.shownLines().last()) <=
            label.width());
}

void TestTextLabel::cutsBetweenWordsWhereItCan()
{
    TextLabel label;
    prepare(label);
    label.setUsesSingleLineMode(true);
    const QString word = QStringLiteral("wonderfully");
    for (int width = 150; width < 250; width += 7) {
        label.resize(width, label.height());
        label.setStringValue((word + QLatin1Char(' ')).repeated(20).trimmed());
        QString shown = label.shownLines().last();
        QVERIFY(shown.endsWith(QChar(0x2026)));
        shown.chop(1);
        for (const QString &part : shown.split(QLatin1Char(' ')))
            QCOMPARE(part, word);
    }
    label.setStringValue(QStringLiteral("a ") + QString(70, QLatin1Char('m')));
    QVERIFY(label.shownLines().last().size() > 10); // rather a part of a word than next to nothing
}

void TestTextLabel::showsOneLineInSingleLineMode()
{
    TextLabel label;
    prepare(label);
    label.setUsesSingleLineMode(true);
    label.setStringValue(QStringLiteral("word ").repeated(200));
    QCOMPARE(label.shownLines().size(), 1);
}

void TestTextLabel::showsMarkupAsText()
{
    TextLabel label;
    prepare(label);
    label.setStringValue(QStringLiteral("<b>503</b>"));
    QCOMPARE(label.shownLines(), QStringList{QStringLiteral("<b>503</b>")});
}

void TestTextLabel::hasTheWholeTextInTheToolTipOnlyWhenItIsCut()
{
    TextLabel label;
    prepare(label);
    const QString text = QStringLiteral("word <b>").repeated(200);
    label.setStringValue(text);
    QVERIFY(toolTipOf(label).contains(QStringLiteral("&lt;b&gt;")));
    label.setStringValue(QStringLiteral("short"));
    QCOMPARE(toolTipOf(label), QString());
}

void TestTextLabel::announcesEachChangeOnce()
{
    TextLabel label;
    label.setAnnouncesChanges(true);
    const QSignalSpy announced(&label, &TextLabel::announced);
    label.setStringValue(QStringLiteral("new"));
    label.setStringValue(QStringLiteral("new"));
    QCOMPARE(announced, (QList<QVariantList>{{QStringLiteral("new")}}));
}

void TestTextLabel::announcesFirstLinesOnly()
{
    TextLabel label;
    label.setAnnouncesChanges(true);
    QSignalSpy announced(&label, &TextLabel::announced);
    label.setStringValue(QStringLiteral("file 1\n10%"));
    label.setStringValue(QStringLiteral("file 1\n20%"));
    label.setStringValue(QStringLiteral("file 2\n0%"));
    QVERIFY(announced.wait());
    QCOMPARE(announced, (QList<QVariantList>{{QStringLiteral("file 1\n10%")},
                                             {QStringLiteral("file 2\n0%")}}));
}

void TestTextLabel::announcesTheNewestAfterAPause()
{
    TextLabel label;
    label.setAnnouncesChanges(true);
    QSignalSpy announced(&label, &TextLabel::announced);
    for (const char *text : {"first", "second", "third"})
        label.setStringValue(QLatin1String(text));
    QCOMPARE(announced, (QList<QVariantList>{{QStringLiteral("first")}}));
    QVERIFY(announced.wait());
    QCOMPARE(announced,
             (QList<QVariantList>{{QStringLiteral("first")}, {QStringLiteral("third")}}));
}

void TestTextLabel::saysNothingUnlessAskedTo()
{
    TextLabel label;
    const QSignalSpy announced(&label, &TextLabel::announced);
    label.setStringValue(QStringLiteral("new"));
    QCOMPARE(announced.count(), 0);
}

QUELLMOOR_TEST(TestTextLabel, "TextLabel")
#include "tst_TextLabel.moc"
