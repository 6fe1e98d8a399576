// Any bytes in the place of the settings' file.
#include "Target.h"
#include "TestFolder.h"
#include "platform/UserDefaults.h"

namespace {

const auto Name = QStringLiteral("settings.sqlite");
const auto Key = QStringLiteral("prevUser");
const auto Other = QStringLiteral("lastValidHash/mac/a.txt.bz2");

} // namespace

void prepareFuzzTarget() {}

void fuzzTarget(const QByteArray &bytes)
{
    const TestFolder folder;
    folder.write(Name, bytes);
    std::optional<QString> other;
    {
        UserDefaults defaults(folder.path(Name));
        other = defaults.string(Other);
        promise(!(other && defaults.date(Other)), "a value has one type");
        defaults.set(Key, QStringLiteral("wren"));
        promise(!defaults.synchronize(), "settings can be saved whatever was there");
    }
    const UserDefaults again(folder.path(Name));
    promise(again.string(Key) == QStringLiteral("wren"), "what was saved is there the next time");
    promise(again.string(Other) == other, "what could be read is kept");
}
