// Any bytes in the place of the stored account.
#include "Target.h"
#include "account/KeyedArchive.h"

namespace {

const auto ClassName = QStringLiteral("KeychainItem");

// What the writer keeps of a text; nobody types a NUL.
QString untilNul(const std::optional<QString> &text)
{
    return text.value_or(QString()).section(QChar(u'\0'), 0, 0);
}

} // namespace

void prepareFuzzTarget() {}

void fuzzTarget(const QByteArray &bytes)
{
    const auto archive = KeyedArchive::unarchive(bytes, ClassName);
    if (!archive)
        return;
    const auto name = archive->decodeObjectForKey(QStringLiteral("USER"));
    const auto secret = archive->decodeObjectForKey(QStringLiteral("PASS"));
    KeyedArchive copy(ClassName);
    copy.encodeObject(name.value_or(QString()), QStringLiteral("USER"));
    copy.encodeObject(secret.value_or(QString()), QStringLiteral("PASS"));
    const auto again = KeyedArchive::unarchive(copy.archivedData(), ClassName);
    promise(again.has_value(), "what was archived can be unarchived");
    promise(again->decodeObjectForKey(QStringLiteral("USER")) == untilNul(name) &&
                again->decodeObjectForKey(QStringLiteral("PASS")) == untilNul(secret),
            "both texts survive");
}
