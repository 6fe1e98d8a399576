#include "LogCapture.h"
#include "RefusingHttpClient.h"
#include "TestMain.h"
#include "app/Configuration.h"
#include "controller/FileCheck.h"
#include "model/SHA256.h"
#include "patcher/VARNOPatcher.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

namespace {

QString shortHash(const QByteArray &contents) { return SHA256(contents).left(7); }

QJsonObject entry(const QString &hash, const QStringList &patches = {})
{
    return {{QStringLiteral("path"), QString()},
            {QStringLiteral("hash"), hash},
            {QStringLiteral("patches"), QJsonArray::fromStringList(patches)}};
}

} // namespace

class TestFileCheck : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void enqueuesNothingWhenAllFilesAreValid();
    void answersNothingToDoForNoFiles();
    void findsEveryFileMissingOnAFirstStart();
    void enqueuesOnlyWhatIsWrongInTheOrderOfTheManifest();
    void encodesTheKeyInTheUrlAndKeepsItOnDisk();
    void asksTheHostOfTheEnvironment();
    void enqueuesTheChainOfPatchesWhenThereIsOne();
    void enqueuesTheWholeFileWhenThereIsNoChain();
    void neverPlansPatchesWhenTheyAreDisabled();
    void leavesOutAndLogsAKeyThatLeavesTheFolder();
    void fetchesAnEntryOfTheWrongTypeEveryTime();
    void clearsAwayWhatAKilledLauncherLeftBesideARightFile();
    void savesTheSettingsOnceForTheNextStart();
    void tellsItsProgressAfterEachFile();

private:
    void install(const QString &key, const QByteArray &contents);
    // The URLs that the engine filled by the check then asks for.
    QStringList enqueuedBy(const QJsonObject &files, const std::optional<QString> &environment = {},
                           bool disablePatching = true);

    std::unique_ptr<QTemporaryDir> m_folder;
    Configuration m_configuration;
    std::unique_ptr<UserDefaults> m_userDefaults;
    FileCheck::Result m_result;
};

void TestFileCheck::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_configuration.downloadHost = QStringLiteral("download.example");
    m_configuration.dataFolder = m_folder->filePath(QStringLiteral("Quellmoor"));
    m_userDefaults =
        std::make_unique<UserDefaults>(m_folder->filePath(QStringLiteral("settings.sqlite")));
}

void TestFileCheck::install(const QString &key, const QByteArray &contents)
{
    const QString path = m_configuration.gameFolder() + QLatin1Char('/') + key;
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

QStringList TestFileCheck::enqueuedBy(const QJsonObject &files,
                                      const std::optional<QString> &environment,
                                      bool disablePatching)
{
    RefusingHttpClient network;
    const auto engine = std::make_shared<VARNOPatcher>(network);
    m_result = FileCheck(m_configuration, *m_userDefaults)
                   .run(files, environment, disablePatching, *engine);
    engine->start();
    return network.urls();
}

void TestFileCheck::enqueuesNothingWhenAllFilesAreValid()
{
    install(QStringLiteral("a"), "one");
    install(QStringLiteral("b/c"), "two");
    QCOMPARE(enqueuedBy({{QStringLiteral("a"), entry(shortHash("one"))},
                         {QStringLiteral("b/c"), entry(shortHash("two"))}}),
             QStringList());
    QCOMPARE(m_result.invalidCount, 0);
}

void TestFileCheck::answersNothingToDoForNoFiles()
{
    QCOMPARE(enqueuedBy({}), QStringList());
    QCOMPARE(m_result.checkedCount, 0);
}

void TestFileCheck::findsEveryFileMissingOnAFirstStart()
{
    QCOMPARE(enqueuedBy({{QStringLiteral("a"), entry(shortHash("one"))},
                         {QStringLiteral("b"), entry(shortHash("two"))}}),
             QStringList({QStringLiteral("https://download.example/mac/a.bz2"),
                          QStringLiteral("https://download.example/mac/b.bz2")}));
    QCOMPARE(m_result.invalidCount, 2);
}

void TestFileCheck::enqueuesOnlyWhatIsWrongInTheOrderOfTheManifest()
{
    install(QStringLiteral("b"), "right");
    const QJsonObject files{{QStringLiteral("c"), entry(QStringLiteral("0000000"))},
                            {QStringLiteral("b"), entry(shortHash("right"))},
                            {QStringLiteral("a"), entry(QStringLiteral("0000000"))}};
    QStringList expected;
    for (const QString &key : files.keys()) {
        if (key != QStringLiteral("b"))
            expected += QStringLiteral("https://download.example/mac/%1.bz2").arg(key);
    }
    QCOMPARE(enqueuedBy(files), expected);
}

void TestFileCheck::encodesTheKeyInTheUrlAndKeepsItOnDisk()
{
    const auto key = QString::fromUtf8("Ein Grün (1)/50%#+&'é.bin");
    QCOMPARE(enqueuedBy({{key, entry(shortHash("x"))}}),
             QStringList{QStringLiteral("https://download.example/mac/"
                                        "Ein%20Gr%C3%BCn%20(1)/50%25%23+&'%C3%A9.bin.bz2")});
    install(key, "x");
    QCOMPARE(enqueuedBy({{key, entry(shortHash("x"))}}), QStringList());
}

void TestFileCheck::asksTheHostOfTheEnvironment()
{
    QCOMPARE(enqueuedBy({{QStringLiteral("a"), entry(shortHash("one"))}}, QStringLiteral("qa")),
             QStringList{QStringLiteral("https://download-qa.example/mac/a.bz2")});
}

void TestFileCheck::enqueuesTheChainOfPatchesWhenThereIsOne()
{
    install(QStringLiteral("a"), "old");
    const QString first = QStringLiteral("a_%1_1111111.patch").arg(shortHash("old"));
    const auto second = QStringLiteral("a_1111111_2222222.patch");
    constexpr bool disablePatching = false;
    QCOMPARE(
        enqueuedBy({{QStringLiteral("a"), entry(QStringLiteral("2222222"), {second, first})}}, {},
                   disablePatching),
        QStringList({QStringLiteral("https://download.example/mac/patches/%1.bz2").arg(first),
                     QStringLiteral("https://download.example/mac/patches/%1.bz2").arg(second)}));
}

void TestFileCheck::enqueuesTheWholeFileWhenThereIsNoChain()
{
    install(QStringLiteral("a"), "old");
    constexpr bool disablePatching = false;
    QCOMPARE(enqueuedBy({{QStringLiteral("a"), entry(QStringLiteral("2222222"),
                                                     {QStringLiteral("a_0000000_2222222.patch")})}},
                        {}, disablePatching),
             QStringList{QStringLiteral("https://download.example/mac/a.bz2")});
}

void TestFileCheck::neverPlansPatchesWhenTheyAreDisabled()
{
    install(QStringLiteral("a"), "old");
    const QString patch = QStringLiteral("a_%1_2222222.patch").arg(shortHash("old"));
    QCOMPARE(enqueuedBy({{QStringLiteral("a"), entry(QStringLiteral("2222222"), {patch})}}),
             QStringList{QStringLiteral("https://download.example/mac/a.bz2")});
}

void TestFileCheck::leavesOutAndLogsAKeyThatLeavesTheFolder()
{
    const LogCapture log;
    QCOMPARE(enqueuedBy({{QStringLiteral("../a"), entry(shortHash("one"))}}), QStringList());
    QCOMPARE(m_result.refusedCount, 1);
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: The manifest's file ../a "
                                        "is left out: it does not name a file in the game "
                                        "folder.")});
}

