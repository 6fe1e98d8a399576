#include "account/KeychainItem.h"

#include "account/KeyedArchive.h"
#include "app/ErrorHandler.h"

namespace {

const auto ClassName = QStringLiteral("KeychainItem");
const auto UsernameKey = QStringLiteral("USER");
const auto PasswordKey = QStringLiteral("PASS");

} // namespace

KeychainItem::KeychainItem(QString username, QString password)
    : m_username(std::move(username)), m_password(std::move(password))
{
}

std::optional<KeychainItem> KeychainItem::initWithCoder(const KeyedArchive &coder)
{
    const auto username = coder.decodeObjectForKey(UsernameKey);
    const auto password = coder.decodeObjectForKey(PasswordKey);
    if (!username || !password)
        return std::nullopt;
    return KeychainItem(*username, *password);
}

void KeychainItem::encodeWithCoder(KeyedArchive &coder) const
{
    coder.encodeObject(m_username, UsernameKey);
    coder.encodeObject(m_password, PasswordKey);
}

QByteArray KeychainItem::archivedData() const
{
    KeyedArchive archive(ClassName);
    encodeWithCoder(archive);
    return archive.archivedData();
}

std::optional<KeychainItem> KeychainItem::unarchive(const QByteArray &data)
{
    std::optional<KeychainItem> item;
    if (const auto archive = KeyedArchive::unarchive(data, ClassName))
        item = initWithCoder(*archive);
    if (!item)
        ErrorHandler::log(QStringLiteral("The stored credentials cannot be read."));
    return item;
}

void KeychainItem::eraseData()
{
    m_username = QLatin1String("");
    m_password = QLatin1String("");
}
