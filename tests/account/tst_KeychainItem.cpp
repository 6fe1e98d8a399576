#include "LogCapture.h"
#include "TestMain.h"
#include "account/KeychainItem.h"
#include "account/KeyedArchive.h"

#include <QJsonDocument>
#include <QProcess>
#include <QTest>

class TestKeychainItem : public QObject
{
    Q_OBJECT

private slots:
    void givesBackThePairItArchived_data();
    void givesBackThePairItArchived();
    void encodesBothKeysWithTheNameFirst();
    void writesAnArchiveThatOtherReadersUnderstand();
    void readsAnArchiveOfAnotherWriter();
    void readsNothingFromWhatIsNoArchiveOfIt_data();
    void readsNothingFromWhatIsNoArchiveOfIt();
    void readsNothingFromHostileData_data();
    void readsNothingFromHostileData() { readsNothingFromWhatIsNoArchiveOfIt(); }
    void readsNothingFromAnArchiveCutShort();
    void survivesAnyDamagedByteAndTellsNoSecret();
    void erasesBothTexts();

private:
    static QByteArray runPython(const QString &script, const QString &argument,
                                const QByteArray &input);
    static QByteArray archiveByPython(const QString &expression);
};

namespace {

const auto secret = QStringLiteral("hunter2-password");

// An archive as python writes one, with one part exchanged.
QString archiveWith(const QString &part, const QString &replacement)
{
    QString archive = QStringLiteral(
        "{'$version': 100000, '$archiver': 'NSKeyedArchiver', '$top': {'root': UID(1)}, "
        "'$objects': ['$null', {'$class': UID(4), 'PASS': UID(2), 'USER': UID(3)}, "
        "'hunter2-password', 'ann', "
        "{'$classname': 'KeychainItem', '$classes': ['KeychainItem', 'NSObject']}]}");
    if (!part.isEmpty() && !archive.contains(part))
        qFatal("nothing to exchange");
    return archive.replace(part, replacement);
}

QByteArray bigEndian(quint64 number, int size)
{
    QByteArray bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes += char(number >> shift & 0xff);
    return bytes;
}

// An array in a binary property list, of the objects with these numbers.
QByteArray arrayOf(const QList<quint64> &objects)
{
    QByteArray bytes = "\xaf\x12" + bigEndian(quint64(objects.size()), 4);
    for (const quint64 object : objects)
        bytes += bigEndian(object, 4);
    return bytes;
}

QByteArray listOf(const QByteArrayList &objects)
{
    QByteArray bytes = "bplist00";
    QByteArray table;
    for (const QByteArray &object : objects) {
        table += bigEndian(quint64(bytes.size()), 4);
        bytes += object;
    }
    const auto end = quint64(bytes.size());
    return bytes + table + QByteArray(6, '\0') + "\x04\x04" +
           bigEndian(quint64(objects.size()), 8) + bigEndian(0, 8) + bigEndian(end, 8);
}

// Each array holds the next one that often.
QByteArray nestedArrays(int depth, int times)
{
    QByteArrayList objects;
    for (int i = 1; i <= depth; ++i)
        objects += arrayOf(QList<quint64>(times, quint64(i)));
    return listOf(objects + QByteArrayList{QByteArray("\x50")});
}

} // namespace

QByteArray TestKeychainItem::runPython(const QString &script, const QString &argument,
                                       const QByteArray &input)
{
    QProcess python;
    python.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    python.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), script, argument});
    python.write(input);
    python.closeWriteChannel();
    if (!python.waitForFinished() || python.exitCode() != 0)
        qFatal("python3 failed");
    return python.readAllStandardOutput();
}

QByteArray TestKeychainItem::archiveByPython(const QString &expression)
{
    const auto script = QStringLiteral("import sys, plistlib\n"
                                       "from plistlib import UID\n"
                                       "sys.stdout.buffer.write(plistlib.dumps(eval(sys.argv[1]), "
                                       "fmt=plistlib.FMT_BINARY, sort_keys=False))\n");
    return runPython(script, expression, {});
}

