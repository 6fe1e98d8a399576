#include "LogCapture.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "model/SHA256.h"
#include "model/VARNOResourceFile.h"
#include "model/ValidationCache.h"
#include "platform/UserDefaults.h"

#include <QJsonObject>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const auto DateKey = u"lastValid/mac/data/archive_a.bin.bz2"_s;
const auto HashKey = u"lastValidHash/mac/data/archive_a.bin.bz2"_s;
const Date Day{1700000000123456789ns};

QString shortHash(const QByteArray &bytes) { return SHA256(bytes).left(7); }

// An installation with one file, the settings and what one check after the other says.
class Installation
{
public:
    explicit Installation(const QByteArray &contents = "contents"_ba) : hash(shortHash(contents))
    {
        folder.setMode(QString(), 0755);
        put(contents, Day);
    }

    void put(const QByteArray &contents, Date date) const
    {
        folder.write(u"file"_s, contents);
        folder.setModified(u"file"_s, date);
    }

    // A check of its own, as after a restart: "valid" or "invalid", "trusted" when without reading.
    QString check(const QString &name = u"file"_s)
    {
        const auto cache = std::make_shared<ValidationCache>(settings, folder.path());
        const QJsonValue entry = hash ? QJsonObject{{u"hash"_s, *hash}} : QJsonObject();
        const VARNOResourceFile file(QUrl(u"https://h/mac/data/archive_a.bin.bz2"_s),
                                     folder.path(name), entry, cache, QString());
        const bool isValid = file.isValid();
        return (isValid ? u"valid"_s : u"invalid"_s) +
               (cache->trustedCount() > 0 ? u", trusted"_s : QString());
    }

    [[nodiscard]] QString entries() const
    {
        const auto date = settings.date(DateKey);
        const QString text = date ? QString::number(date->time_since_epoch().count())
                                  : (settings.contains(DateKey) ? u"?"_s : u"-"_s);
        return text + u' ' +
               settings.string(HashKey).value_or(settings.contains(HashKey) ? u"?"_s : u"-"_s);
    }

    [[nodiscard]] static QString entriesFor(Date date, const QString &hash)
    {
        return QString::number(date.time_since_epoch().count()) + u' ' + hash;
    }

    TestFolder folder;
    UserDefaults settings{folder.path(u"settings/db"_s)};
    std::optional<QString> hash;
};

} // namespace

class TestValidation : public QObject
{
    Q_OBJECT

private slots:
    void recordsAValidFileUnderItsTwoKeys();
    void trustsARecordedFileWithoutReadingIt();
    void readsATouchedFileAgainAndRecordsItsNewDate_data();
    void readsATouchedFileAgainAndRecordsItsNewDate();
    void findsAChangedFileInvalidWhateverItsNewDate_data();
    void findsAChangedFileInvalidWhateverItsNewDate();
    void readsAnUntouchedFileWhenTheManifestsHashChanged_data();
    void readsAnUntouchedFileWhenTheManifestsHashChanged();
    void readsTheFileWithoutBothEntries_data();
    void readsTheFileWithoutBothEntries();
    void matchesOnlyTheExactShortHash_data();
    void matchesOnlyTheExactShortHash();
    void forgetsWhatIsNoReadableFile_data();
    void forgetsWhatIsNoReadableFile();
    void trustsAcrossARestart();
    void removesItsEntriesFromTheDiskToo();
    void waitsForTheDiskOnceBeforeTheFirstEntry();
    void neverWaitsForTheDiskWithoutANewEntry();
    void recordsNothingWithoutADate();
    void countsEachTrustedFile();
};

void TestValidation::recordsAValidFileUnderItsTwoKeys()
{
    Installation game;
    const QString answer = game.check();
    QCOMPARE(QStringList({answer, game.entries()}),
             QStringList({u"valid"_s, Installation::entriesFor(Day, *game.hash)}));
}

void TestValidation::trustsARecordedFileWithoutReadingIt()
{
    Installation game;
    QStringList answers{game.check()};
    game.put("other contents", Day);
    answers += game.check();
    game.folder.setMode(u"file"_s, 0);
    {
        const WithoutPrivileges asAnybody;
        answers += game.check();
    }
    QCOMPARE(answers, QStringList({u"valid"_s, u"valid, trusted"_s, u"valid, trusted"_s}));
}

