// The settings' file when it is not what a save leaves behind, and when it cannot be written.
#include "LogCapture.h"
#include "Obstacles.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "platform/UserDefaults.h"

#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <cerrno>
#include <functional>
#include <memory>
#include <utility>

using Damage = std::function<QByteArray(QByteArray)>;
Q_DECLARE_METATYPE(Damage)

class TestSettingsFile : public QObject
{
    Q_OBJECT

private slots:
    void setsADamagedFileAside_data();
    void setsADamagedFileAside();
    void setsADatabaseOfSomethingElseAside_data();
    void setsADatabaseOfSomethingElseAside();
    void keepsWhatItKnowsWhenDamageShowsInASave_data();
    void keepsWhatItKnowsWhenDamageShowsInASave();
    void keepsEarlierDamagedFiles();
    void replacesTheLastOfManyDamagedFiles();
    void makesADamagedFilePrivate();
    void leavesOutAKeyThatIsNoText();
    void leavesOtherTablesAlone();
    void neverSetsAFileAsideThatOthersHold();
    void readsAFileLaterThatOthersHoldLocked();
    void changesAFileThatWasLockedAndLosesNothing();
    void savesNothingIntoAFileThatIsLocked();
    void readsAFileThatCannotBeWritten();
    void tellsWhyItCannotSave();
};

namespace {

const auto File = QStringLiteral("settings.sqlite");
const auto Bad = QStringLiteral("settings.sqlite.bad");
const auto Key = QStringLiteral("key");
const auto NoDatabase = QByteArrayLiteral("no database, but long enough to be asked what it is");

void saveMany(const TestFolder &folder)
{
    UserDefaults defaults(folder.path(File));
    for (int i = 0; i < 1000; ++i)
        defaults.set(QStringLiteral("key %1").arg(i), QStringLiteral("value"));
}

// One page, on which a row describes a table.
QByteArray databaseOfOneRow(const QByteArray &row)
{
    constexpr qsizetype rowAt = 0x189;
    QByteArray bytes(512, '\0');
    bytes.replace(0, 16, QByteArray("SQLite format 3", 16));
    bytes.replace(16, 8, QByteArray("\2\0\1\1\0\x40\x20\x20", 8));
    bytes.replace(100, 10, QByteArray("\xd\0\0\0\1\0\0\0\1\x89", 10));
    return bytes.replace(rowAt, row.size(), row);
}

bool canBeSaved(const TestFolder &folder)
{
    {
        UserDefaults defaults(folder.path(File));
        defaults.set(Key, QStringLiteral("new"));
        if (defaults.synchronize())
            return false;
    }
    return UserDefaults(folder.path(File)).string(Key) == QStringLiteral("new");
}

// Runs statements in the file as another program would.
class OtherProgram
{
public:
    explicit OtherProgram(const TestFolder &folder)
        : m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), Name))
    {
        m_database.setDatabaseName(folder.path(File));
        if (!m_database.open())
            qFatal("no database");
    }
    OtherProgram(const OtherProgram &) = delete;
    OtherProgram &operator=(const OtherProgram &) = delete;
    ~OtherProgram()
    {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(Name);
    }

    void run(const QString &statement) const
    {
        if (!QSqlQuery(m_database).exec(statement))
            qFatal("%s", qPrintable(statement));
    }

private:
    static inline const QString Name = QStringLiteral("other program");
    QSqlDatabase m_database;
};

// While it lives, nobody else can read or write the file.
class LockedByOther
{
public:
    explicit LockedByOther(const TestFolder &folder) : m_program(folder)
    {
        m_program.run(QStringLiteral("BEGIN EXCLUSIVE"));
    }

private:
    OtherProgram m_program;
};

} // namespace

