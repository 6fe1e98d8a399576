// A manifest from a hostile host: every file it lists is checked against a game folder.
#include "controller/Manifest.h"
#include "RefusingHttpClient.h"
#include "Target.h"
#include "TestFolder.h"
#include "app/Configuration.h"
#include "controller/FileCheck.h"
#include "patcher/VARNOPatcher.h"
#include "platform/UserDefaults.h"

namespace {

struct World
{
    World()
    {
        folder.write(QStringLiteral("outside/kept"), "kept");
        folder.write(QStringLiteral("Game/a.txt"), "hello");
        folder.write(QStringLiteral("Game/maps/b c.dat"), "map");
        folder.link(folder.path(QStringLiteral("outside")), QStringLiteral("Game/out"));
        folder.link(QStringLiteral("maps"), QStringLiteral("Game/in"));
        configuration.dataFolder = folder.path();
        configuration.downloadHost = QStringLiteral("download.example:8443");
        tree = folder.tree();
    }

    TestFolder folder;
    TestFolder settingsFolder;
    Configuration configuration;
    UserDefaults defaults{settingsFolder.path(QStringLiteral("settings.sqlite"))};
    RefusingHttpClient network;
    QStringList tree;
};

World &world()
{
    static World instance;
    return instance;
}

void check(const QJsonObject &files, bool disablePatching)
{
    World &w = world();
    const auto engine = std::make_shared<VARNOPatcher>(w.network);
    qint64 reported = 0;
    const FileCheck::Result result =
        FileCheck(w.configuration, w.defaults)
            .run(files, std::nullopt, disablePatching, *engine,
                 [&reported](qint64 checked, qint64 total) {
                     promise(checked <= total, "no more files are checked than there are");
                     reported = checked;
                 });
    promise(result.checkedCount == reported, "each checked file is reported");
    promise(result.checkedCount + result.refusedCount == files.size(),
            "each file is checked or refused");
    promise(result.invalidCount + result.trustedCount <= result.checkedCount,
            "no file is wrong and trusted");
    promise((engine->queuedFileCount() > 0) == (result.invalidCount > 0),
            "what is wrong is enqueued, and only that");
    promise(!disablePatching || engine->queuedFileCount() <= result.invalidCount,
            "each wrong file is enqueued once");
}

} // namespace

void prepareFuzzTarget() { world(); }

void fuzzTarget(const QByteArray &bytes)
{
    const Manifest::Fetched manifest =
        Manifest::parse(bytes, QStringLiteral("https://download.example:8443/mac/patcher.json"));
    promise(manifest.error.has_value() == (manifest.outcome != Manifest::Fetched::Outcome::Parsed),
            "there is an error or a manifest");
    const QJsonObject files = manifest.json[QStringLiteral("files")].toObject();
    check(files, false);
    check(files, true);
    promise(world().network.urls().isEmpty(), "a check asks no host");
    promise(world().folder.tree() == world().tree, "a check changes no file");
}