void TestValidation::readsATouchedFileAgainAndRecordsItsNewDate_data()
{
    QTest::addColumn<qint64>("moved");
    QTest::newRow("a nanosecond later") << qint64(1);
    QTest::newRow("a nanosecond earlier") << qint64(-1);
    QTest::newRow("a day later") << qint64(std::chrono::nanoseconds(24h).count());
    QTest::newRow("a year earlier") << qint64(std::chrono::nanoseconds(-8760h).count());
    QTest::newRow("to the epoch") << -qint64(Day.time_since_epoch().count());
}

void TestValidation::readsATouchedFileAgainAndRecordsItsNewDate()
{
    QFETCH(qint64, moved);
    Installation game;
    const Date touched = Day + std::chrono::nanoseconds(moved);
    QStringList answers{game.check()};
    game.folder.setModified(u"file"_s, touched);
    answers += game.check();
    answers += game.entries();
    answers += game.check();
    QCOMPARE(answers,
             QStringList({u"valid"_s, u"valid"_s, Installation::entriesFor(touched, *game.hash),
                          u"valid, trusted"_s}));
}

void TestValidation::findsAChangedFileInvalidWhateverItsNewDate_data()
{
    readsATouchedFileAgainAndRecordsItsNewDate_data();
}

void TestValidation::findsAChangedFileInvalidWhateverItsNewDate()
{
    QFETCH(qint64, moved);
    Installation game;
    QStringList answers{game.check()};
    game.put("other contents", Day + std::chrono::nanoseconds(moved));
    answers += game.check();
    answers += game.entries();
    QCOMPARE(answers, QStringList({u"valid"_s, u"invalid"_s, u"- -"_s}));
}

void TestValidation::readsAnUntouchedFileWhenTheManifestsHashChanged_data()
{
    QTest::addColumn<QByteArray>("onDisk");
    QTest::addColumn<QString>("answer");
    QTest::newRow("the file is the new version") << "new contents"_ba << u"valid"_s;
    QTest::newRow("the file is the old version") << "contents"_ba << u"invalid"_s;
}

void TestValidation::readsAnUntouchedFileWhenTheManifestsHashChanged()
{
    QFETCH(QByteArray, onDisk);
    QFETCH(QString, answer);
    Installation game;
    QStringList answers{game.check()};
    game.put(onDisk, Day);
    game.hash = shortHash("new contents");
    answers += game.check();
    answers += game.entries();
    const QString entries =
        answer == u"valid"_s ? Installation::entriesFor(Day, *game.hash) : u"- -"_s;
    QCOMPARE(answers, QStringList({u"valid"_s, answer, entries}));
}

void TestValidation::readsTheFileWithoutBothEntries_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isOfAnotherType");
    QTest::newRow("no date") << DateKey << false;
    QTest::newRow("no hash") << HashKey << false;
    QTest::newRow("a date that is none") << DateKey << true;
    QTest::newRow("a hash that is no text") << HashKey << true;
}

void TestValidation::readsTheFileWithoutBothEntries()
{
    QFETCH(QString, key);
    QFETCH(bool, isOfAnotherType);
    Installation game;
    QStringList answers{game.check()};
    if (isOfAnotherType)
        game.settings.set(key, true);
    else
        game.settings.remove(key);
    game.put("other contents", Day);
    answers += game.check();
    answers += game.entries();
    QCOMPARE(answers, QStringList({u"valid"_s, u"invalid"_s, u"- -"_s}));
}

void TestValidation::matchesOnlyTheExactShortHash_data()
{
    QTest::addColumn<bool>("hasHash");
    QTest::addColumn<QString>("hash");
    QTest::addColumn<QString>("answer");
    const QString whole = SHA256("contents");
    QTest::newRow("7 digits") << true << whole.left(7) << u"valid"_s;
    QTest::newRow("6 digits") << true << whole.left(6) << u"invalid"_s;
    QTest::newRow("8 digits") << true << whole.left(8) << u"invalid"_s;
    QTest::newRow("all digits") << true << whole << u"invalid"_s;
    QTest::newRow("upper case") << true << whole.left(7).toUpper() << u"invalid"_s;
    QTest::newRow("a blank behind") << true << QString(whole.left(7) + u' ') << u"invalid"_s;
    QTest::newRow("empty") << true << QString() << u"invalid"_s;
    QTest::newRow("none") << false << QString() << u"invalid"_s;
}

void TestValidation::matchesOnlyTheExactShortHash()
{
    QFETCH(bool, hasHash);
    QFETCH(QString, hash);
    QFETCH(QString, answer);
    Installation game;
    game.hash = hasHash ? std::optional(hash) : std::nullopt;
    const QString first = game.check();
    const bool isTrusted = game.check() == u"valid, trusted"_s;
    QCOMPARE(std::tuple(first, isTrusted, game.settings.contains(HashKey)),
             std::tuple(answer, answer == u"valid"_s, answer == u"valid"_s));
}

