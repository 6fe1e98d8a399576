#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "model/SHA256.h"

#include <QCryptographicHash>
#include <QTest>

#include <array>

using namespace Qt::StringLiterals;

class TestSHA256 : public QObject
{
    Q_OBJECT

private slots:
    void matchesThePublishedVectors_data();
    void matchesThePublishedVectors();
    void agreesWithAnotherImplementationAroundEveryBoundary_data();
    void agreesWithAnotherImplementationAroundEveryBoundary();
    void writesEachByteAsTwoLowerCaseDigits();
    void clearsTheBytesItHasWrittenOutAndNoOthers();
    void digestsNothingButAReadableRegularFile_data();
    void digestsNothingButAReadableRegularFile();
};

void TestSHA256::matchesThePublishedVectors_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("digest");

    QTest::newRow("empty") << QByteArray()
                           << u"e3b0c44298fc1c149afbf4c8996fb924"
                              "27ae41e4649b934ca495991b7852b855"_s;
    QTest::newRow("24 bits") << "abc"_ba
                             << u"ba7816bf8f01cfea414140de5dae2223"
                                "b00361a396177a9cb410ff61f20015ad"_s;
    QTest::newRow("448 bits") << "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"_ba
                              << u"248d6a61d20638b8e5c026930c3e6039"
                                 "a33ce45964ff2167f6ecedd419db06c1"_s;
    QTest::newRow("896 bits") << "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmn"
                                 "hijklmnoijklmnopjklmnopqklmnopqrlmnopqrsmnopqrstnopqrstu"_ba
                              << u"cf5b16a778af8380036ce59e7b049237"
                                 "0b249b11e8f07a51afac45037afee9d1"_s;
    QTest::newRow("a million letters")
        << QByteArray(1000000, 'a')
        << u"cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"_s;
}

void TestSHA256::matchesThePublishedVectors()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, digest);
    const TestFolder folder;
    folder.write(u"file"_s, data);
    QCOMPARE(QStringList({SHA256(data), SHA256OfFile(folder.path(u"file"_s)).value_or(QString())}),
             QStringList({digest, digest}));
}

void TestSHA256::agreesWithAnotherImplementationAroundEveryBoundary_data()
{
    QTest::addColumn<int>("length");
    // Where the padding, the block and the piece in which a file is read come out even.
    for (const int length : {1, 55, 56, 57, 63, 64, 65, 119, 120, 128, 128 * 1024 - 1, 128 * 1024,
                             128 * 1024 + 1, 256 * 1024, 1024 * 1024})
        QTest::addRow("%d bytes", length) << length;
}

void TestSHA256::agreesWithAnotherImplementationAroundEveryBoundary()
{
    QFETCH(int, length);
    QByteArray data;
    for (int i = 0; i < length; ++i)
        data += char(i * 31 + i / 251);
    const TestFolder folder;
    folder.write(u"file"_s, data);
    const auto other =
        QString::fromLatin1(QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex());
    QCOMPARE(QStringList({SHA256(data), SHA256OfFile(folder.path(u"file"_s)).value_or(QString())}),
             QStringList({other, other}));
}

void TestSHA256::writesEachByteAsTwoLowerCaseDigits()
{
    std::array<unsigned char, 6> bytes{0x00, 0x01, 0x0a, 0xa0, 0xbc, 0xff};
    QCOMPARE(toHexString(bytes.data(), qsizetype(bytes.size())), u"00010aa0bcff"_s);
}

void TestSHA256::clearsTheBytesItHasWrittenOutAndNoOthers()
{
    std::array<unsigned char, 4> bytes{1, 2, 3, 4};
    const QString text = toHexString(bytes.data(), 3);
    QCOMPARE(std::pair(text, bytes),
             std::pair(u"010203"_s, std::array<unsigned char, 4>{0, 0, 0, 4}));
}

void TestSHA256::digestsNothingButAReadableRegularFile_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isDigested");
    for (const auto *name : {"missing", "folder", "pipe", "link", "dangling", "secret"})
        QTest::newRow(name) << QString::fromLatin1(name) << false;
    QTest::newRow("a device") << u"/dev/zero"_s << false;
    QTest::newRow("a file") << u"file"_s << true;
}

void TestSHA256::digestsNothingButAReadableRegularFile()
{
    QFETCH(QString, path);
    QFETCH(bool, isDigested);
    const TestFolder folder;
    folder.setMode(QString(), 0755);
    folder.write(u"file"_s, "contents");
    folder.write(u"secret"_s, "contents");
    folder.setMode(u"secret"_s, 0);
    folder.makeFolder(u"folder"_s);
    folder.makePipe(u"pipe"_s);
    folder.link(u"file"_s, u"link"_s);
    folder.link(u"nothing"_s, u"dangling"_s);
    const WithoutPrivileges asAnybody;
    QCOMPARE(SHA256OfFile(QDir(folder.path()).filePath(path)).has_value(), isDigested);
}

QUELLMOOR_TEST(TestSHA256, "SHA256")
#include "tst_SHA256.moc"
