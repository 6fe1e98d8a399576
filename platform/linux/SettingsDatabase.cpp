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

#include <atomic>

namespace SettingsDatabase {

namespace {

using Value = UserDefaults::Value;

enum Type { String = 0, DateType = 1, Boolean = 2, Data = 3 };

// A connection of Qt's belongs to one thread; this one lives for one load or save.
class Connection
{
public:
    explicit Connection(const QString &path)
        : m_name(QStringLiteral("settings-%1").arg(++s_count)),
          m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name))
    {
        m_database.setDatabaseName(path);
        m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        m_isOpen = m_database.open() &&
                   execute(QStringLiteral("CREATE TABLE IF NOT EXISTS defaults (key TEXT PRIMARY "
                                          "KEY, type INTEGER NOT NULL, value) WITHOUT ROWID"));
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
    [[nodiscard]] QSqlDatabase &database() { return m_database; }
    [[nodiscard]] const QSqlError &lastError() const { return m_lastError; }

    bool execute(const QString &statement)
    {
        QSqlQuery query(m_database);
        return query.exec(statement) || fail(query.lastError());
    }
    bool execute(QSqlQuery &query) { return query.exec() || fail(query.lastError()); }
    bool fail(const QSqlError &error)
    {
        m_lastError = error;
        return false;
    }

private:
    static inline std::atomic<int> s_count = 0;

    const QString m_name;
    QSqlDatabase m_database;
    QSqlError m_lastError;
    bool m_isOpen = false;
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
    QSqlQuery query(connection.database());
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT key, type, value FROM defaults"));
    if (!connection.execute(query))
        return std::nullopt;
    Values values;
    while (query.next()) {
        if (const auto value = fromColumn(query.value(1).toInt(), query.value(2)))
            values.insert(query.value(0).toString(), *value);
    }
    if (query.lastError().isValid() && !connection.fail(query.lastError()))
        return std::nullopt;
    return values;
}

bool write(Connection &connection, const Changes &changes)
{
    QSqlQuery insert(connection.database());
    insert.prepare(QStringLiteral("INSERT OR REPLACE INTO defaults VALUES (?, ?, ?)"));
    QSqlQuery remove(connection.database());
    remove.prepare(QStringLiteral("DELETE FROM defaults WHERE key = ?"));
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        QSqlQuery &query = change.value() ? insert : remove;
        query.bindValue(0, change.key());
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

// SQLite makes its files, and so the password's, readable for all that the umask allows.
bool makePrivateFile(const QString &path)
{
    const QDir folder = QFileInfo(path).dir();
    if (!folder.exists() && (!QDir().mkpath(folder.path()) ||
                             chmod(QFile::encodeName(folder.path()).constData(), S_IRWXU) != 0))
        return false;
    const int file =
        open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0)
        return false;
    const bool isPrivate = fchmod(file, S_IRUSR | S_IWUSR) == 0;
    close(file);
    return isPrivate;
}

bool isDamage(const QSqlError &error)
{
    constexpr int Corrupt = 11;
    constexpr int NotADatabase = 26;
    const int code = error.nativeErrorCode().toInt() & 0xff;
    return code == Corrupt || code == NotADatabase;
}

Error toError(const QString &path, const QSqlError &error)
{
    return {QStringLiteral("Cannot save the settings in %1: %2").arg(path, error.text()),
            error.nativeErrorCode().toInt()};
}

} // namespace

Values load(const QString &path)
{
    if (!QFileInfo::exists(path))
        return {};
    QSqlError error;
    {
        Connection connection(path);
        if (connection.isOpen()) {
            if (auto values = read(connection))
                return *values;
        }
        error = connection.lastError();
        if (!error.isValid())
            error = connection.database().lastError();
    }
    ErrorHandler::log(QStringLiteral("Cannot read the settings in %1: %2").arg(path, error.text()));
    if (isDamage(error)) {
        const QString aside = path + QStringLiteral(".bad");
        QFile::remove(aside);
        QFile::rename(path, aside);
    }
    return {};
}

std::optional<Error> save(const QString &path, const Changes &changes)
{
    if (!makePrivateFile(path))
        return Error{
            QStringLiteral("Cannot save the settings in %1: %2").arg(path, qt_error_string(errno)),
            errno};
    Connection connection(path);
    if (!connection.isOpen())
        return toError(path, connection.lastError().isValid() ? connection.lastError()
                                                              : connection.database().lastError());
    if (!connection.database().transaction())
        return toError(path, connection.database().lastError());
    if (!write(connection, changes)) {
        connection.database().rollback();
        return toError(path, connection.lastError());
    }
    if (!connection.database().commit()) {
        const QSqlError error = connection.database().lastError();
        connection.database().rollback();
        return toError(path, error);
    }
    return std::nullopt;
}

} // namespace SettingsDatabase