void TestValidation::forgetsWhatIsNoReadableFile_data()
{
    QTest::addColumn<QString>("name");
    for (const auto *name : {"missing", "folder", "pipe", "link", "dangling", "secret", "file/x"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void TestValidation::forgetsWhatIsNoReadableFile()
{
    QFETCH(QString, name);
    Installation game;
    game.folder.makeFolder(u"folder"_s);
    game.folder.makePipe(u"pipe"_s);
    game.folder.link(u"file"_s, u"link"_s);
    game.folder.link(u"nothing"_s, u"dangling"_s);
    game.folder.write(u"secret"_s, "contents");
    game.folder.setMode(u"secret"_s, 0);
    QStringList answers{game.check()};
    {
        const WithoutPrivileges asAnybody;
        answers += game.check(name);
    }
    answers += game.entries();
    QCOMPARE(answers, QStringList({u"valid"_s, u"invalid"_s, u"- -"_s}));
}

void TestValidation::trustsAcrossARestart()
{
    Installation game;
    QStringList answers{game.check()};
    game.settings.synchronize();
    game.put("other contents", Day);
    UserDefaults reloaded(game.folder.path(u"settings/db"_s));
    ValidationCache cache(reloaded, game.folder.path());
    QCOMPARE(QList<bool>({cache.isTrusted({DateKey, HashKey}, Day, game.hash),
                          cache.isTrusted({DateKey, HashKey}, Day + 1ns, game.hash)}),
             QList<bool>({true, false}));
}

void TestValidation::removesItsEntriesFromTheDiskToo()
{
    Installation game;
    game.check();
    game.settings.synchronize();
    game.put("other contents", Day + 1s);
    game.check();
    game.settings.synchronize();
    const UserDefaults reloaded(game.folder.path(u"settings/db"_s));
    QCOMPARE(QList<bool>({reloaded.contains(DateKey), reloaded.contains(HashKey)}),
             QList<bool>({false, false}));
}

// A folder that is not there cannot be waited for, and each try leaves a line in the log.
void TestValidation::waitsForTheDiskOnceBeforeTheFirstEntry()
{
    Installation game;
    const LogCapture log;
    ValidationCache cache(game.settings, game.folder.path(u"missing"_s));
    QList<qsizetype> lineCounts{log.lines().size()};
    for (int i = 0; i < 3; ++i) {
        cache.record({u"date%1"_s.arg(i), u"hash%1"_s.arg(i)}, Day, u"abc"_s);
        lineCounts += log.lines().size();
    }
    QCOMPARE(lineCounts, QList<qsizetype>({0, 1, 1, 1}));
}

void TestValidation::neverWaitsForTheDiskWithoutANewEntry()
{
    Installation game;
    game.check();
    const LogCapture log;
    ValidationCache cache(game.settings, game.folder.path(u"missing"_s));
    const bool isTrusted = cache.isTrusted({DateKey, HashKey}, Day, game.hash);
    cache.forget({DateKey, HashKey});
    cache.record({DateKey, HashKey}, std::nullopt, u"abc"_s);
    QCOMPARE(std::pair(isTrusted, log.lines()), std::pair(true, QStringList()));
}

void TestValidation::recordsNothingWithoutADate()
{
    Installation game;
    game.check();
    ValidationCache cache(game.settings, game.folder.path());
    cache.record({DateKey, HashKey}, std::nullopt, *game.hash);
    QCOMPARE(game.entries(), u"- -"_s);
}

void TestValidation::countsEachTrustedFile()
{
    Installation game;
    ValidationCache cache(game.settings, game.folder.path());
    const ValidationCache::Keys keys{DateKey, HashKey};
    cache.record(keys, Day, u"abc"_s);
    const QList<bool> answers{cache.isTrusted(keys, Day, u"abc"_s),
                              cache.isTrusted(keys, Day, u"abc"_s),
                              cache.isTrusted(keys, Day, u"abd"_s),
                              cache.isTrusted(keys, Day, std::nullopt),
                              cache.isTrusted(keys, std::nullopt, u"abc"_s),
                              cache.isTrusted({HashKey, DateKey}, Day, u"abc"_s)};
    QCOMPARE(std::pair(answers, cache.trustedCount()),
             std::pair(QList<bool>{true, true, false, false, false, false}, qint64(2)));
}

QUELLMOOR_TEST(TestValidation, "Validation")
#include "tst_Validation.moc"
