#include "TestMain.h"
#include "ui/VARNOProgressView.h"

#include <QTest>

#include <limits>

namespace {

class CountingProgressView final : public VARNOProgressView
{
public:
    using VARNOProgressView::VARNOProgressView;

    void layout() override
    {
        ++layouts;
        VARNOProgressView::layout();
    }
    void updateLayerProperties() override
    {
        ++updates;
        VARNOProgressView::updateLayerProperties();
    }

    int layouts = 0;
    int updates = 0;
};

QRectF barOf(const VARNOProgressView &view) { return view.barLayer()->path->boundingRect(); }

QColor colorAt(VARNOProgressView &view, int x, int y)
{
    return view.grab().toImage().pixelColor(x, y);
}

} // namespace

class TestVARNOProgressView : public QObject
{
    Q_OBJECT

private slots:
    void startsWithItsDefaults();
    void isNotUpdatedByItsSetUp();
    void keepsItsBarLayerWhenSetUpAgain();
    void makesABarLayerWhenThereIsNone();
    void takesFractionsOnly_data();
    void takesFractionsOnly();
    void laysItselfOutForEveryValue();
    void updatesWithoutLayoutForEveryThreshold();
    void updatesForAnotherNumberOnly();
    void updatesForAnotherColorObjectEvenOfTheSameColor();
    void keepsTheGivenBorderAndTrackColorObjects();
    void copiesTheFillColorAndShowsItLater();
    void storesABarLayerWithoutAnUpdate();
    void everyLayoutEndsInOneUpdate();
    void fillsItsLayers();
    void keepsItsFractionWhenResized();
    void paintsTheBarFromTheLeft();
    void paintsOnlyTrackAndBorderAtZero();
    void paintsTheBorderOverTheBar();
    void cutsTheBarWithTheRoundedCorners();
    void takesItsColorsFromTheInterfaceFile();
};

void TestVARNOProgressView::startsWithItsDefaults()
{
    const VARNOProgressView view(QRect(3, 4, 100, 20));
    QCOMPARE(view.geometry(), QRect(3, 4, 100, 20));
    QCOMPARE(view.value(), 1.0);
    QCOMPARE(view.threshold(), 0.30000001192092896);
    QCOMPARE(view.borderWidth(), 2.0);
    QCOMPARE(view.cornerRadius(), 5);
    QCOMPARE(*view.borderColor(), QColor::fromRgbF(0.5F, 0.5F, 0.5F));
    QCOMPARE(*view.fillColor(), QColor(Qt::white));
    QCOMPARE(*view.trackColor(), QColor(Qt::black));
    QCOMPARE(view.layer().sublayers, QList{view.barLayer()});
}

void TestVARNOProgressView::isNotUpdatedByItsSetUp()
{
    CountingProgressView view;
    view.setupDefaults();
    QCOMPARE(view.updates, 0);
    QVERIFY(!view.barLayer()->path.has_value());
}

void TestVARNOProgressView::keepsItsBarLayerWhenSetUpAgain()
{
    VARNOProgressView view;
    const auto bar = view.barLayer();
    view.setValue(0.25);
    view.setupDefaults();
    QCOMPARE(view.value(), 1.0);
    QCOMPARE(view.barLayer(), bar);
    QCOMPARE(view.layer().sublayers, QList{bar});
}

void TestVARNOProgressView::makesABarLayerWhenThereIsNone()
{
    VARNOProgressView view;
    const auto first = view.barLayer();
    view.setBarLayer(nullptr);
    view.setupDefaults();
    QVERIFY(view.barLayer() && view.barLayer() != first);
    QCOMPARE(view.layer().sublayers, (QList{first, view.barLayer()}));
}

void TestVARNOProgressView::takesFractionsOnly_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("zero") << 0.0 << true;
    QTest::newRow("between") << 0.75 << true;
    QTest::newRow("one") << 1.0 << true;
    QTest::newRow("above") << 1.5 << false;
    QTest::newRow("just above") << std::nextafter(1.0, 2.0) << false;
    QTest::newRow("below") << -0.1 << false;
    QTest::newRow("not a number") << std::numeric_limits<double>::quiet_NaN() << false;
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << false;
}

