#include "TestMain.h"
#include "platform/TouchBar.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>

namespace {

const auto Mine = QStringLiteral("mine");

// Makes a view of that size for each request but "none" and keeps what was asked for.
class Maker final : public TouchBarDelegate
{
public:
    std::unique_ptr<CustomTouchBarItem>
    touchBarMakeItemForIdentifier(const TouchBar &, const QString &identifier) override
    {
        requests += identifier;
        if (identifier == QStringLiteral("none"))
            return nullptr;
        auto view = std::make_unique<QWidget>();
        view->resize(300, 30);
        views += view.get();
        auto item = std::make_unique<CustomTouchBarItem>(identifier);
        item->setView(std::move(view));
        return item;
    }

    QStringList requests;
    QList<QPointer<QWidget>> views;
};

struct HostWorld
{
    HostWorld()
    {
        window->setGeometry(100, 80, 500, 300);
        window->show();
        host = makeTouchBarHost(*window, -10);
    }

    void showBar(const QStringList &identifiers)
    {
        TouchBar bar;
        bar.delegate = &maker;
        bar.defaultItemIdentifiers = identifiers;
        host->setTouchBar(bar);
    }
    [[nodiscard]] QWidget *strip() const { return maker.views.constLast()->window(); }
    [[nodiscard]] bool isStripShown() const { return strip()->isVisible(); }

    Maker maker;
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    std::unique_ptr<TouchBarHost> host;
};

} // namespace

class TestTouchBarHost : public QObject
{
    Q_OBJECT

private slots:
    void ownsTheViewOfAnItem();
    void showsTheItemsUnderTheWindow();
    void asksForEachItemButTheSystemsOnce();
    void showsNothingWithoutAnItem_data();
    void showsNothingWithoutAnItem();
    void followsTheWindow();
    void goesOutOfSightWithTheWindow();
    void waitsForTheWindow();
    void replacesTheBarBefore();
    void neverTakesTheKeyboard();
    void goesWithItsHost();
    void outlivesItsWindow();
};

void TestTouchBarHost::ownsTheViewOfAnItem()
{
    QPointer<QWidget> first = new QWidget;
    QPointer<QWidget> second = new QWidget;
    {
        CustomTouchBarItem item(Mine);
        QCOMPARE(item.view(), nullptr);
        item.setView(std::unique_ptr<QWidget>(first));
        QCOMPARE(item.view(), first.data());
        item.setView(std::unique_ptr<QWidget>(second));
        QVERIFY(!first);
    }
    QVERIFY(!second);
}

void TestTouchBarHost::showsTheItemsUnderTheWindow()
{
    HostWorld world;
    world.showBar({Mine});
    const QWidget &view = *world.maker.views.first();
    QVERIFY(world.isStripShown() && view.isVisible());
    QVERIFY(world.strip() != world.window.get());
    QCOMPARE(view.size(), QSize(300, 30));
    const QRect place(view.mapToGlobal(QPoint()), view.size());
    QCOMPARE(place.center().x(), world.window->geometry().center().x());
    const int below = place.top() - world.window->geometry().bottom();
    QVERIFY2(below > -10 && below < 10, qPrintable(QString::number(below)));
}

void TestTouchBarHost::asksForEachItemButTheSystemsOnce()
{
    HostWorld world;
    world.showBar({Mine, TouchBar::otherItemsProxyIdentifier(), QStringLiteral("other")});
    QCOMPARE(world.maker.requests, (QStringList{Mine, QStringLiteral("other")}));
    const QWidget &first = *world.maker.views.at(0);
    const QWidget &second = *world.maker.views.at(1);
    QVERIFY(second.x() >= first.x() + first.width());
    QCOMPARE(first.window(), second.window());
}

void TestTouchBarHost::showsNothingWithoutAnItem_data()
{
    QTest::addColumn<QStringList>("identifiers");
    QTest::addColumn<bool>("hasDelegate");
    QTest::newRow("no item made") << QStringList{QStringLiteral("none")} << true;
    QTest::newRow("only the system's")
        << QStringList{TouchBar::otherItemsProxyIdentifier()} << true;
    QTest::newRow("an empty bar") << QStringList() << true;
    QTest::newRow("no delegate") << QStringList{Mine} << false;
}

void TestTouchBarHost::showsNothingWithoutAnItem()
{
    QFETCH(QStringList, identifiers);
    QFETCH(bool, hasDelegate);
    HostWorld world;
    world.showBar({Mine});
    const QPointer<QWidget> strip = world.strip();
    TouchBar bar;
    bar.delegate = hasDelegate ? &world.maker : nullptr;
    bar.defaultItemIdentifiers = identifiers;
    world.host->setTouchBar(bar);
    QVERIFY(!strip->isVisible());
    world.window->move(10, 10);
    QVERIFY(!strip->isVisible());
}

void TestTouchBarHost::followsTheWindow()
{
    HostWorld world;
    world.showBar({Mine});
    const QPoint before = world.strip()->pos() - world.window->pos();
    world.window->move(37, 11);
    QTRY_COMPARE(world.strip()->pos() - world.window->pos(), before);
    world.window->resize(600, 340);
    QTRY_COMPARE(world.strip()->pos() - world.window->pos(), before + QPoint(50, 40));
}

void TestTouchBarHost::goesOutOfSightWithTheWindow()
{
    HostWorld world;
    world.showBar({Mine});
    world.window->hide();
    QVERIFY(!world.isStripShown());
    world.window->show();
    QVERIFY(world.isStripShown());
    world.window->showMinimized();
    QTRY_VERIFY(!world.isStripShown());
    world.window->showNormal();
    QTRY_VERIFY(world.isStripShown());
}

void TestTouchBarHost::waitsForTheWindow()
{
    HostWorld world;
    world.window->hide();
    world.showBar({Mine});
    QVERIFY(!world.isStripShown());
    world.window->show();
    QVERIFY(world.isStripShown());
}

void TestTouchBarHost::replacesTheBarBefore()
{
    HostWorld world;
    world.showBar({Mine});
    world.showBar({Mine});
    QCOMPARE(world.maker.views.size(), 2);
    QVERIFY(!world.maker.views.first());
    QVERIFY(world.isStripShown());
    QCOMPARE(world.strip()->findChildren<QWidget *>().count(world.maker.views.last()), 1);
}

void TestTouchBarHost::neverTakesTheKeyboard()
{
    HostWorld world;
    QLineEdit field(world.window.get());
    field.show();
    world.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(world.window.get()));
    field.setFocus();
    world.showBar({Mine});
    QTest::mouseClick(world.maker.views.last(), Qt::LeftButton);
    QCOMPARE(QApplication::activeWindow(), world.window.get());
    QVERIFY(field.hasFocus());
    QVERIFY(world.strip()->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
}

void TestTouchBarHost::goesWithItsHost()
{
    HostWorld world;
    world.showBar({Mine});
    const QPointer<QWidget> strip = world.strip();
    world.host.reset();
    QVERIFY(!strip);
    QVERIFY(!world.maker.views.last());
    world.window->move(1, 1);
}

void TestTouchBarHost::outlivesItsWindow()
{
    HostWorld world;
    world.showBar({Mine});
    world.window.reset();
    QVERIFY(!world.maker.views.last());
    world.showBar({Mine});
    QVERIFY(!world.maker.views.last()->isVisible());
}

QUELLMOOR_TEST(TestTouchBarHost, "TouchBarHost")
#include "tst_TouchBarHost.moc"
