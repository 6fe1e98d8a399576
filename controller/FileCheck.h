#pragma once

#include <QJsonObject>
#include <QString>

#include <functional>
#include <optional>

struct Configuration;
class UserDefaults;
class VARNOPatcher;

// Compares the game folder with a manifest and fills an engine with what is wrong. Reads files, so
// never on the main thread; one check at a time.
class FileCheck
{
public:
    struct Result
    {
        qint64 checkedCount = 0;
        qint64 invalidCount = 0;
        // Found valid by their date alone, without being read.
        qint64 trustedCount = 0;
        // Keys that name no file of the game folder; logged, neither checked nor enqueued.
        qint64 refusedCount = 0;
    };
    // Called after each file with the number of files checked so far.
    using Progress = std::function<void(qint64 checkedCount, qint64 totalCount)>;

    // Both must outlive the check.
    FileCheck(const Configuration &configuration, UserDefaults &userDefaults);

    // `files` is the manifest's member "files". Enqueues each file that is not valid: the file
    // itself, or, with patching, the chain of patches that leads to it if there is one. Files are
    // taken one after another in the object's order, which is then the order of the downloads; of
    // the next one to be read the system fetches the beginning meanwhile.
    // Saves the settings once at the end.
    Result run(const QJsonObject &files, const std::optional<QString> &environment,
               bool disablePatching, VARNOPatcher &patcher, const Progress &progress = {}) const;

private:
    const Configuration &m_configuration;
    UserDefaults &m_userDefaults;
};
