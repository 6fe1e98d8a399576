#include "TestFolder.h"
#include "TestMain.h"
#include "controller/TrustedFiles.h"
#include "model/GameFolder.h"
#include "model/SHA256.h"
#include "model/VARNOResourceFile.h"
#include "platform/UserDefaults.h"

#include <QJsonObject>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>

using namespace Qt::StringLiterals;

namespace {

const auto Base = u"https://download.example/mac/"_s;
const auto Hash = SHA256("contents").left(7);
const Date Day{std::chrono::nanoseconds(1'700'000'000'123'456'789)};

// A game folder in which every file has the same contents, the records of its files, and what is
// recognised without them.
class Game
{
public:
    explicit Game(const QString &base = Base) : m_base(base) {}

    void install(const QString &key) const
    {
        folder.write(u"game/"_s + key, "contents");
        folder.setModified(u"game/"_s + key, Day);
    }

    // What the record says after it has read the file.
    bool isValid(const QString &key)
    {
        const VARNOResourceFile record(TrustedFiles::downloadUrl(m_base, key),
                                       gameFolder.path() + u'/' + key,
                                       QJsonObject{{u"hash"_s, Hash}}, cache, QString());
        return record.isValid();
    }

    TestFolder folder;
    UserDefaults settings{folder.path(u"settings/db"_s)};
    GameFolder gameFolder{folder.path(u"game"_s)};

private:
    const QString m_base;

public:
    const std::shared_ptr<ValidationCache> cache =
        std::make_shared<ValidationCache>(settings, gameFolder.path());
    TrustedFiles trusted{m_base, gameFolder, *cache};
};

} // namespace

class TestTrustedFiles : public QObject
{
    Q_OBJECT

private slots:
    void agreesWithTheRecord_data();
    void agreesWithTheRecord();
    void agreesForEveryCharacter();
    void agreesWhateverTheBase_data();
    void agreesWhateverTheBase();
    void containsFilesOfFoldersInAnyOrder();
    void containsNothingThatHasChanged();
    void containsNoKeyThatIsRefused_data();
    void containsNoKeyThatIsRefused();
    void containsNoKeyThatIsTooLong();
    void countsWhatItContains();
};

void TestTrustedFiles::agreesWithTheRecord_data()
{
    QTest::addColumn<QString>("key");
    for (const auto &key : {u"a"_s,
                            u"data/a b.bin"_s,
                            u"100%25/a%2Fb"_s,
                            u"what?"_s,
                            u"what?/a"_s,
                            u"#1"_s,
                            u"a:b"_s,
                            u"a/…/ü"_s,
                            u"Ein Grün (1)/é"_s,
                            u"沼/泥炭.bin"_s,
                            u"🐸"_s,
                            u"a\tb"_s,
                            u"a\x7f"_s,
                            u"..."_s,
                            u"a//b"_s,
                            u"a/."_s,
                            u"a/.."_s,
                            u".."_s,
                            u""_s,
                            u"a/"_s})
        QTest::newRow(qUtf8Printable(key.isEmpty() ? u"empty"_s : key)) << key;
}

void TestTrustedFiles::agreesWithTheRecord()
{
    QFETCH(QString, key);
    Game game;
    const bool isAccepted = std::holds_alternative<QString>(game.gameFolder.pathFor(key));
    if (isAccepted)
        game.install(key);
    QVERIFY(!game.trusted.contains(key, Hash));
    QCOMPARE(isAccepted && game.isValid(key), isAccepted);
    QCOMPARE(game.trusted.contains(key, Hash), isAccepted);
}

void TestTrustedFiles::agreesForEveryCharacter()
{
    Game game;
    for (char16_t character = 1; character < 0x180; ++character) {
        if (character == u'/')
            continue;
        const QString key = u"data/<"_s + QChar(character) + u'>';
        game.install(key);
        QVERIFY(game.isValid(key));
        QVERIFY2(game.trusted.contains(key, Hash), qPrintable(QString::number(character)));
    }
}

void TestTrustedFiles::agreesWhateverTheBase_data()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("none") << QString();
    QTest::newRow("a host that no URL can have") << u"https://download-.example/mac/"_s;
    QTest::newRow("an address") << u"https://[::1]:8443/mac/"_s;
    QTest::newRow("a port") << u"https://download.example:8443/mac/"_s;
    QTest::newRow("no path") << u"https://download.example/"_s;
}

void TestTrustedFiles::agreesWhateverTheBase()
{
    QFETCH(QString, base);
    Game game(base);
    for (const auto &key : {u"data/a.bin"_s, u"a:b"_s, u"what?"_s}) {
        game.install(key);
        QVERIFY(game.isValid(key));
        QVERIFY(game.trusted.contains(key, Hash));
    }
}

