#include "platform/linux/SettingsDatabase.h"

#include "app/ErrorHandler.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <variant>

namespace SettingsDatabase {

namespace {

using Value = UserDefaults::Value;

enum Type { String = 0, DateType = 1, Boolean = 2, Data = 3 };

// The last file set aside takes the place of the one before when there are so many.
constexpr int MostSetAside = 9;

const auto Table =
    QStringLiteral("defaults (key TEXT PRIMARY KEY, type INTEGER NOT NULL, value) WITHOUT ROWID");

bool isDamage(const QSqlError &error)
{
    constexpr int Unreadable = 1; // what we ask is right, so it is the schema
    constexpr int NoMemory = 7;   // so it calls a length in the file that no memory has room for,
    constexpr int TooLong = 18;   // and one far beyond any value of ours
    constexpr int FormatForReadingOnly = 8;
    constexpr int Corrupt = 11;
    constexpr int NotADatabase = 26;
    // Variants of "read only" speak of the folder or of another process.
    const int code = error.nativeErrorCode().toInt();
    const int kind = code & 0xff;
    return code == FormatForReadingOnly || kind == Unreadable || kind == NoMemory ||
           kind == TooLong || kind == Corrupt || kind == NotADatabase;
}

bool isLocked(const QSqlError &error)
{
    constexpr int Busy = 5;
    return (error.nativeErrorCode().toInt() & 0xff) == Busy;
}

// A connection of Qt's belongs to one thread; this one lives for one load or save.
class Connection
{
public:
    Connection(const QString &path, std::chrono::milliseconds patience)
        : m_name(QStringLiteral("settings-%1").arg(++s_count)),
          m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name))
    {
        m_database.setDatabaseName(path);
        m_database.setConnectOptions(
            QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(patience.count()));
        m_isOpen = m_database.open() || fail(m_database.lastError());
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection()
    {
        m_database.close();
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
    }

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] QSqlQuery makeQuery() const { return QSqlQuery(m_database); }
    [[nodiscard]] const QSqlError &lastError() const { return m_lastError; }
    // Whether the file is not what a save leaves behind, rather than out of reach or locked.
    [[nodiscard]] bool isDamaged() const { return m_isUnsound || isDamage(m_lastError); }

    bool execute(const QString &statement)
    {
        QSqlQuery query(m_database);
        return query.exec(statement) || fail(query.lastError());
    }
    bool execute(QSqlQuery &query) { return query.exec() || fail(query.lastError()); }
    bool prepare(QSqlQuery &query, const QString &statement)
    {
        return query.prepare(statement) || fail(query.lastError());
    }
    bool fail(const QSqlError &error)
    {
        m_lastError = error;
        return false;
    }

    // Nothing when it cannot be asked; fails for a table that no save has made, since what such a
    // table does with values is its own business.
    std::optional<bool> hasTable()
    {
        QSqlQuery query(m_database);
        if (!query.exec(QStringLiteral("SELECT sql FROM sqlite_master WHERE tbl_name='defaults'")))
            return failed(query.lastError());
        QStringList found;
        while (query.next())
            found += query.value(0).toString();
        if (query.lastError().isValid())
            return failed(query.lastError());
        if (found.isEmpty() || found == QStringList(QStringLiteral("CREATE TABLE ") + Table))
            return !found.isEmpty();
        return unsound(QStringLiteral("its table is another"));
    }

    // Whether the file holds together. A flipped bit in a key, for one, shows nowhere else: the
    // rows are then out of order, and a value saved later would stand beside the old one.
    bool isSound()
    {
        QSqlQuery query(m_database);
        if (!query.exec(QStringLiteral("PRAGMA integrity_check(1)")) || !query.next())
            return fail(query.lastError());
        const QString verdict = query.value(0).toString();
        if (verdict == QStringLiteral("ok"))
            return true;
        unsound(verdict);
        return false;
    }

private:
    std::nullopt_t failed(const QSqlError &error)
    {
        fail(error);
        return std::nullopt;
    }