void TestVARNOProgressView::takesFractionsOnly()
{
    QFETCH(double, number);
    QFETCH(bool, isTaken);
    CountingProgressView view(QRect(0, 0, 100, 20));
    view.setValue(0.5);
    view.setThreshold(0.5);
    const QImage before = view.grab().toImage();
    view.updates = 0;

    view.setValue(number);
    view.setThreshold(number);

    QCOMPARE(view.value(), isTaken ? number : 0.5);
    QCOMPARE(view.threshold(), isTaken ? number : 0.5);
    QCOMPARE(view.updates, isTaken ? 2 : 0);
    QCOMPARE(view.grab().toImage() == before, !isTaken);
}

void TestVARNOProgressView::laysItselfOutForEveryValue()
{
    CountingProgressView view;
    view.setValue(0.5);
    view.setValue(0.5);
    QCOMPARE(view.layouts, 2);
    QCOMPARE(view.updates, 2);
}

void TestVARNOProgressView::updatesWithoutLayoutForEveryThreshold()
{
    CountingProgressView view;
    view.setThreshold(0.5);
    view.setThreshold(0.5);
    QCOMPARE(view.layouts, 0);
    QCOMPARE(view.updates, 2);
}

void TestVARNOProgressView::updatesForAnotherNumberOnly()
{
    CountingProgressView view;
    view.setBorderWidth(2.0);
    view.setCornerRadius(5);
    QCOMPARE(view.updates, 0);
    view.setBorderWidth(3.0);
    QCOMPARE(view.updates, 1);
    view.setCornerRadius(-6);
    QCOMPARE(view.updates, 2);
    QCOMPARE(view.layouts, 0);
    QCOMPARE(view.layer().borderWidth, 3.0);
    QCOMPARE(view.layer().cornerRadius, -6.0);
}

void TestVARNOProgressView::updatesForAnotherColorObjectEvenOfTheSameColor()
{
    CountingProgressView view;
    const ColorObject red = makeColor(Qt::red);
    view.setBorderColor(red);
    view.setTrackColor(red);
    QCOMPARE(view.updates, 2);
    view.setBorderColor(red);
    view.setTrackColor(red);
    QCOMPARE(view.updates, 2);
    view.setBorderColor(makeColor(Qt::red));
    view.setTrackColor(makeColor(Qt::red));
    QCOMPARE(view.updates, 4);
}

void TestVARNOProgressView::keepsTheGivenBorderAndTrackColorObjects()
{
    VARNOProgressView view;
    const ColorObject border = makeColor(Qt::red);
    const ColorObject track = makeColor(Qt::blue);
    view.setBorderColor(border);
    view.setTrackColor(track);
    QCOMPARE(view.borderColor(), border);
    QCOMPARE(view.trackColor(), track);
}

void TestVARNOProgressView::copiesTheFillColorAndShowsItLater()
{
    CountingProgressView view(QRect(0, 0, 100, 20));
    view.setValue(0.5);
    view.updates = 0;
    const ColorObject green = makeColor(Qt::green);
    view.setFillColor(green);
    view.setFillColor(green);
    QCOMPARE(view.updates, 0);
    QVERIFY(view.fillColor() != green);
    QCOMPARE(*view.fillColor(), *green);
    QCOMPARE(view.barLayer()->fillColor, QColor(Qt::white));
    view.setValue(0.5);
    QCOMPARE(view.barLayer()->fillColor, QColor(Qt::green));
}

void TestVARNOProgressView::storesABarLayerWithoutAnUpdate()
{
    CountingProgressView view;
    const auto first = view.barLayer();
    const auto other = std::make_shared<ShapeLayer>();
    view.setBarLayer(other);
    QCOMPARE(view.updates, 0);
    QCOMPARE(view.barLayer(), other);
    QCOMPARE(view.layer().sublayers, QList{first});
}

