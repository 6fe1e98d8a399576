#include "FatalCheck.h"
#include "LogCapture.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"

#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

#include <csignal>
#include <limits>
#include <thread>
#include <vector>

using Value = UserDefaults::Value;
Q_DECLARE_METATYPE(Value)

class TestUserDefaults : public QObject
{
    Q_OBJECT

private slots:
    void startsEmptyAndLeavesNoFile();
    void givesBackWhatWasSet_data();
    void givesBackWhatWasSet();
    void givesNothingForAValueOfAnotherType_data();
    void givesNothingForAValueOfAnotherType();
    void keepsKeysOfAnyText();
    void takesANullKeyForAnEmptyOne();
    void replacesAValueByOneOfAnotherType();
    void removesAValueForGood();
    void savesWhatIsUnsavedWhenItGoes();
    void makesAPrivateFileInAPrivateFolder();
    void leavesTheModeOfAFolderThatIsThere();
    void takesTheRightsOfOthersFromAnOldFile();
    void keepsTheOldFileWhenTheDiskIsFullAndSavesLater();
    void keepsChangesForLaterWhenTheFolderCannotBeWritten();
    void prefersANewerChangeToOneThatCouldNotBeSaved();
    void keepsAWholeEarlierStateWhenKilledInASave();
    void takesTurnsWithAnotherLauncherAtTheSameFile();
    void takesChangesAndSavesFromManyThreads();
    void keepsManyEntries();
};

namespace {

constexpr auto ChildFolder = "QUELLMOOR_TEST_FOLDER";
const auto File = QStringLiteral("settings.sqlite");
const auto Key = QStringLiteral("key");

Date dateOf(qint64 nanoseconds) { return Date(std::chrono::nanoseconds(nanoseconds)); }

// What is there under the key, as text with its type.
QString describe(const UserDefaults &defaults, const QString &key)
{
    if (const auto string = defaults.string(key))
        return QStringLiteral("string ") + *string;
    if (const auto date = defaults.date(key))
        return QStringLiteral("date %1").arg(qint64(date->time_since_epoch().count()));
    if (const auto data = defaults.data(key))
        return QStringLiteral("data ") + QString::fromLatin1(data->toHex());
    if (defaults.boolean(key))
        return QStringLiteral("true");
    return defaults.contains(key) ? QStringLiteral("false") : QStringLiteral("nothing");
}

QString onDisk(const TestFolder &folder, const QString &key = Key)
{
    return describe(UserDefaults(folder.path(File)), key);
}

void setAndSave(const TestFolder &folder, const QString &key, const Value &value)
{
    UserDefaults defaults(folder.path(File));
    defaults.set(key, value);
    if (defaults.synchronize())
        qFatal("the settings cannot be saved");
}

unsigned modeOf(const QString &path)
{
    struct stat attributes
    {
    };
    if (lstat(qPrintable(path), &attributes) != 0)
        qFatal("no file to look at");
    return attributes.st_mode & 07777U;
}

} // namespace

void TestUserDefaults::startsEmptyAndLeavesNoFile()
{
    const TestFolder folder;
    {
        UserDefaults defaults(folder.path(QStringLiteral("new/settings.sqlite")));
        QCOMPARE(describe(defaults, Key), QStringLiteral("nothing"));
        QVERIFY(!defaults.boolean(Key));
        defaults.remove(Key);
        QVERIFY(!defaults.synchronize());
    }
    QCOMPARE(folder.tree(), QStringList());
}

void TestUserDefaults::givesBackWhatWasSet_data()
{
    QTest::addColumn<Value>("value");
    QTest::addColumn<QString>("description");
    QTest::newRow("string") << Value(QStringLiteral("ann")) << "string ann";
    QTest::newRow("empty string") << Value(QStringLiteral("")) << "string ";
    QTest::newRow("null string") << Value(QString()) << "string ";
    QTest::newRow("a number as string") << Value(QStringLiteral("007")) << "string 007";
    QTest::newRow("letters of the world") << Value(QStringLiteral(u"\u00e4\u9f8d\U0001f409 '\"\n"))
                                          << QStringLiteral(u"string \u00e4\u9f8d\U0001f409 '\"\n");
    QTest::newRow("true") << Value(true) << "true";
    QTest::newRow("false") << Value(false) << "false";
    QTest::newRow("data") << Value(QByteArray("\0\xff\n'", 4)) << "data 00ff0a27";
    QTest::newRow("empty data") << Value(QByteArray("")) << "data ";
    QTest::newRow("null data") << Value(QByteArray()) << "data ";
    for (const qint64 nanoseconds :
         {qint64(0), qint64(1), qint64(-1), qint64(1'700'000'000'123'456'789),
          std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min()})
        QTest::addRow("date %lld", static_cast<long long>(nanoseconds))
            << Value(dateOf(nanoseconds)) << QStringLiteral("date %1").arg(nanoseconds);
}