void TestKeychainItem::givesBackThePairItArchived_data()
{
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("password");
    QTest::newRow("plain") << "ann"
                           << "secret";
    QTest::newRow("both empty") << QString() << QString();
    QTest::newRow("no password") << "ann" << QString();
    QTest::newRow("the same twice") << "ann"
                                    << "ann";
    QTest::newRow("an environment") << "ann@qa"
                                    << "secret";
    QTest::newRow("umlauts") << QStringLiteral(u"\u00c4nne") << QStringLiteral(u"gr\u00fc\u00df");
    QTest::newRow("beyond the basic plane")
        << QStringLiteral(u"\U0001f409") << QStringLiteral(u"\U0001f511 key");
    QTest::newRow("words of the format") << "$null"
                                         << "$class";
    QTest::newRow("spaces and quotes") << "  a \"b\" "
                                       << "\n\t<&>'";
    QTest::newRow("long") << QString(300, QLatin1Char('u')) << QString(70000, QLatin1Char('p'));
    QTest::newRow("long and not ASCII")
        << QString(300, QChar(0xe4)) << QString(70000, QChar(0x20ac));
}

void TestKeychainItem::givesBackThePairItArchived()
{
    QFETCH(QString, username);
    QFETCH(QString, password);
    const auto item = KeychainItem::unarchive(KeychainItem(username, password).archivedData());
    QVERIFY(item);
    QCOMPARE(item->username(), username);
    QCOMPARE(item->password(), password);
}

void TestKeychainItem::encodesBothKeysWithTheNameFirst()
{
    KeyedArchive archive(QStringLiteral("KeychainItem"));
    KeychainItem(QStringLiteral("ann"), secret).encodeWithCoder(archive);
    QCOMPARE(archive.decodeObjectForKey(QStringLiteral("USER")), QStringLiteral("ann"));
    QCOMPARE(archive.decodeObjectForKey(QStringLiteral("PASS")), secret);
    const QByteArray data = archive.archivedData();
    QVERIFY(data.indexOf("ann") > 0 && data.indexOf("ann") < data.indexOf(secret.toLatin1()));
}

void TestKeychainItem::writesAnArchiveThatOtherReadersUnderstand()
{
    const auto script = QStringLiteral(
        "import sys, plistlib, json\n"
        "data = plistlib.loads(sys.stdin.buffer.read(), fmt=plistlib.FMT_BINARY)\n"
        "print(json.dumps(data, default=lambda uid: {'UID': uid.data}, sort_keys=True))\n");
    const QByteArray data = KeychainItem(QStringLiteral(u"\u00c4nne"), secret).archivedData();
    const QByteArray expected = R"({
        "$version": 100000,
        "$archiver": "NSKeyedArchiver",
        "$top": {"root": {"UID": 1}},
        "$objects": [
            "$null",
            {"USER": {"UID": 2}, "PASS": {"UID": 3}, "$class": {"UID": 4}},
            "\u00c4nne",
            "hunter2-password",
            {"$classname": "KeychainItem", "$classes": ["KeychainItem", "NSObject"]}
        ]})";
    QCOMPARE(QJsonDocument::fromJson(runPython(script, {}, data)),
             QJsonDocument::fromJson(expected));
}

void TestKeychainItem::readsAnArchiveOfAnotherWriter()
{
    const auto item = KeychainItem::unarchive(archiveByPython(archiveWith({}, {})));
    QVERIFY(item);
    QCOMPARE(item->username(), QStringLiteral("ann"));
    QCOMPARE(item->password(), secret);
}

void TestKeychainItem::readsNothingFromWhatIsNoArchiveOfIt_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("hunter2-password");
    QTest::newRow("only the head") << QByteArray("bplist00");
    QTest::newRow("XML") << QByteArray("<?xml version=\"1.0\"?><plist><string>hunter2-password"
                                       "</string></plist>");
    const std::pair<const char *, std::pair<const char *, const char *>> exchanges[] = {
        {"another version", {"100000", "99999"}},
        {"a version that is no number", {"100000", "'100000'"}},
        {"another archiver", {"NSKeyedArchiver", "Other"}},
        {"no archiver", {"'$archiver': 'NSKeyedArchiver', ", ""}},
        {"no root", {"'root': UID(1)", ""}},
        {"a root that is no reference", {"'root': UID(1)", "'root': 1"}},
        {"the null object as root", {"'root': UID(1)", "'root': UID(0)"}},
        {"a string as root", {"'root': UID(1)", "'root': UID(2)"}},
        {"a root out of range", {"'root': UID(1)", "'root': UID(5)"}},
        {"a root far out of range", {"'root': UID(1)", "'root': UID(4294967297)"}},
        {"no top", {"'$top': {'root': UID(1)}, ", ""}},
        {"a top that is no dictionary", {"{'root': UID(1)}", "[UID(1)]"}},
        {"objects that are no array", {"'$objects': [", "'$objects': 'text', 'other': ["}},
        {"no class", {"'$class': UID(4), ", ""}},
        {"a class out of range", {"'$class': UID(4)", "'$class': UID(9)"}},
        {"another class", {"'$classname': 'KeychainItem'", "'$classname': 'Other'"}},
        {"no name", {", 'USER': UID(3)", ""}},
        {"no password", {"'PASS': UID(2), ", ""}},
        {"the null object as password", {"'PASS': UID(2)", "'PASS': UID(0)"}},
        {"a password in place", {"'PASS': UID(2)", "'PASS': 'hunter2-password'"}},
        {"a password out of range", {"'PASS': UID(2)", "'PASS': UID(5)"}},
        {"a password that is the item", {"'PASS': UID(2)", "'PASS': UID(1)"}},
        {"a password that is a number", {"'hunter2-password'", "2"}},
        {"a password that is data", {"'hunter2-password'", "b'hunter2-password'"}},
    };
    for (const auto &[name, exchange] : exchanges)
        QTest::newRow(name) << archiveByPython(
            archiveWith(QString::fromLatin1(exchange.first), QString::fromLatin1(exchange.second)));
    for (const char *other : {"'hunter2-password'", "[]", "{}", "7", "UID(1)"})
        QTest::newRow(other) << archiveByPython(QString::fromLatin1(other));
}

