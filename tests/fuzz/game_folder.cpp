// Keys of a hostile manifest, one a line, in a game folder full of links.
#include "Target.h"
#include "TestFolder.h"
#include "model/GameFolder.h"

#include <QFile>

#include <filesystem>

namespace {

struct World
{
    World()
    {
        folder.write(QStringLiteral("outside/kept"), "kept");
        folder.write(QStringLiteral("Game/a"), "a");
        folder.write(QStringLiteral("Game/b/c/d"), "d");
        folder.link(folder.path(QStringLiteral("outside")), QStringLiteral("Game/o"));
        folder.link(QStringLiteral("../.."), QStringLiteral("Game/b/u"));
        folder.link(QStringLiteral("b"), QStringLiteral("Game/i"));
        folder.link(QStringLiteral("."), QStringLiteral("Game/s"));
        folder.link(QStringLiteral("r"), QStringLiteral("Game/r"));
        folder.link(QStringLiteral("x"), QStringLiteral("Game/n"));
        folder.link(QStringLiteral("../Game2"), QStringLiteral("Game/p"));
        folder.write(QStringLiteral("Game2/kept"), "kept");
        real = std::filesystem::canonical(gameFolder().toStdString());
    }

    [[nodiscard]] QString gameFolder() const { return folder.path(QStringLiteral("Game")); }

    TestFolder folder;
    std::filesystem::path real;
};

World &world()
{
    static World instance;
    return instance;
}

// Where a file with that path would come to lie: the folders that are there, links followed.
bool liesInside(const std::filesystem::path &path)
{
    std::filesystem::path folder = path.parent_path();
    std::error_code error;
    while (!std::filesystem::exists(folder, error))
        folder = folder.parent_path();
    const std::filesystem::path there = std::filesystem::canonical(folder);
    const auto ends =
        std::mismatch(world().real.begin(), world().real.end(), there.begin(), there.end());
    return ends.first == world().real.end();
}

} // namespace

void prepareFuzzTarget() { world(); }

void fuzzTarget(const QByteArray &bytes)
{
    GameFolder folder(world().gameFolder());
    for (const QString &key : QString::fromUtf8(bytes).split(u'\n')) {
        const auto path = folder.pathFor(key);
        if (const auto *refusal = std::get_if<GameFolder::Refusal>(&path)) {
            promise(!refusal->reason.isEmpty(), "a refusal says why");
            continue;
        }
        const QString &file = std::get<QString>(path);
        promise(file == world().gameFolder() + u'/' + key, "the path keeps the key as it is");
        promise(liesInside(QFile::encodeName(file).toStdString()), "no key leaves the game folder");
    }
}