void TestUserDefaults::givesBackWhatWasSet()
{
    QFETCH(Value, value);
    QFETCH(QString, description);
    const TestFolder folder;
    UserDefaults defaults(folder.path(File));
    defaults.set(Key, value);
    QCOMPARE(describe(defaults, Key), description);
    QCOMPARE(onDisk(folder), QStringLiteral("nothing"));
    QVERIFY(!defaults.synchronize());
    QCOMPARE(onDisk(folder), description);
}

void TestUserDefaults::givesNothingForAValueOfAnotherType_data()
{
    QTest::addColumn<Value>("value");
    QTest::addColumn<QString>("type");
    QTest::newRow("string") << Value(QStringLiteral("1")) << "string";
    QTest::newRow("date") << Value(dateOf(1)) << "date";
    QTest::newRow("boolean") << Value(true) << "boolean";
    QTest::newRow("data") << Value(QByteArray("1")) << "data";
}

void TestUserDefaults::givesNothingForAValueOfAnotherType()
{
    QFETCH(Value, value);
    QFETCH(QString, type);
    const TestFolder folder;
    setAndSave(folder, Key, value);
    const UserDefaults defaults(folder.path(File));
    QCOMPARE(defaults.string(Key).has_value(), type == QStringLiteral("string"));
    QCOMPARE(defaults.date(Key).has_value(), type == QStringLiteral("date"));
    QCOMPARE(defaults.boolean(Key), type == QStringLiteral("boolean"));
    QCOMPARE(defaults.data(Key).has_value(), type == QStringLiteral("data"));
    QVERIFY(defaults.contains(Key));
}

void TestUserDefaults::keepsKeysOfAnyText()
{
    const QStringList keys{QStringLiteral("prevUser"),
                           QStringLiteral("PREVUSER"),
                           QStringLiteral("lastValidmaps/a b'c.dat"),
                           QStringLiteral("prevUser "),
                           QStringLiteral(u"\u00e4"),
                           QStringLiteral(u"a\u0308"),
                           QStringLiteral(""),
                           QString(5000, QLatin1Char('k'))};
    const TestFolder folder;
    {
        UserDefaults defaults(folder.path(File));
        for (const QString &key : keys)
            defaults.set(key, QString::number(keys.indexOf(key)));
    }
    const UserDefaults defaults(folder.path(File));
    for (const QString &key : keys)
        QCOMPARE(defaults.string(key), QString::number(keys.indexOf(key)));
}

void TestUserDefaults::takesANullKeyForAnEmptyOne()
{
    const TestFolder folder;
    setAndSave(folder, QString(), QStringLiteral("value"));
    QCOMPARE(onDisk(folder, QStringLiteral("")), QStringLiteral("string value"));
}

void TestUserDefaults::replacesAValueByOneOfAnotherType()
{
    const TestFolder folder;
    setAndSave(folder, Key, QStringLiteral("text"));
    setAndSave(folder, Key, true);
    QCOMPARE(onDisk(folder), QStringLiteral("true"));
}

void TestUserDefaults::removesAValueForGood()
{
    const TestFolder folder;
    setAndSave(folder, Key, QStringLiteral("text"));
    setAndSave(folder, QStringLiteral("other"), true);
    {
        UserDefaults defaults(folder.path(File));
        defaults.remove(Key);
        QVERIFY(!defaults.contains(Key));
        QVERIFY(!defaults.synchronize());
    }
    QCOMPARE(onDisk(folder), QStringLiteral("nothing"));
    QCOMPARE(onDisk(folder, QStringLiteral("other")), QStringLiteral("true"));
}

