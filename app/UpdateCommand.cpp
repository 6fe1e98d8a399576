#include "app/UpdateCommand.h"

#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "controller/Manifest.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"
#include "platform/FileSystem.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"

#include <unistd.h>

#include <cstdio>

namespace {

constexpr int MostRoundsWithoutProgress = 3;
constexpr qint64 MillisecondsBetweenLines = 100;

bool isTerminal()
{
    static const bool result = isatty(STDOUT_FILENO) == 1;
    return result;
}

void tell(const QString &text)
{
    std::fputs(qUtf8Printable(text), stdout);
    std::fflush(stdout);
}

} // namespace

UpdateCommand::UpdateCommand(const CommandLine &commandLine, const Configuration &configuration,
                             HttpClient &httpClient, UserDefaults &userDefaults)
    : m_commandLine(commandLine),
      m_configuration(configuration),
      m_httpClient(httpClient),
      m_userDefaults(userDefaults)
{
}

int UpdateCommand::run()
{
    m_clock.start();
    const QString url = m_configuration.manifestUrl(m_commandLine.environment);
    const Manifest::Fetched manifest = Manifest::fetch(m_httpClient, url);
    if (manifest.outcome != Manifest::Fetched::Outcome::Parsed) {
        ErrorHandler::log(QStringLiteral("No manifest: %1")
                              .arg(manifest.error ? manifest.error->localizedDescription : url));
        return NoManifest;
    }
    m_files = manifest.json[QStringLiteral("files")].toObject();

    FileCheck::Result result = check();
    if (m_commandLine.action == CommandLine::Action::Update)
        result = updateUntilValid(result);
    m_patcher->setDelegate(nullptr); // ends the circle of references
    tellSummary(result);
    const bool isAsPublished = result.invalidCount == 0 && result.refusedCount == 0;
    return isAsPublished ? AllValid : SomeInvalid;
}

FileCheck::Result UpdateCommand::check()
{
    const auto patcher = std::make_shared<VARNOPatcher>(m_httpClient);
    patcher->setDelegate(shared_from_this());
    {
        const std::lock_guard lock(m_mutex);
        m_patcher = patcher;
    }
    const auto showCount = [this](qint64 checked, qint64 total) {
        const bool isLast = checked == total;
        if (isTimeToShow(isLast))
            showProgress(QStringLiteral("Checked %1 of %2 files").arg(checked).arg(total), isLast);
    };
    constexpr bool disablePatching = true;
    return FileCheck(m_configuration, m_userDefaults)
        .run(m_files, m_commandLine.environment, disablePatching, *patcher, showCount);
}

FileCheck::Result UpdateCommand::updateUntilValid(FileCheck::Result result)
{
    int roundsWithoutProgress = 0;
    while (result.invalidCount > 0 && roundsWithoutProgress < MostRoundsWithoutProgress) {
        runEngine();
        const qint64 before = result.invalidCount;
        result = check();
        roundsWithoutProgress = result.invalidCount < before ? 0 : roundsWithoutProgress + 1;
    }
    return result;
}

void UpdateCommand::runEngine()
{
    std::unique_lock lock(m_mutex);
    m_isRunOver = false;
    m_lastFile = 0;
    DispatchQueue::main()->async([patcher = m_patcher] { patcher->start(); });
    m_runIsOver.wait(lock, [this] { return m_isRunOver; });
    m_megaBytes += std::exchange(m_megaBytesOfFile, 0);
}

void UpdateCommand::patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize,
                                                   double speed, qint64 currentFile,
                                                   const QString &filename, qint64 totalFiles)
{
    const std::lock_guard lock(m_mutex);
    const bool isNewFile = std::exchange(m_lastFile, currentFile) != currentFile;
    if (isNewFile)
        m_megaBytes += m_megaBytesOfFile;
    m_megaBytesOfFile = megaByteCount;
    constexpr bool isLast = false;
    const bool isShown = isTimeToShow(isLast);
    if (!isShown && (isTerminal() || !isNewFile))
        return;
    const QString head = QStringLiteral("Updating file %1 of %2: %3")
                             .arg(currentFile)
                             .arg(totalFiles)
                             .arg(SystemLog::onOneLine(filename)); // it comes from outside
    if (isShown)
        showProgress(head + QStringLiteral(" [%1/%2 MB @ %3 MB/s]")
                                .arg(megaByteCount, 0, 'f', 1)
                                .arg(qMax(expectedSize, 0.0), 0, 'f', 1)
                                .arg(speed, 0, 'f', 1),
                     isLast);
    else
        tell(head + QLatin1Char('\n'));
}

void UpdateCommand::patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                                      const QString &filename)
{
    const std::lock_guard lock(m_mutex);
    const bool isLast = currentFile == totalFiles;
    if (isTimeToShow(isLast))
        showProgress(QStringLiteral("Writing file %1 of %2: %3")
                         .arg(currentFile)
                         .arg(totalFiles)
                         .arg(SystemLog::onOneLine(filename)),
                     isLast);
    if (!m_patcher->isRunOver())
        return;
    if (!std::exchange(m_isRunOver, true))
        m_writtenFiles += m_patcher->writeCount();
    m_runIsOver.notify_all();
}

// The report of the last write follows and ends the run.
void UpdateCommand::patcherDidFinish() {}

// Asked before a line is put together: pieces and files come much faster than lines.
bool UpdateCommand::isTimeToShow(bool isLast)
{
    if (!isTerminal())
        return false;
    const qint64 now = m_clock.elapsed();
    if (!isLast && now - m_lastShown < MillisecondsBetweenLines)
        return false;
    m_lastShown = now;
    return true;
}

void UpdateCommand::showProgress(const QString &line, bool isLast)
{
    m_isLineOpen = !isLast;
    tell(QStringLiteral("\r\x1b[K") + line + (isLast ? QStringLiteral("\n") : QString()));
}

void UpdateCommand::tellSummary(const FileCheck::Result &result)
{
    if (std::exchange(m_isLineOpen, false))
        tell(QStringLiteral("\n"));
    const qint64 valid = result.checkedCount - result.invalidCount;
    const double seconds = double(m_clock.elapsed()) / 1000;
    QString text = QStringLiteral("%1 of %2 files valid (%3 without reading them) in %4\n")
                       .arg(valid)
                       .arg(result.checkedCount)
                       .arg(result.trustedCount)
                       .arg(m_configuration.gameFolder());
    if (result.refusedCount > 0)
        text += QStringLiteral("%1 of the manifest's files left out: they would not lie in the "
                               "game folder\n")
                    .arg(result.refusedCount);
    if (m_writtenFiles > 0)
        text += QStringLiteral("%1 files fetched, %2 MB in %3 s, %4 MB/s\n")
                    .arg(m_writtenFiles)
                    .arg(m_megaBytes, 0, 'f', 1)
                    .arg(seconds, 0, 'f', 1)
                    .arg(seconds > 0 ? m_megaBytes / seconds : 0, 0, 'f', 1);
    tell(text);
}