void TestVARNOProgressView::everyLayoutEndsInOneUpdate()
{
    CountingProgressView view;
    view.layout();
    QCOMPARE(view.updates, 1);
    view.layoutSubtreeIfNeeded();
    QCOMPARE(view.updates, 2);
    ViewLayer layer;
    view.layoutSublayersOfLayer(layer);
    QCOMPARE(view.updates, 3);
    QCOMPARE(view.layouts, 1);
}

void TestVARNOProgressView::fillsItsLayers()
{
    VARNOProgressView view(QRect(7, 9, 200, 16));
    view.setFillColor(makeColor(Qt::green));
    view.setTrackColor(makeColor(Qt::blue));
    view.setBorderColor(makeColor(Qt::red));
    view.setValue(0.25);
    QCOMPARE(barOf(view), QRectF(0, 0, 50, 16));
    QCOMPARE(view.barLayer()->fillColor, QColor(Qt::green));
    QCOMPARE(view.layer().backgroundColor, QColor(Qt::blue));
    QCOMPARE(view.layer().borderColor, QColor(Qt::red));
    QCOMPARE(view.layer().borderWidth, 2.0);
    QCOMPARE(view.layer().cornerRadius, 5.0);
    QVERIFY(view.layer().masksToBounds);
}

void TestVARNOProgressView::keepsItsFractionWhenResized()
{
    VARNOProgressView view(QRect(0, 0, 100, 20));
    view.show();
    view.setValue(0.5);
    QCOMPARE(barOf(view).width(), 50.0);
    view.resize(200, 20);
    QCOMPARE(barOf(view), QRectF(0, 0, 100, 20));
}

void TestVARNOProgressView::paintsTheBarFromTheLeft()
{
    VARNOProgressView view(QRect(0, 0, 100, 20));
    view.setValue(0.5);
    QCOMPARE(colorAt(view, 25, 10), QColor(Qt::white));
    QCOMPARE(colorAt(view, 75, 10), QColor(Qt::black));
}

void TestVARNOProgressView::paintsOnlyTrackAndBorderAtZero()
{
    VARNOProgressView view(QRect(0, 0, 100, 20));
    view.setValue(0.0);
    QCOMPARE(colorAt(view, 5, 10), QColor(Qt::black));
    QCOMPARE(colorAt(view, 95, 10), QColor(Qt::black));
    QCOMPARE(colorAt(view, 50, 0).rgb(), view.borderColor()->rgb());
}

void TestVARNOProgressView::paintsTheBorderOverTheBar()
{
    VARNOProgressView view(QRect(0, 0, 100, 20));
    view.setValue(1.0);
    QCOMPARE(colorAt(view, 50, 0).rgb(), view.borderColor()->rgb());
    QCOMPARE(colorAt(view, 50, 10), QColor(Qt::white));
    QCOMPARE(colorAt(view, 97, 10), QColor(Qt::white));
    QCOMPARE(colorAt(view, 99, 10).rgb(), view.borderColor()->rgb());
}

void TestVARNOProgressView::cutsTheBarWithTheRoundedCorners()
{
    VARNOProgressView view(QRect(0, 0, 100, 20));
    view.setBorderWidth(0);
    view.setCornerRadius(8);
    view.setValue(1.0);
    QPixmap picture(view.size());
    picture.fill(Qt::magenta);
    view.render(&picture, {}, {}, {});
    QCOMPARE(picture.toImage().pixelColor(0, 0), QColor(Qt::magenta));
    QCOMPARE(picture.toImage().pixelColor(50, 0), QColor(Qt::white));
}

void TestVARNOProgressView::takesItsColorsFromTheInterfaceFile()
{
    VARNOProgressView view;
    QVERIFY(view.setProperty("trackColor", QColor(1, 2, 3)));
    QVERIFY(view.setProperty("fillColor", QColor(4, 5, 6)));
    QVERIFY(view.setProperty("borderColor", QColor(7, 8, 9)));
    QCOMPARE(*view.trackColor(), QColor(1, 2, 3));
    QCOMPARE(*view.fillColor(), QColor(4, 5, 6));
    QCOMPARE(*view.borderColor(), QColor(7, 8, 9));
}

QUELLMOOR_TEST(TestVARNOProgressView, "VARNOProgressView")
#include "tst_VARNOProgressView.moc"
