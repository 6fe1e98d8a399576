#pragma once

#include "platform/FileSystem.h"

#include <QString>

class UserDefaults;

// What earlier checks found, for one check: when each file was last valid, and against which hash.
// Before the first new entry it waits until the game folder's file system has kept everything
// written so far, so that a power cut never leaves an entry for a file that was lost. The entries
// reach the disk with the settings. One thread at a time.
class ValidationCache
{
public:
    static constexpr QLatin1String DateKeyPrefix{"lastValid"};
    static constexpr QLatin1String HashKeyPrefix{"lastValidHash"};

    // The two settings of one file: the prefixes, each with the file's name behind it.
    struct Keys
    {
        QString date;
        QString hash;
    };

    // `folder` lies on the file system of the files checked.
    ValidationCache(UserDefaults &userDefaults, QString folder);

    // Whether the file was valid against that hash when it had exactly that date.
    [[nodiscard]] bool isTrusted(const Keys &keys, const std::optional<Date> &modified,
                                 const std::optional<QString> &hash);
    // Without a date both entries are removed.
    void record(const Keys &keys, const std::optional<Date> &modified, const QString &hash);
    void forget(const Keys &keys);

    // How many files were trusted without being read.
    [[nodiscard]] qint64 trustedCount() const { return m_trustedCount; }

private:
    UserDefaults &m_userDefaults;
    const QString m_folder;
    bool m_isSynchronized = false;
    qint64 m_trustedCount = 0;
};
