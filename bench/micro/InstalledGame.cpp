#include "InstalledGame.h"

#include "RefusingHttpClient.h"
#include "Workload.h"
#include "controller/FileCheck.h"
#include "model/SHA256.h"
#include "patcher/VARNOPatcher.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>

#include <map>
#include <memory>

namespace {

constexpr qint64 FilesAFolder = 250;
constexpr qsizetype ShortHashLength = 7;

FileCheck::Result runCheck(const InstalledGame &game, UserDefaults &settings)
{
    RefusingHttpClient noNetwork;
    const auto engine = std::make_shared<VARNOPatcher>(noNetwork);
    constexpr bool disablePatching = true;
    return FileCheck(game.configuration(), settings)
        .run(game.files(), std::nullopt, disablePatching, *engine);
}

} // namespace

const InstalledGame &InstalledGame::withFiles(qint64 count)
{
    static std::map<qint64, std::unique_ptr<InstalledGame>> games;
    auto &game = games[count];
    if (!game)
        game.reset(new InstalledGame(count));
    return *game;
}

InstalledGame::InstalledGame(qint64 count)
{
    // As deep as a player's ~/.local/share.
    const QString home = Workload::scratchFolder() + QStringLiteral("/home/player%1").arg(count);
    m_configuration.downloadHost = QStringLiteral("download.localhost:8443");
    m_configuration.dataFolder = home + QStringLiteral("/.local/share/Quellmoor");
    m_settingsFile = home + QStringLiteral("/.config/settings.sqlite");
    m_paths.reserve(size_t(count));
    for (qint64 number = 0; number < count; ++number) {
        const auto folder = QStringLiteral("data/region_%1").arg(number / FilesAFolder);
        const auto key = folder + QStringLiteral("/archive_%1.bin").arg(number);
        const QString path = m_configuration.gameFolder() + QLatin1Char('/') + key;
        const QByteArray contents = key.toUtf8();
        QFile file(path);
        if (number % FilesAFolder == 0)
            QDir().mkpath(m_configuration.gameFolder() + QLatin1Char('/') + folder);
        if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
            qFatal("cannot write %s", qUtf8Printable(path));
        m_files.insert(key,
                       QJsonObject{{QStringLiteral("path"), folder},
                                   {QStringLiteral("hash"), SHA256(contents).left(ShortHashLength)},
                                   {QStringLiteral("patches"), QJsonArray()}});
        m_paths.push_back(QFile::encodeName(path).toStdString());
    }
    UserDefaults settings(m_settingsFile);
    runCheck(*this, settings);
}

void InstalledGame::check(UserDefaults &settings) const
{
    const FileCheck::Result result = runCheck(*this, settings);
    if (result.trustedCount != m_files.size())
        qFatal("%lld of %lld files were trusted", (long long)result.trustedCount,
               (long long)m_files.size());
}
