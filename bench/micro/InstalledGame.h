#pragma once

#include "app/Configuration.h"

#include <QJsonObject>

#include <string>
#include <vector>

class UserDefaults;

// A game of many small files on disk that an earlier check has found valid.
class InstalledGame
{
public:
    // Made once a size in a process.
    [[nodiscard]] static const InstalledGame &withFiles(qint64 count);

    [[nodiscard]] const Configuration &configuration() const { return m_configuration; }
    [[nodiscard]] const QJsonObject &files() const { return m_files; }
    // Absolute, for plain system calls.
    [[nodiscard]] const std::vector<std::string> &paths() const { return m_paths; }
    // Where the results of the earlier check are kept.
    [[nodiscard]] const QString &settingsFile() const { return m_settingsFile; }

    // One check; ends the process unless every file was trusted without being read.
    void check(UserDefaults &settings) const;

private:
    explicit InstalledGame(qint64 count);

    Configuration m_configuration;
    QJsonObject m_files;
    std::vector<std::string> m_paths;
    QString m_settingsFile;
};