void TestSettingsFile::setsADamagedFileAside_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::newRow("another format")
        << Damage([](QByteArray) { return QByteArray("[General]\nprevUser=ann\n").repeated(100); });
    QTest::newRow("cut short") << Damage([](QByteArray bytes) { return bytes.left(10'000); });
    QTest::newRow("a head of zeros")
        << Damage([](QByteArray bytes) { return bytes.replace(0, 100, QByteArray(100, '\0')); });
    QTest::newRow("pages overwritten") << Damage([](QByteArray bytes) {
        return bytes.replace(4096, bytes.size() - 4096, QByteArray(bytes.size() - 4096, '\xee'));
    });
    QTest::newRow("a table with another text")
        << Damage([](QByteArray bytes) { return bytes.replace("type INTEGER", "type INTEGXR"); });
    QTest::newRow("a table that cannot be read")
        << Damage([](QByteArray bytes) { return bytes.replace("CREATE TABLE", "CREATE TXBLE"); });
    QTest::newRow("a key with another first letter") << Damage([](QByteArray bytes) {
        return bytes.replace("key 100", "\x8f"
                                        "ey 100");
    });
    QTest::newRow("a schema of a later format") << Damage([](QByteArray bytes) {
        bytes[47] = 99;
        return bytes;
    });
    QTest::newRow("a row longer than any memory") << Damage([](QByteArray) {
        return databaseOfOneRow(QByteArray(10, '\xff') + QByteArray("\0\x49", 2));
    });
    QTest::newRow("a row with a column that is too long") << Damage([](QByteArray) {
        return databaseOfOneRow(QByteArray(19, '\x9a') + QByteArray("\x14\0\0\0\0", 5) +
                                QByteArray(4, '\x9a'));
    });
}

void TestSettingsFile::setsADamagedFileAside()
{
    QFETCH(Damage, damage);
    const TestFolder folder;
    saveMany(folder);
    const QByteArray damaged = damage(*folder.read(File));
    folder.write(File, damaged);
    {
        const LogCapture log;
        UserDefaults defaults(folder.path(File));
        QVERIFY(!defaults.contains(QStringLiteral("key 1")));
        QCOMPARE(log.lines().size(), 1);
        QVERIFY(log.lines().first().contains(folder.path(File)));
        QVERIFY(log.lines().first().contains(QStringLiteral("set aside")));
    }
    QVERIFY(folder.read(Bad) == damaged);
    QVERIFY(canBeSaved(folder));
    QCOMPARE(folder.tree().size(), 2);
}

void TestSettingsFile::setsADatabaseOfSomethingElseAside_data()
{
    QTest::addColumn<QString>("statement");
    QTest::newRow("other columns") << "CREATE TABLE defaults (a, b, c)";
    QTest::newRow("a column more") << "ALTER TABLE defaults ADD COLUMN more";
    QTest::newRow("a view") << "CREATE VIEW defaults AS SELECT 'key' AS key, 0 AS type, 1 AS value";
    QTest::newRow("a trigger")
        << "CREATE TRIGGER t BEFORE INSERT ON defaults BEGIN SELECT RAISE(ABORT, 'no'); END";
}

void TestSettingsFile::setsADatabaseOfSomethingElseAside()
{
    QFETCH(QString, statement);
    const TestFolder folder;
    if (!statement.contains(QStringLiteral(" defaults AS")) &&
        !statement.contains(QStringLiteral("(a, b, c)")))
        saveMany(folder);
    OtherProgram(folder).run(statement);
    const auto before = folder.read(File);
    const LogCapture log;
    QVERIFY(canBeSaved(folder));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(folder.read(Bad) == before);
}

void TestSettingsFile::keepsWhatItKnowsWhenDamageShowsInASave_data()
{
    QTest::addColumn<Damage>("damage");
    // Readers may go on with such a file; writers may not.
    QTest::newRow("a format for reading only") << Damage([](QByteArray bytes) {
        bytes[18] = 3;
        return bytes;
    });
    QTest::newRow("no table any more") << Damage([](QByteArray) { return QByteArray(); });
    QTest::newRow("another file") << Damage([](QByteArray) { return NoDatabase; });
}

void TestSettingsFile::keepsWhatItKnowsWhenDamageShowsInASave()
{
    QFETCH(Damage, damage);
    const TestFolder folder;
    saveMany(folder);
    UserDefaults defaults(folder.path(File));
    const QByteArray damaged = damage(*folder.read(File));
    folder.write(File, damaged);
    {
        const LogCapture log;
        defaults.set(Key, true);
        QVERIFY(!defaults.synchronize());
        QCOMPARE(log.lines().size(), damaged.isEmpty() ? 0 : 1);
    }
    const UserDefaults again(folder.path(File));
    QVERIFY(again.boolean(Key));
    QCOMPARE(again.string(QStringLiteral("key 999")).has_value(), !damaged.isEmpty());
    QCOMPARE(folder.read(Bad).value_or(QByteArray()), damaged);
}

void TestSettingsFile::keepsEarlierDamagedFiles()
{
    const TestFolder folder;
    folder.write(Bad, "oldest");
    for (int number = 2; number <= 3; ++number) {
        folder.write(File, NoDatabase + QByteArray::number(number));
        const UserDefaults defaults(folder.path(File));
    }
    QCOMPARE(folder.tree(),
             (QStringList{
                 Bad + QStringLiteral(".2=") + QString::fromLatin1(NoDatabase) + QLatin1Char('2'),
                 Bad + QStringLiteral(".3=") + QString::fromLatin1(NoDatabase) + QLatin1Char('3'),
                 Bad + QStringLiteral("=oldest")}));
}

void TestSettingsFile::replacesTheLastOfManyDamagedFiles()
{
    const TestFolder folder;
    for (int number = 1; number <= 11; ++number) {
        folder.write(File, NoDatabase + QByteArray::number(number));
        const UserDefaults defaults(folder.path(File));
    }
    QCOMPARE(folder.tree().size(), 9);
    QCOMPARE(folder.read(Bad), NoDatabase + "1");
    QCOMPARE(folder.read(Bad + QStringLiteral(".9")), NoDatabase + "11");
}

void TestSettingsFile::makesADamagedFilePrivate()
{
    const TestFolder folder;
    folder.write(File, NoDatabase);
    folder.setMode(File, 0644);
    const UserDefaults defaults(folder.path(File));
    QCOMPARE(modeOf(folder.path(Bad)), mode_t(0600));
}

void TestSettingsFile::leavesOutAKeyThatIsNoText()
{
    const TestFolder folder;
    saveMany(folder);
    OtherProgram(folder).run(
        QStringLiteral("INSERT INTO defaults VALUES (CAST('key' AS BLOB), 0, 'other')"));
    QVERIFY(!UserDefaults(folder.path(File)).contains(Key));
    QVERIFY(canBeSaved(folder));
}

void TestSettingsFile::leavesOtherTablesAlone()
{
    const TestFolder folder;
    OtherProgram(folder).run(QStringLiteral("CREATE TABLE other AS SELECT 7 AS value"));
    QVERIFY(canBeSaved(folder));
    QVERIFY(!folder.read(Bad));
    OtherProgram(folder).run(QStringLiteral("UPDATE other SET value = 8"));
}

void TestSettingsFile::neverSetsAFileAsideThatOthersHold()
{
    const TestFolder folder;
    saveMany(folder);
    UserDefaults defaults(folder.path(File));
    defaults.set(Key, true);
    {
        const LockedByOther other(folder);
        QVERIFY(defaults.synchronize());
    }
    QVERIFY(!defaults.synchronize());
    const UserDefaults again(folder.path(File));
    QVERIFY(again.boolean(Key) && again.contains(QStringLiteral("key 1")));
    QVERIFY(!folder.read(Bad));
}

void TestSettingsFile::readsAFileLaterThatOthersHoldLocked()
{
    const TestFolder folder;
    saveMany(folder);
    const LogCapture log;
    auto other = std::make_unique<LockedByOther>(folder);
    QElapsedTimer timer;
    timer.start();
    const UserDefaults defaults(folder.path(File));
    QVERIFY(!defaults.contains(QStringLiteral("key 1")));
    QVERIFY2(timer.elapsed() < 2500, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().first().contains(QStringLiteral("locked")));

    other.reset();
    QTRY_COMPARE(defaults.string(QStringLiteral("key 1")), QStringLiteral("value"));
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(!folder.read(Bad));
}

void TestSettingsFile::changesAFileThatWasLockedAndLosesNothing()
{
    const TestFolder folder;
    saveMany(folder);
    auto other = std::make_unique<LockedByOther>(folder);
    UserDefaults defaults(folder.path(File));
    defaults.set(Key, true);
    defaults.set(QStringLiteral("key 1"), QStringLiteral("newer"));
    defaults.remove(QStringLiteral("key 2"));

    other.reset();
    QVERIFY(!defaults.synchronize());
    const UserDefaults again(folder.path(File));
    for (const UserDefaults *each : {&std::as_const(defaults), &again}) {
        QVERIFY(each->boolean(Key));
        QCOMPARE(each->string(QStringLiteral("key 1")), QStringLiteral("newer"));
        QVERIFY(!each->contains(QStringLiteral("key 2")));
        QCOMPARE(each->string(QStringLiteral("key 3")), QStringLiteral("value"));
    }
}

void TestSettingsFile::savesNothingIntoAFileThatIsLocked()
{
    const TestFolder folder;
    saveMany(folder);
    const auto before = folder.read(File);
    auto other = std::make_unique<LockedByOther>(folder);
    UserDefaults defaults(folder.path(File));
    defaults.set(Key, true);
    const auto error = defaults.synchronize();
    QVERIFY(error);
    QCOMPARE(error->code, EBUSY);
    QVERIFY(folder.read(File) == before);

    other.reset();
    QTRY_VERIFY(defaults.contains(QStringLiteral("key 1")));
    QVERIFY(defaults.boolean(Key));
    QVERIFY(!defaults.synchronize());
    const UserDefaults again(folder.path(File));
    QVERIFY(again.boolean(Key) && again.contains(QStringLiteral("key 1")));
}

void TestSettingsFile::readsAFileThatCannotBeWritten()
{
    const TestFolder folder;
    saveMany(folder);
    const auto before = folder.read(File);
    folder.setMode(File, 0444);
    folder.setMode(QString(), 0555);
    {
        const WithoutPrivileges ordinary;
        UserDefaults defaults(folder.path(File));
        QVERIFY(defaults.contains(QStringLiteral("key 1")));
        defaults.set(Key, true);
        const auto error = defaults.synchronize();
        QVERIFY(error);
        QCOMPARE(error->code, EACCES);
    }
    QVERIFY(folder.read(File) == before);
    QCOMPARE(folder.tree().size(), 1);
    folder.setMode(QString(), 0755);
    QVERIFY(canBeSaved(folder));
}

void TestSettingsFile::tellsWhyItCannotSave()
{
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "a file in the place of a folder");
    errno = ENOSPC; // of an earlier call of somebody's
    UserDefaults defaults(folder.path(QStringLiteral("file/settings.sqlite")));
    defaults.set(Key, true);
    const auto error = defaults.synchronize();
    QVERIFY(error);
    QCOMPARE(error->code, EEXIST);
    QVERIFY(error->localizedDescription.contains(QStringLiteral("File exists")));
}

QUELLMOOR_TEST(TestSettingsFile, "SettingsFile")
#include "tst_SettingsFile.moc"
