#include "TestMain.h"
#include "ViewWorld.h"
#include "ui/CustomTouchBarView.h"
#include "ui/FingerprintPanel.h"
#include "ui/InterfaceLoader.h"
#include "ui/TextField.h"
#include "ui/VARNOProgressView.h"

#include <QAccessible>
#include <QMetaEnum>
#include <QTest>

namespace {

QAccessibleInterface &described(QObject &object)
{
    QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&object);
    if (!interface)
        qFatal("Nothing describes a %s.", object.metaObject()->className());
    return *interface;
}

// Roles and names, depth first.
QStringList described(QAccessibleInterface &part)
{
    QStringList result{
        QStringLiteral("%1 \"%2\"")
            .arg(QLatin1String(QMetaEnum::fromType<QAccessible::Role>().valueToKey(part.role())),
                 part.text(QAccessible::Name))};
    for (int i = 0; i < part.childCount(); ++i)
        result += described(*part.child(i));
    return result;
}

} // namespace

class TestAccessibility : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void findsTheControlUnderThePointer();
    void knowsHowFarTheBarIs();
    void namesEverythingInTheStrip();
    void namesEverythingInTheFingerprintPanel();
    void namesAHintInItsPlace();

private:
    ViewWorld m_world;
};

void TestAccessibility::initTestCase()
{
    m_world.showWindow();
    ViewWorld::runMainQueue();
}

void TestAccessibility::findsTheControlUnderThePointer()
{
    auto &field = m_world.child<TextField>("accountIDField");
    const QPoint place = field.mapToGlobal(field.rect().center());
    QAccessibleInterface *found = described(*m_world.view).childAt(place.x(), place.y());
    QVERIFY(found);
    QCOMPARE(found->object(), &field);
}

void TestAccessibility::knowsHowFarTheBarIs()
{
    VARNOProgressView bar;
    bar.setValue(0.25);
    const QAccessibleValueInterface *value = described(bar).valueInterface();
    QVERIFY(value);
    QCOMPARE((QVariantList{value->minimumValue(), value->currentValue(), value->maximumValue()}),
             (QVariantList{0.0, 0.25, 1.0}));
}

void TestAccessibility::namesEverythingInTheStrip()
{
    const std::unique_ptr<QWidget> strip(InterfaceLoader().load(QStringLiteral("CustomTouchBar")));
    QVERIFY(strip);
    QCOMPARE(described(described(*strip)),
             (QStringList{QStringLiteral("Pane \"\""), QStringLiteral("Button \"Play\""),
                          QStringLiteral("Button \"Log in with your fingerprint\""),
                          QStringLiteral("Button \"Release notes\""),
                          QStringLiteral("Button \"Manage account\""),
                          QString::fromUtf8("Button \"Player’s guide\""),
                          QStringLiteral("Button \"Community forum\"")}));
}

void TestAccessibility::namesEverythingInTheFingerprintPanel()
{
    FingerprintPanel panel(QStringLiteral("Log in"), nullptr);
    panel.show();
    QCOMPARE(
        described(described(panel)),
        (QStringList{QStringLiteral("Dialog \"Log in\""), QStringLiteral("StaticText \"Log in\""),
                     QStringLiteral("Notification \"Put your finger on the reader.\""),
                     QStringLiteral("Button \"Cancel\"")}));
}

void TestAccessibility::namesAHintInItsPlace()
{
    FingerprintPanel panel(QStringLiteral("Log in"), nullptr);
    panel.setHint(QStringLiteral("Again, please."));
    QCOMPARE(described(described(panel)).at(2), QStringLiteral("Notification \"Again, please.\""));
    QCOMPARE(panel.accessibleDescription(), QStringLiteral("Again, please."));
}

QUELLMOOR_TEST(TestAccessibility, "Accessibility")
#include "tst_Accessibility.moc"
