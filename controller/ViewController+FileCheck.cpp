// The file check and what the engine reports.
#include "app/ErrorHandler.h"
#include "controller/FileCheck.h"
#include "controller/ViewController.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"
#include "ui/LauncherView.h"
#include "ui/VARNOProgressView.h"

bool ViewController::checkFiles(const QJsonObject &files, bool disablePatching)
{
    const std::lock_guard oneAtATime(m_checkMutex);
    const auto engine = std::make_shared<VARNOPatcher>(m_services.httpClient);
    engine->setDelegate(shared_from_this());
    {
        const std::lock_guard lock(m_mutex);
        m_patcher = engine; // the one before is let go, not stopped
    }
    const FileCheck::Result result =
        FileCheck(m_services.configuration, m_services.userDefaults)
            .run(files, currentEnvironment(), disablePatching, *engine);
    return result.invalidCount > 0;
}

void ViewController::patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize,
                                                    double speed, qint64 currentFile,
                                                    const QString &filename, qint64 totalFiles)
{
    m_launcherView.setStatus(QStringLiteral("Updating file %1 of %2...\n%3\n[%4/%5MB @ %6MB/s]")
                                 .arg(QString::number(currentFile), QString::number(totalFiles),
                                      filename, QString::number(megaByteCount, 'f', 1),
                                      QString::number(expectedSize, 'f', 1),
                                      QString::number(speed, 'f', 1)));
    DispatchQueue::main()->async([self = shared_from_this(), megaByteCount, expectedSize] {
        self->m_launcherView.patcherProgressBar()->setValue(megaByteCount / expectedSize);
    });
}

void ViewController::patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                                       const QString &filename)
{
    m_launcherView.setStatus(
        QStringLiteral("Writing file %1 of %2\n%3")
            .arg(QString::number(currentFile), QString::number(totalFiles), filename));
    DispatchQueue::main()->async([self = shared_from_this()] {
        self->m_launcherView.patcherProgressBar()->setValue(0.0);
        self->m_launcherView.swordsmenImage()->setHidden(false);
    });
}

void ViewController::patcherDidFinish()
{
    DispatchQueue::main()->async([self = shared_from_this()] {
        self->m_launcherView.swordsmenImage()->setHidden(false);
        self->m_launcherView.patcherProgressBar()->setValue(0.0);
    });
    m_launcherView.setStatus(QStringLiteral("Checking for updates..."));
    DispatchQueue::global(DispatchQueue::QualityOfService::High)
        ->async([self = shared_from_this()] { self->checkAgain(); });
}

void ViewController::checkAgain()
{
    constexpr bool disablePatching = true;
    if (checkFiles(patcherJson()[QStringLiteral("files")].toObject(), disablePatching)) {
        // The log quoted is that of the engine which the check has just made, as a rule empty.
        const auto engine = patcher();
        ErrorHandler::handle(
            {QStringLiteral("NSInternalInconsistencyException"),
             QStringLiteral("Patcher failed to match the patcher.json hashes. Will retry patching "
                            "without apply_patch. ") +
                 (engine ? engine->logs() : QString())});
        startThePatcher();
        return;
    }
    const auto environment = currentEnvironment();
    m_launcherView.setStatus(
        QStringLiteral("Launching the game%1...")
            .arg(environment ? QStringLiteral("(%1)").arg(*environment) : QString()));
    launchGame();
}
