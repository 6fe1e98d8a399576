#include "TestMain.h"
#include "ui/BezierPathQuartzUtilities.h"

#include <QTest>

class TestBezierPathQuartzUtilities : public QObject
{
    Q_OBJECT

private slots:
    void givesNothingForAnEmptyPath();
    void converts_data();
    void converts();
    void keepsTheGivenPath();
    void keepsTheFillRule();

private:
    // One word an element: M, L or C with its point, c for the two further points of a curve.
    static QString elements(const QPainterPath &path);
};

QString TestBezierPathQuartzUtilities::elements(const QPainterPath &path)
{
    QStringList words;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        words += QStringLiteral("%1%2,%3")
                     .arg(QLatin1Char("MLCc"[element.type]))
                     .arg(element.x)
                     .arg(element.y);
    }
    return words.join(QLatin1Char(' '));
}

void TestBezierPathQuartzUtilities::givesNothingForAnEmptyPath()
{
    QVERIFY(!quartzPath(QPainterPath()).has_value());
}

void TestBezierPathQuartzUtilities::converts_data()
{
    QTest::addColumn<QPainterPath>("path");
    QTest::addColumn<QString>("expected");

    QPainterPath point;
    point.moveTo(3, 4);
    QTest::newRow("one point") << point << QStringLiteral("M3,4");

    QPainterPath open;
    open.moveTo(0, 0);
    open.lineTo(10, 0);
    open.lineTo(10, 10);
    QTest::newRow("open triangle") << open << QStringLiteral("M0,0 L10,0 L10,10 L0,0");

    QPainterPath closed = open;
    closed.closeSubpath();
    QTest::newRow("closed triangle") << closed << QStringLiteral("M0,0 L10,0 L10,10 L0,0");

    QPainterPath curve;
    curve.moveTo(0, 0);
    curve.cubicTo(1, 2, 3, 4, 5, 6);
    QTest::newRow("open curve") << curve << QStringLiteral("M0,0 C1,2 c3,4 c5,6 L0,0");

    QPainterPath rectangle;
    rectangle.addRect(1, 2, 30, 40);
    QTest::newRow("rectangle") << rectangle << QStringLiteral("M1,2 L31,2 L31,42 L1,42 L1,2");

    QPainterPath twoFigures = open;
    twoFigures.moveTo(20, 20);
    twoFigures.lineTo(30, 20);
    twoFigures.lineTo(30, 30);
    QTest::newRow("only the last open figure is closed")
        << twoFigures << QStringLiteral("M0,0 L10,0 L10,10 M20,20 L30,20 L30,30 L20,20");

    QPainterPath closedThenPoint = closed;
    closedThenPoint.moveTo(50, 50);
    QTest::newRow("a point after a closed figure")
        << closedThenPoint << QStringLiteral("M0,0 L10,0 L10,10 L0,0 M50,50");
}

void TestBezierPathQuartzUtilities::converts()
{
    QFETCH(QPainterPath, path);
    const auto result = quartzPath(path);
    QVERIFY(result.has_value());
    QTEST(elements(*result), "expected");
}

void TestBezierPathQuartzUtilities::keepsTheGivenPath()
{
    QPainterPath path;
    path.moveTo(0, 0);
    path.lineTo(10, 0);
    const QPainterPath before = path;
    const auto result = quartzPath(path);
    QCOMPARE(path, before);
    QVERIFY(result.has_value() && *result != before);
}

void TestBezierPathQuartzUtilities::keepsTheFillRule()
{
    QPainterPath path;
    path.addRect(0, 0, 10, 10);
    for (const Qt::FillRule rule : {Qt::OddEvenFill, Qt::WindingFill}) {
        path.setFillRule(rule);
        const auto result = quartzPath(path);
        QVERIFY(result.has_value());
        QCOMPARE(result->fillRule(), rule);
    }
}

QUELLMOOR_TEST(TestBezierPathQuartzUtilities, "BezierPathQuartzUtilities")
#include "tst_BezierPathQuartzUtilities.moc"