void TestUserDefaults::savesWhatIsUnsavedWhenItGoes()
{
    const TestFolder folder;
    {
        UserDefaults defaults(folder.path(File));
        defaults.set(Key, true);
    }
    QCOMPARE(onDisk(folder), QStringLiteral("true"));
}

void TestUserDefaults::makesAPrivateFileInAPrivateFolder()
{
    const TestFolder folder;
    const mode_t before = umask(0);
    {
        UserDefaults defaults(folder.path(QStringLiteral("new/settings.sqlite")));
        defaults.set(Key, QStringLiteral("secret"));
    }
    umask(before);
    QCOMPARE(modeOf(folder.path(QStringLiteral("new"))), 0700U);
    QCOMPARE(modeOf(folder.path(QStringLiteral("new/settings.sqlite"))), 0600U);
    QCOMPARE(folder.tree().size(), 2);
}

void TestUserDefaults::leavesTheModeOfAFolderThatIsThere()
{
    const TestFolder folder;
    folder.setMode(QString(), 0755);
    setAndSave(folder, Key, true);
    QCOMPARE(modeOf(folder.path()), 0755U);
}

void TestUserDefaults::takesTheRightsOfOthersFromAnOldFile()
{
    const TestFolder folder;
    setAndSave(folder, Key, true);
    folder.setMode(File, 0666);
    setAndSave(folder, Key, false);
    QCOMPARE(modeOf(folder.path(File)), 0600U);
}

