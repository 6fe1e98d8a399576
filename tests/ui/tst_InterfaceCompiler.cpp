// Interface files, from their XML to their widgets.
#include "LogCapture.h"
#include "TestMain.h"
#include "ui/InterfaceCompiler.h"
#include "ui/InterfaceLoader.h"
#include "ui/PictureView.h"
#include "ui/RolloverButton.h"

#include <QBuffer>
#include <QColor>
#include <QTest>

namespace {

std::variant<InterfaceFile, QString> readXml(QByteArray xml)
{
    QBuffer device(&xml);
    return device.open(QIODevice::ReadOnly) ? InterfaceCompiler::read(device)
                                            : std::variant<InterfaceFile, QString>(QString());
}

InterfaceFile fileOf(const QByteArray &xml)
{
    const auto read = readXml(xml);
    const auto *file = std::get_if<InterfaceFile>(&read);
    return file ? *file : InterfaceFile();
}

// With this inside the root widget.
InterfaceFile fileWith(const QByteArray &content)
{
    return fileOf(
        "<ui version=\"4.0\"><class>Sample</class><widget class=\"QWidget\" name=\"root\">" +
        content + "</widget></ui>");
}

QByteArray bytesOf(const InterfaceFile &file)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << file;
    return bytes;
}

} // namespace

class TestInterfaceCompiler : public QObject
{
    Q_OBJECT

private slots:
    void readsPropertiesOfEveryKind();
    void readsWhatIsTranslated();
    void listsTopLevelObjectsInTheOrderOfTheFile();
    void setsTheTabOrder();
    void leavesOutWhatItDoesNotKnow();
    void saysWhyThereIsNothingToRead_data();
    void saysWhyThereIsNothingToRead();
    void givesNothingForDamagedBytes();
};

void TestInterfaceCompiler::readsPropertiesOfEveryKind()
{
    const auto properties =
        fileWith(
            "<property name=\"geometry\"><rect><x>1</x><y>2</y><width>3</width><height>4</height>"
            "</rect></property>"
            "<property name=\"a\"><color alpha=\"5\"><red>6</red><green>7</green><blue>8</blue>"
            "</color></property>"
            "<property name=\"b\"><color><red>9</red></color></property>"
            "<property name=\"c\"><bool>true</bool></property>"
            "<property name=\"d\"><bool>false</bool></property>"
            "<property name=\"e\"><number>10</number></property>"
            "<property name=\"f\"><enum>Qt::NoFocus</enum></property>")
            .root.properties;
    QList<QByteArray> names;
    QList<QVariant> values;
    for (const auto &property : properties) {
        names += property.name;
        values += property.value;
        QVERIFY(!property.isTranslated);
    }
    QCOMPARE(names, (QList<QByteArray>{"geometry", "a", "b", "c", "d", "e", "f"}));
    QCOMPARE(values, (QList<QVariant>{QRect(1, 2, 3, 4), QColor(6, 7, 8, 5), QColor(9, 0, 0), true,
                                      false, QStringLiteral("10"), QStringLiteral("Qt::NoFocus")}));
}

void TestInterfaceCompiler::readsWhatIsTranslated()
{
    const InterfaceFile file =
        fileWith("<property name=\"a\"><string>Play</string></property>"
                 "<property name=\"b\"><string notr=\"true\">plate</string></property>"
                 "<property name=\"c\"><string comment=\"the host\">Account</string></property>"
                 "<property name=\"d\"><string></string></property>");
    QCOMPARE(file.context, QByteArray("Sample"));
    const auto &properties = file.root.properties;
    QCOMPARE(properties.size(), 4);
    QCOMPARE(properties.at(0).value, QVariant(QStringLiteral("Play")));
    QVERIFY(properties.at(0).isTranslated);
    QVERIFY(!properties.at(1).isTranslated);
    QVERIFY(properties.at(2).isTranslated);
    QCOMPARE(properties.at(2).comment, QByteArray("the host"));
    QVERIFY(!properties.at(3).isTranslated);
}

