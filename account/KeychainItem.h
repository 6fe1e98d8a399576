#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

class KeyedArchive;

// A remembered account: the pair that a login needs, in clear. A plain value.
class KeychainItem
{
public:
    KeychainItem(QString username, QString password);
    // Nothing unless both members are there.
    [[nodiscard]] static std::optional<KeychainItem> initWithCoder(const KeyedArchive &coder);
    void encodeWithCoder(KeyedArchive &coder) const;

    // Neither text may hold a NUL, which ends a text in an archive.
    [[nodiscard]] QByteArray archivedData() const;
    // Nothing, and one line in the log without the data, when they hold no item.
    [[nodiscard]] static std::optional<KeychainItem> unarchive(const QByteArray &data);

    // Sets both to "". What is archived stays.
    void eraseData();

    [[nodiscard]] const QString &username() const { return m_username; }
    [[nodiscard]] const QString &password() const { return m_password; }

private:
    QString m_username;
    QString m_password;
};