void TestUserDefaults::keepsTheOldFileWhenTheDiskIsFullAndSavesLater()
{
    const TestFolder folder;
    setAndSave(folder, Key, QStringLiteral("old"));
    const auto before = folder.read(File);
    UserDefaults defaults(folder.path(File));
    defaults.set(Key, QStringLiteral("new"));
    defaults.set(QStringLiteral("large"), QByteArray(1'000'000, 'x'));
    {
        const LogCapture log;
        const FileSizeLimit limit(20'000);
        const auto error = defaults.synchronize();
        QVERIFY(error && error->localizedDescription.contains(folder.path(File)));
        QCOMPARE(log.lines().size(), 1);
    }
    QCOMPARE(describe(defaults, Key), QStringLiteral("string new"));
    QCOMPARE(onDisk(folder), QStringLiteral("string old"));
    QVERIFY(folder.read(File) == before);

    QVERIFY(!defaults.synchronize());
    QCOMPARE(onDisk(folder), QStringLiteral("string new"));
    QCOMPARE(UserDefaults(folder.path(File)).data(QStringLiteral("large")),
             QByteArray(1'000'000, 'x'));
}

void TestUserDefaults::keepsChangesForLaterWhenTheFolderCannotBeWritten()
{
    const TestFolder folder;
    folder.write(QStringLiteral("folder"), "a file in its place");
    UserDefaults defaults(folder.path(QStringLiteral("folder/settings.sqlite")));
    defaults.set(Key, true);
    {
        const LogCapture log;
        QVERIFY(defaults.synchronize());
        QVERIFY(defaults.synchronize());
        QCOMPARE(log.lines().size(), 2);
    }
    QVERIFY(QFile::remove(folder.path(QStringLiteral("folder"))));
    QVERIFY(!defaults.synchronize());
    QCOMPARE(describe(UserDefaults(folder.path(QStringLiteral("folder/settings.sqlite"))), Key),
             QStringLiteral("true"));
}

void TestUserDefaults::prefersANewerChangeToOneThatCouldNotBeSaved()
{
    const TestFolder folder;
    folder.write(QStringLiteral("folder"), "a file in its place");
    UserDefaults defaults(folder.path(QStringLiteral("folder/settings.sqlite")));
    defaults.set(Key, QStringLiteral("older"));
    // The failure is logged before the change is put back.
    SystemLog::setObserver(
        [&defaults](const QString &) { defaults.set(Key, QStringLiteral("newer")); });
    QVERIFY(defaults.synchronize());
    SystemLog::setObserver({});
    QVERIFY(QFile::remove(folder.path(QStringLiteral("folder"))));
    QVERIFY(!defaults.synchronize());
    QCOMPARE(describe(UserDefaults(folder.path(QStringLiteral("folder/settings.sqlite"))), Key),
             QStringLiteral("string newer"));
}

void TestUserDefaults::keepsAWholeEarlierStateWhenKilledInASave()
{
    constexpr int Entries = 2000;
    const auto keyOf = [](int number) { return QStringLiteral("key %1").arg(number); };
    if (FatalCheck::isChild()) {
        UserDefaults defaults(qEnvironmentVariable(ChildFolder) + QLatin1Char('/') + File);
        for (int i = 0; i < 2 * Entries; ++i)
            defaults.set(keyOf(i), QStringLiteral("new"));
        // Beyond the old pages, so that some of them are written when it ends the process.
        const FileSizeLimit limit(
            rlim_t(QFileInfo(qEnvironmentVariable(ChildFolder) + QLatin1Char('/') + File).size()));
        std::signal(SIGXFSZ, SIG_DFL);
        defaults.synchronize();
        return;
    }
    const TestFolder folder;
    {
        UserDefaults defaults(folder.path(File));
        for (int i = 0; i < Entries; ++i)
            defaults.set(keyOf(i), QStringLiteral("old"));
    }
    qputenv(ChildFolder, folder.path().toUtf8());
    QVERIFY(FatalCheck::runChild("UserDefaults").hasCrashed);
    const LogCapture log;
    const UserDefaults defaults(folder.path(File));
    int old = 0;
    int others = 0;
    for (int i = 0; i < 2 * Entries; ++i) {
        old += defaults.string(keyOf(i)) == QStringLiteral("old");
        others += defaults.string(keyOf(i)) == QStringLiteral("new");
    }
    QCOMPARE(old, Entries);
    QCOMPARE(others, 0);
    QCOMPARE(log.lines(), QStringList());
}

void TestUserDefaults::takesTurnsWithAnotherLauncherAtTheSameFile()
{
    const TestFolder folder;
    UserDefaults first(folder.path(File));
    UserDefaults second(folder.path(File));
    first.set(QStringLiteral("first"), true);
    second.set(QStringLiteral("second"), true);
    QVERIFY(!first.synchronize());
    QVERIFY(!second.synchronize());
    QCOMPARE(onDisk(folder, QStringLiteral("first")), QStringLiteral("true"));
    QCOMPARE(onDisk(folder, QStringLiteral("second")), QStringLiteral("true"));
}

void TestUserDefaults::takesChangesAndSavesFromManyThreads()
{
    constexpr int Threads = 4;
    constexpr int Entries = 200;
    const TestFolder folder;
    std::atomic<int> failures = 0;
    std::atomic<int> misread = 0;
    {
        UserDefaults defaults(folder.path(File));
        std::vector<std::thread> threads;
        for (int number = 0; number < Threads; ++number) {
            threads.emplace_back([&, number] {
                for (int i = 0; i < Entries; ++i) {
                    const QString key = QStringLiteral("%1/%2").arg(number).arg(i);
                    defaults.set(key, key);
                    if (i % 2 == 1)
                        defaults.remove(QStringLiteral("%1/%2").arg(number).arg(i - 1));
                    misread += defaults.string(key) != key;
                    if (i % 20 == 0)
                        failures += defaults.synchronize().has_value();
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
    }
    QCOMPARE(failures.load(), 0);
    QCOMPARE(misread.load(), 0);
    const UserDefaults defaults(folder.path(File));
    int wrong = 0;
    for (int number = 0; number < Threads; ++number) {
        for (int i = 0; i < Entries; ++i) {
            const QString key = QStringLiteral("%1/%2").arg(number).arg(i);
            wrong += i % 2 == 1 ? defaults.string(key) != key : defaults.contains(key);
        }
    }
    QCOMPARE(wrong, 0);
}

void TestUserDefaults::keepsManyEntries()
{
    constexpr int Entries = 100'000;
    const auto keyOf = [](int number) { return QStringLiteral("lastValidmaps/%1").arg(number); };
    const TestFolder folder;
    {
        UserDefaults defaults(folder.path(File));
        for (int i = 0; i < Entries; ++i)
            defaults.set(keyOf(i), dateOf(i));
        QVERIFY(!defaults.synchronize());
    }
    const UserDefaults defaults(folder.path(File));
    int right = 0;
    for (int i = 0; i < Entries; ++i)
        right += defaults.date(keyOf(i)) == dateOf(i);
    QCOMPARE(right, Entries);
}

QUELLMOOR_TEST(TestUserDefaults, "UserDefaults")
#include "tst_UserDefaults.moc"