void TestTrustedFiles::containsFilesOfFoldersInAnyOrder()
{
    Game game;
    const QStringList keys{u"a/1"_s, u"b/1"_s, u"top"_s, u"a/2"_s, u"a/deep/er/1"_s, u"a/3"_s};
    for (const QString &key : keys) {
        game.install(key);
        QVERIFY(game.isValid(key));
    }
    for (const QString &key : keys + keys)
        QVERIFY2(game.trusted.contains(key, Hash), qPrintable(key));
}

void TestTrustedFiles::containsNothingThatHasChanged()
{
    Game game;
    for (const auto &key : {u"a"_s, u"b"_s, u"c"_s, u"d"_s}) {
        game.install(key);
        QVERIFY(game.isValid(key));
    }
    game.folder.setModified(u"game/b"_s, Day + std::chrono::nanoseconds(1));
    QVERIFY(QFile::remove(game.folder.path(u"game/c"_s)));
    QVERIFY(QFile::remove(game.folder.path(u"game/d"_s)));
    game.folder.link(u"a"_s, u"game/d"_s);
    QList<bool> answers;
    for (const auto &key : {u"a"_s, u"b"_s, u"c"_s, u"d"_s})
        answers += game.trusted.contains(key, Hash);
    answers += game.trusted.contains(u"a"_s, u"0000000"_s);
    QCOMPARE(answers, QList<bool>({true, false, false, false, false}));
}

void TestTrustedFiles::containsNoKeyThatIsRefused_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("through a link that leads out") << u"out/file"_s;
    QTest::newRow("upwards") << u"../outside/file"_s;
    QTest::newRow("upwards later") << u"data/../../outside/file"_s;
}

// The entries of the cache alone would do.
void TestTrustedFiles::containsNoKeyThatIsRefused()
{
    QFETCH(QString, key);
    Game game;
    game.install(u"data/file"_s);
    game.folder.write(u"outside/file"_s, "contents");
    game.folder.link(u"../outside"_s, u"game/out"_s);
    QVERIFY(game.isValid(key));
    QVERIFY(!game.trusted.contains(u"data/file"_s, Hash));
    QVERIFY(!game.trusted.contains(key, Hash));
}

void TestTrustedFiles::containsNoKeyThatIsTooLong()
{
    Game game;
    const qsizetype room = PATH_MAX - game.gameFolder.path().size() - 2;
    const QString folder = (QString(200, u'f') + u'/').repeated(room / 201);
    const QString longest = folder + QString(room - folder.size(), u'n');
    QVERIFY(std::holds_alternative<QString>(game.gameFolder.pathFor(longest)));
    QVERIFY(!std::holds_alternative<QString>(game.gameFolder.pathFor(longest + u'n')));
    game.install(longest.chopped(1));
    game.install(longest);
    // Only relative to its folder can the file that is too long be made at all.
    const QByteArray parent = game.folder.path(u"game/"_s + folder).toUtf8();
    const QByteArray tooLong = (longest + u'n').mid(folder.size()).toUtf8();
    const int parentDescriptor = open(parent.constData(), O_PATH | O_DIRECTORY);
    const int file = openat(parentDescriptor, tooLong.constData(), O_WRONLY | O_CREAT, 0644);
    const std::array<timespec, 2> dates{
        {{1'700'000'000, 123'456'789}, {1'700'000'000, 123'456'789}}};
    QCOMPARE(futimens(file, dates.data()), 0);
    close(file);
    for (const auto &key : {longest.chopped(1), longest, longest + u'n'})
        game.cache->record(
            {u"lastValid/mac/"_s + key + u".bz2"_s, u"lastValidHash/mac/"_s + key + u".bz2"_s}, Day,
            Hash);
    QVERIFY(game.trusted.contains(longest.chopped(1), Hash));
    QVERIFY(game.trusted.contains(longest, Hash));
    QVERIFY(!game.trusted.contains(longest + u'n', Hash));
    unlinkat(parentDescriptor, tooLong.constData(), 0); // it would outlive the folder
    close(parentDescriptor);
}

void TestTrustedFiles::countsWhatItContains()
{
    Game game;
    game.install(u"a"_s);
    QVERIFY(game.isValid(u"a"_s));
    QVERIFY(game.trusted.contains(u"a"_s, Hash));
    QVERIFY(!game.trusted.contains(u"b"_s, Hash));
    QCOMPARE(game.cache->trustedCount(), 1);
}

QUELLMOOR_TEST(TestTrustedFiles, "TrustedFiles")
#include "tst_TrustedFiles.moc"
