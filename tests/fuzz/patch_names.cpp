// Names of patches as a hostile manifest lists them, one a line; the first two lines are the hash
// on the disk and the wanted one.
#include "Target.h"
#include "TestFolder.h"
#include "model/PatchSolver.h"
#include "model/VARNOPatchFile.h"
#include "model/VARNOResourceFile.h"
#include "platform/FileSystem.h"

#include <QFileInfo>
#include <QJsonArray>

namespace {

const auto PatchesUrl = QStringLiteral("https://download.example:8443/mac/patches/");

struct World
{
    World()
    {
        folder.write(QStringLiteral("game/a.txt"), "hello");
        qputenv("TMPDIR", folder.path().toLocal8Bit());
        promise(FileSystem::temporaryDirectory().startsWith(folder.path()),
                "patches go to the temporary directory");
        tree = folder.tree();
    }

    TestFolder folder;
    QStringList tree;
};

World &world()
{
    static World instance;
    return instance;
}

void checkRecord(const VARNOPatchFile &patch)
{
    promise(!patch.fromHash().contains(u'_') && !patch.toHash().contains(u'_'),
            "a hash is a piece of the name");
    const QUrl url = patch.downloadURL();
    promise(!url.isValid() || (url.scheme() == QStringLiteral("https") &&
                               url.host() == QStringLiteral("download.example") &&
                               url.port() == 8443 && url.userInfo().isEmpty()),
            "a patch comes from the download host");
    promise(!patch.applyPatchCommand().isNull(), "there is a command line");
}

// Writes the patch and takes it away again.
void checkWriting(VARNOPatchFile &patch)
{
    bool hasFailed = false;
    patch.writeToDisk(QByteArray("patch"),
                      [&hasFailed](const QString &, const std::optional<Error> &error,
                                   const auto &) { hasFailed = error.has_value(); });
    if (!hasFailed) {
        const QFileInfo file(patch.filePath());
        promise(file.isFile() && file.absolutePath() == FileSystem::temporaryDirectory(),
                "a patch is kept in the temporary directory itself");
        promise(QFile::remove(file.filePath()), "it can be removed");
    }
    promise(world().folder.tree() == world().tree, "no other file is touched");
}

void checkChain(const VARNOResourceFile::PatchFiles &patches, const QString &from,
                const QString &to)
{
    const auto chain = PatchSolver().solve(patches, from, to);
    if (chain.isEmpty())
        return;
    promise(chain.first()->fromHash() == from && chain.last()->toHash() == to,
            "a chain leads from the file on the disk to the wanted one");
    for (qsizetype i = 1; i < chain.size(); ++i)
        promise(chain[i]->fromHash() == chain[i - 1]->toHash(),
                "each patch follows the one before");
}

} // namespace

void prepareFuzzTarget() { world(); }

void fuzzTarget(const QByteArray &bytes)
{
    const QStringList lines = QString::fromUtf8(bytes).split(u'\n');
    const VARNOResourceFile file(
        QUrl(QStringLiteral("https://download.example:8443/mac/a.txt.bz2")),
        world().folder.path(QStringLiteral("game/a.txt")), QJsonValue(), nullptr, PatchesUrl);
    const auto patches = file.parsePatchFiles(QJsonArray::fromStringList(lines.mid(2)));
    promise(patches.size() <= lines.size(), "no patch is made up");
    for (const auto &patch : patches)
        checkRecord(*patch);
    if (!patches.isEmpty())
        checkWriting(*patches.first());
    if (lines.size() > 2)
        checkChain(patches, lines[0], lines[1]);
}