void TestKeychainItem::readsNothingFromWhatIsNoArchiveOfIt()
{
    QFETCH(QByteArray, data);
    const LogCapture log;
    QVERIFY(!KeychainItem::unarchive(data));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: The stored "
                                                     "credentials cannot be read.")});
}

void TestKeychainItem::readsNothingFromHostileData_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("arrays in a circle") << listOf({arrayOf({1}), arrayOf({0})});
    QTest::newRow("an array that is in itself") << listOf({arrayOf({0})});
    QTest::newRow("nested deeper than any stack") << nestedArrays(200000, 1);
    QTest::newRow("a thousand million objects once all are told apart") << nestedArrays(30, 2);
    QTest::newRow("a text longer than all data")
        << listOf({"\x5f\x13\x7f" + QByteArray(7, '\xff')});
    QTest::newRow("a count that is no number") << listOf({"\x5f\x50"});
    QTest::newRow("a count at the very end") << listOf({"\x5f"});
    QTest::newRow("thirty megabytes of nothing") << "bplist00" + QByteArray(30000000, '\0');
    QTest::newRow("a trailer of ones") << "bplist00" + QByteArray(32, '\xff');

    const QByteArray archive = KeychainItem(QStringLiteral("ann"), secret).archivedData();
    QByteArray notAscii = archive;
    QTest::newRow("a password that is not ASCII though it says so")
        << notAscii.replace(secret.toLatin1(), QByteArray(secret.size(), '\xff'));
    QByteArray notUnicode =
        KeychainItem(QStringLiteral("ann"), QStringLiteral(u"\u20ac\u20ac")).archivedData();
    QTest::newRow("a password with half a character")
        << notUnicode.replace("\x20\xac\x20\xac", QByteArray::fromHex("20acd800"));
}

void TestKeychainItem::readsNothingFromAnArchiveCutShort()
{
    const QByteArray data = KeychainItem(QStringLiteral("ann"), secret).archivedData();
    const LogCapture log;
    for (qsizetype length = 0; length < data.size(); ++length)
        QVERIFY2(!KeychainItem::unarchive(data.left(length)), qPrintable(QString::number(length)));
    QCOMPARE(log.lines().size(), data.size());
}

void TestKeychainItem::survivesAnyDamagedByteAndTellsNoSecret()
{
    const QByteArray data = KeychainItem(QStringLiteral("ann"), secret).archivedData();
    const LogCapture log;
    int unreadable = 0;
    for (qsizetype at = 0; at < data.size(); ++at) {
        for (const int flipped : {0x01, 0x10, 0x80, 0xff}) {
            QByteArray damaged = data;
            damaged[at] = char(damaged[at] ^ flipped);
            unreadable += !KeychainItem::unarchive(damaged);
        }
    }
    QVERIFY(unreadable > data.size());
    QCOMPARE(log.lines().size(), unreadable);
    QVERIFY(log.lines().filter(QStringLiteral("hunter")).isEmpty());
}

void TestKeychainItem::erasesBothTexts()
{
    KeychainItem item(QStringLiteral("ann"), secret);
    item.eraseData();
    QCOMPARE(item.username(), QStringLiteral(""));
    QCOMPARE(item.password(), QStringLiteral(""));
    QVERIFY(!item.password().isNull());
}

QUELLMOOR_TEST(TestKeychainItem, "KeychainItem")
#include "tst_KeychainItem.moc"
