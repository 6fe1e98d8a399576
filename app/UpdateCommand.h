#pragma once

#include "app/CommandLine.h"
#include "controller/FileCheck.h"
#include "patcher/VARNOPatcherDelegate.h"

#include <QElapsedTimer>

#include <condition_variable>
#include <memory>
#include <mutex>

struct Configuration;
class HttpClient;
class UserDefaults;
class VARNOPatcher;

// The launcher without its window: checks the game folder, and, when asked, runs the engine until
// the folder is identical to the manifest. Tells its progress on standard output. Unlike the
// window, which goes on for ever, it gives up after a few rounds in a row that healed nothing.
class UpdateCommand final : public VARNOPatcherDelegate,
                            public std::enable_shared_from_this<UpdateCommand>
{
public:
    static constexpr int AllValid = 0;
    static constexpr int SomeInvalid = 1;
    static constexpr int NoManifest = 2;

    // The references must outlive the command.
    UpdateCommand(const CommandLine &commandLine, const Configuration &configuration,
                  HttpClient &httpClient, UserDefaults &userDefaults);

    // Does everything and returns the exit code. Waits for the network, so never on the main
    // thread, whose event loop must be running: it carries the transfers.
    int run();

    // VARNOPatcherDelegate
    void patcherUpdateWithMegaByteCount(double megaByteCount, double expectedSize, double speed,
                                        qint64 currentFile, const QString &filename,
                                        qint64 totalFiles) override;
    void patcherWriteUpdateWithCurrentFile(qint64 currentFile, qint64 totalFiles,
                                           const QString &filename) override;
    void patcherDidFinish() override;

private:
    FileCheck::Result check();
    FileCheck::Result updateUntilValid(FileCheck::Result result);
    void runEngine();
    void tellSummary(const FileCheck::Result &result);
    [[nodiscard]] bool isTimeToShow(bool isLast);
    void showProgress(const QString &line, bool isLast);

    const CommandLine m_commandLine;
    const Configuration &m_configuration;
    HttpClient &m_httpClient;
    UserDefaults &m_userDefaults;
    QJsonObject m_files;
    QElapsedTimer m_clock;

    std::mutex m_mutex; // guards everything below
    std::shared_ptr<VARNOPatcher> m_patcher;
    std::condition_variable m_runIsOver;
    bool m_isRunOver = false;
    qint64 m_lastFile = 0;
    double m_megaBytesOfFile = 0;
    double m_megaBytes = 0;
    qint64 m_writtenFiles = 0;
    qint64 m_lastShown = 0;
    bool m_isLineOpen = false;
};