    std::nullopt_t unsound(const QString &why)
    {
        m_isUnsound = true;
        return failed(QSqlError(why));
    }

    static inline std::atomic<int> s_count = 0;

    const QString m_name;
    QSqlDatabase m_database;
    QSqlError m_lastError;
    bool m_isOpen = false;
    bool m_isUnsound = false;
};

struct Column
{
    Type type;
    QVariant value;
};

Column toColumn(const Value &value)
{
    if (const auto *string = std::get_if<QString>(&value))
        return {String, *string};
    if (const auto *date = std::get_if<Date>(&value))
        return {DateType, qint64(date->time_since_epoch().count())};
    if (const auto *boolean = std::get_if<bool>(&value))
        return {Boolean, int(*boolean)};
    return {Data, std::get<QByteArray>(value)};
}

std::optional<Value> fromColumn(int type, const QVariant &value)
{
    switch (type) {
    case String:
        return value.toString();
    case DateType:
        return Date(std::chrono::nanoseconds(value.toLongLong()));
    case Boolean:
        return value.toBool();
    case Data:
        return value.toByteArray();
    default:
        return std::nullopt;
    }
}

std::optional<Values> read(Connection &connection)
{
    const auto hasTable = connection.isSound() ? connection.hasTable() : std::nullopt;
    if (!hasTable)
        return std::nullopt;
    if (!*hasTable)
        return Values();
    QSqlQuery query = connection.makeQuery();
    query.setForwardOnly(true);
    if (!connection.prepare(query, QStringLiteral("SELECT key, type, value FROM defaults")) ||
        !connection.execute(query))
        return std::nullopt;
    Values values;
    while (query.next()) {
        const QVariant key = query.value(0);
        const auto value = fromColumn(query.value(1).toInt(), query.value(2));
        // The same letters as a blob would be another row than the one that a save replaces.
        if (value && key.typeId() == QMetaType::QString)
            values.insert(key.toString(), *value);
    }
    if (query.lastError().isValid() && !connection.fail(query.lastError()))
        return std::nullopt;
    return values;
}

bool write(Connection &connection, const Changes &changes)
{
    const auto hasTable = connection.hasTable();
    if (!hasTable || (!*hasTable && !connection.execute(QStringLiteral("CREATE TABLE ") + Table)))
        return false;
    QSqlQuery insert = connection.makeQuery();
    QSqlQuery remove = connection.makeQuery();
    if (!connection.prepare(insert,
                            QStringLiteral("INSERT OR REPLACE INTO defaults VALUES (?, ?, ?)")) ||
        !connection.prepare(remove, QStringLiteral("DELETE FROM defaults WHERE key = ?")))
        return false;
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        QSqlQuery &query = change.value() ? insert : remove;
        // A null text would become an SQL NULL, which is no key.
        query.bindValue(0, change.key().isNull() ? QStringLiteral("") : change.key());
        if (change.value()) {
            const Column column = toColumn(*change.value());
            query.bindValue(1, int(column.type));
            query.bindValue(2, column.value);
        }
        if (!connection.execute(query))
            return false;
    }
    return true;
}

// SQLite makes its files, and so the password's, readable for all that the umask allows. The error
// number, or 0.
int makePrivateFile(const QString &path)
{
    const QDir folder = QFileInfo(path).dir();
    if (!folder.exists()) {
        if (const auto error = FileSystem::createDirectory(folder.path()))
            return error->code;
        if (chmod(QFile::encodeName(folder.path()).constData(), S_IRWXU) != 0)
            return errno;
    }
    const int file =
        open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return errno;
    const int number = fchmod(file, S_IRUSR | S_IWUSR) == 0 ? 0 : errno;
    close(file);
    return number;
}

