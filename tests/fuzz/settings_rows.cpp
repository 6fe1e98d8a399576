// A sound database whose rows are not the launcher's: any type of value in any column.
#include "Target.h"
#include "TestFolder.h"
#include "platform/UserDefaults.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

namespace {

const auto Name = QStringLiteral("settings.sqlite");
const auto Key = QStringLiteral("prevUser");

// Takes the bytes from the front; zeros when there are none left.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool isAtEnd() const { return m_at >= m_bytes.size(); }
    uint8_t byte() { return isAtEnd() ? 0 : uint8_t(m_bytes[m_at++]); }
    QByteArray piece()
    {
        const qsizetype length = byte() % 40;
        const QByteArray taken = m_bytes.mid(m_at, length);
        m_at += taken.size();
        return taken;
    }
    qlonglong number()
    {
        const qlonglong digits = byte();
        return digits << byte() % 64;
    }
    QVariant value()
    {
        switch (byte() % 6) {
        case 0:
            return QString::fromUtf8(piece());
        case 1:
            return piece();
        case 2:
            return int(byte()) - 3;
        case 3:
            return number();
        case 4:
            return double(number()) * 1e300;
        default:
            return {};
        }
    }

private:
    const QByteArray m_bytes;
    qsizetype m_at = 0;
};

QString tableOf(uint8_t kind)
{
    switch (kind % 4) {
    case 0:
        return QStringLiteral("CREATE TABLE defaults (key TEXT PRIMARY KEY, type INTEGER NOT NULL, "
                              "value) WITHOUT ROWID");
    case 1:
        return QStringLiteral("CREATE TABLE defaults (key, type, value)");
    case 2:
        return QStringLiteral("CREATE TABLE defaults (value, type, key, more)");
    default:
        return QStringLiteral("CREATE TABLE defaults (a, b, c)");
    }
}

void makeDatabase(const QString &path, Reader &reader)
{
    const auto name = QStringLiteral("hostile");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(path);
        promise(database.open(), "a database can be made");
        QSqlQuery query(database);
        for (const char *quicker :
             {"journal_mode=OFF", "synchronous=OFF", "locking_mode=EXCLUSIVE"})
            query.exec(QStringLiteral("PRAGMA ") + QLatin1String(quicker));
        promise(query.exec(QStringLiteral("BEGIN")), "rows can be written at once");
        promise(query.exec(tableOf(reader.byte())), "its table can be made");
        query.prepare(QStringLiteral("INSERT OR REPLACE INTO defaults VALUES (?, ?, ?)"));
        while (!reader.isAtEnd()) {
            for (int column = 0; column < 3; ++column)
                query.bindValue(column, reader.value());
            query.exec(); // the table may refuse the row
        }
        promise(query.exec(QStringLiteral("COMMIT")), "the rows are kept");
    }
    QSqlDatabase::removeDatabase(name);
}

} // namespace

void prepareFuzzTarget() {}

void fuzzTarget(const QByteArray &bytes)
{
    const TestFolder folder;
    Reader reader(bytes);
    makeDatabase(folder.path(Name), reader);
    const QString other = QString::fromUtf8(bytes.mid(3, 8));
    std::optional<Date> date;
    {
        UserDefaults defaults(folder.path(Name));
        date = other == Key ? std::nullopt : defaults.date(other);
        promise(!(date && defaults.string(other)), "a value has one type");
        defaults.set(Key, QStringLiteral("wren"));
        promise(!defaults.synchronize(), "settings can be saved whatever was there");
    }
    const UserDefaults again(folder.path(Name));
    promise(again.string(Key) == QStringLiteral("wren"), "what was saved is there the next time");
    promise(other == Key || again.date(other) == date, "what could be read is kept");
}