void TestInterfaceCompiler::listsTopLevelObjectsInTheOrderOfTheFile()
{
    const InterfaceFile file = fileWith("<widget class=\"PictureView\" name=\"first\"/>"
                                        "<widget class=\"TextLabel\" name=\"second\"/>"
                                        "<widget class=\"PictureView\" name=\"third\"/>");
    const std::unique_ptr<QWidget> root(InterfaceLoader().load(bytesOf(file)));
    QStringList names;
    for (const QWidget *object : InterfaceLoader::topLevelObjects(root.get()))
        names += object->objectName();
    QCOMPARE(names, (QStringList{QStringLiteral("root"), QStringLiteral("first"),
                                 QStringLiteral("second"), QStringLiteral("third")}));
}

void TestInterfaceCompiler::setsTheTabOrder()
{
    const InterfaceFile file = fileOf("<ui><widget class=\"QWidget\" name=\"root\">"
                                      "<widget class=\"RolloverButton\" name=\"first\"/>"
                                      "<widget class=\"RolloverButton\" name=\"second\"/>"
                                      "<widget class=\"RolloverButton\" name=\"third\"/></widget>"
                                      "<tabstops><tabstop>first</tabstop><tabstop>third</tabstop>"
                                      "<tabstop>second</tabstop></tabstops></ui>");
    QWidget window;
    QWidget *root = InterfaceLoader().load(bytesOf(file));
    QVERIFY(root);
    root->setParent(&window);
    QStringList order;
    for (QWidget *next = window.nextInFocusChain(); next != &window;
         next = next->nextInFocusChain())
        order += next->objectName();
    QCOMPARE(order, (QStringList{QStringLiteral("root"), QStringLiteral("first"),
                                 QStringLiteral("third"), QStringLiteral("second")}));
}

void TestInterfaceCompiler::leavesOutWhatItDoesNotKnow()
{
    const InterfaceFile file =
        fileWith("<widget class=\"Unknown\" name=\"first\"><widget class=\"QWidget\"/></widget>"
                 "<property name=\"minimumHeight\"><number>30</number></property>"
                 "<layout class=\"QVBoxLayout\"/>"
                 "<widget class=\"TextLabel\" name=\"second\">"
                 "<property name=\"wings\"><number>2</number></property></widget>");
    const LogCapture log;
    const std::unique_ptr<QWidget> root(InterfaceLoader().load(bytesOf(file)));
    QCOMPARE(InterfaceLoader::topLevelObjects(root.get()).size(), 2);
    QCOMPARE(root->minimumHeight(), 30);
    QCOMPARE(log.lines(),
             (QStringList{QStringLiteral("No class Unknown for the interface file."),
                          QStringLiteral("second in the interface file has no property wings.")}));
}

void TestInterfaceCompiler::saysWhyThereIsNothingToRead_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("why");
    QTest::addRow("breaks off") << QByteArray("<ui>\n<widget class=\"QWidget\" name=\"root\">")
                                << QStringLiteral("line 2: Premature end of document.");
    QTest::addRow("another language")
        << QByteArray("<html/>") << QStringLiteral("line 1: This is no interface file.");
    QTest::addRow("no widget") << QByteArray("<ui/>")
                               << QStringLiteral("line 1: There is no widget.");
}

void TestInterfaceCompiler::saysWhyThereIsNothingToRead()
{
    QFETCH(const QByteArray, xml);
    QFETCH(const QString, why);
    const auto read = readXml(xml);
    QVERIFY(std::holds_alternative<QString>(read));
    QCOMPARE(std::get<QString>(read), why);
}

void TestInterfaceCompiler::givesNothingForDamagedBytes()
{
    const QByteArray bytes = bytesOf(fileWith("<widget class=\"TextLabel\" name=\"label\"/>"));
    for (qsizetype size = 0; size < bytes.size(); ++size)
        QCOMPARE(InterfaceLoader().load(bytes.first(size)), nullptr);
    const std::unique_ptr<QWidget> whole(InterfaceLoader().load(bytes));
    QVERIFY(whole);
}

QUELLMOOR_TEST(TestInterfaceCompiler, "InterfaceCompiler")
#include "tst_InterfaceCompiler.moc"