// Whether the disk gives out every byte, whatever these mean. Reads as SQLite does.
bool canBeRead(const QString &path)
{
    const int file = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    std::array<char, 4096> page{};
    off_t at = 0;
    ssize_t count = 0;
    while ((count = pread(file, page.data(), page.size(), at)) > 0)
        at += count;
    close(file);
    return count == 0;
}

// Keeps a damaged file, which may hold the player's stored account, out of the way: as ".bad", or
// with a number behind it when that is taken. SQLite calls it damage when the disk fails, too; then
// the file stays.
void setAside(const QString &path)
{
    if (!canBeRead(path))
        return;
    QString aside = path + QStringLiteral(".bad");
    for (int number = 2; number <= MostSetAside && FileSystem::exists(aside); ++number)
        aside = QStringLiteral("%1.bad.%2").arg(path).arg(number);
    const QByteArray from = QFile::encodeName(path);
    const QByteArray to = QFile::encodeName(aside);
    if (chmod(from.constData(), S_IRUSR | S_IWUSR) != 0 ||
        std::rename(from.constData(), to.constData()) != 0)
        ErrorHandler::log(QStringLiteral("Cannot set %1 aside: %2").arg(path, qt_error_string()));
}

QString describe(const Connection &connection)
{
    return connection.lastError().text() +
           (connection.isDamaged() ? QStringLiteral("; it is set aside") : QString());
}

} // namespace

namespace {

struct Failure
{
    Error error;
    bool isDamage = false;
    bool isLock = false;
};

std::variant<Values, Failure> tryLoading(const QString &path, std::chrono::milliseconds patience)
{
    Connection connection(path, patience);
    if (connection.isOpen()) {
        if (auto values = read(connection))
            return std::move(*values);
    }
    return Failure{
        {QStringLiteral("Cannot read the settings in %1: %2").arg(path, describe(connection)),
         connection.lastError().nativeErrorCode().toInt()},
        connection.isDamaged(),
        isLocked(connection.lastError())};
}

std::optional<Failure> trySaving(const QString &path, const Changes &changes)
{
    const auto text = QStringLiteral("Cannot save the settings in %1: %2");
    if (const int number = makePrivateFile(path))
        return Failure{{text.arg(path, qt_error_string(number)), number}};
    Connection connection(path, LongPatience);
    // Statements, since Qt's own functions forget which error it was. The lock for writing comes
    // first: one that is only asked for after reading is refused at once instead of waited for.
    if (connection.isOpen() && connection.execute(QStringLiteral("BEGIN IMMEDIATE")) &&
        write(connection, changes) && connection.execute(QStringLiteral("COMMIT")))
        return std::nullopt;
    return Failure{
        {text.arg(path, describe(connection)), connection.lastError().nativeErrorCode().toInt()},
        connection.isDamaged()};
}

} // namespace

// What seems to be damage is looked at twice, as a disk may fail for a moment.

std::optional<Values> load(const QString &path, std::chrono::milliseconds patience)
{
    if (!QFileInfo::exists(path))
        return Values();
    auto loaded = tryLoading(path, patience);
    if (const auto *failure = std::get_if<Failure>(&loaded); failure && failure->isDamage)
        loaded = tryLoading(path, patience);
    if (auto *values = std::get_if<Values>(&loaded))
        return std::move(*values);
    const auto &failure = std::get<Failure>(loaded);
    if (failure.isLock)
        return std::nullopt;
    ErrorHandler::log(failure.error);
    if (failure.isDamage)
        setAside(path);
    return Values();
}

std::optional<Error> save(const QString &path, const Changes &changes, const Values &all)
{
    auto failure = trySaving(path, changes);
    if (failure && failure->isDamage)
        failure = trySaving(path, changes);
    if (failure && failure->isDamage) {
        ErrorHandler::log(failure->error);
        setAside(path);
        Changes everything;
        for (auto value = all.cbegin(); value != all.cend(); ++value)
            everything.insert(value.key(), value.value());
        failure = trySaving(path, everything);
    }
    return failure ? std::optional(failure->error) : std::nullopt;
}

} // namespace SettingsDatabase