void TestFileCheck::fetchesAnEntryOfTheWrongTypeEveryTime()
{
    install(QStringLiteral("a"), "one");
    const QStringList whole{QStringLiteral("https://download.example/mac/a.bz2")};
    const QJsonObject files{{QStringLiteral("a"), 12}};
    QCOMPARE(enqueuedBy(files), whole);
    QCOMPARE(enqueuedBy(files), whole);
}

// The manifest went back to an earlier file while the later one was being written.
void TestFileCheck::clearsAwayWhatAKilledLauncherLeftBesideARightFile()
{
    const QJsonObject later{{QStringLiteral("a/b"), entry(shortHash("later"))},
                            {QStringLiteral("a/c"), entry(shortHash("other"))}};
    install(QStringLiteral("a/b"), "earlier");
    install(QStringLiteral("a/c"), "other");
    QCOMPARE(enqueuedBy(later).size(), 1);
    install(QStringLiteral("a/.b.quellmoor-part"), "lat");
    const QStringList players{QStringLiteral("a/b.quellmoor-part"),
                              QStringLiteral("a/.d.quellmoor-part"), QStringLiteral("a/.b")};
    for (const QString &name : players)
        install(name, "the player's own");

    const QJsonObject earlier{{QStringLiteral("a/b"), entry(shortHash("earlier"))},
                              {QStringLiteral("a/c"), entry(shortHash("other"))}};
    QCOMPARE(enqueuedBy(earlier), QStringList());
    const QDir folder(m_configuration.gameFolder());
    QVERIFY(!folder.exists(QStringLiteral("a/.b.quellmoor-part")));
    for (const QString &name : players)
        QVERIFY2(folder.exists(name), qPrintable(name));
}

void TestFileCheck::savesTheSettingsOnceForTheNextStart()
{
    install(QStringLiteral("a"), "one");
    const QJsonObject files{{QStringLiteral("a"), entry(shortHash("one"))}};
    enqueuedBy(files);
    QCOMPARE(m_result.trustedCount, 0);
    m_userDefaults =
        std::make_unique<UserDefaults>(m_folder->filePath(QStringLiteral("settings.sqlite")));
    enqueuedBy(files);
    QCOMPARE(m_result.trustedCount, 1);
}

void TestFileCheck::tellsItsProgressAfterEachFile()
{
    QList<std::pair<qint64, qint64>> told;
    RefusingHttpClient network;
    VARNOPatcher engine(network);
    FileCheck(m_configuration, *m_userDefaults)
        .run({{QStringLiteral("a"), entry(QString())}, {QStringLiteral("b"), entry(QString())}}, {},
             true, engine, [&told](qint64 checked, qint64 total) {
                 told.append({checked, total});
             });
    QCOMPARE(told, (QList<std::pair<qint64, qint64>>{{1, 2}, {2, 2}}));
}

QUELLMOOR_TEST(TestFileCheck, "FileCheck")
#include "tst_FileCheck.moc"
