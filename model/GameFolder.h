#pragma once

#include <QHash>
#include <QString>

#include <variant>

// Decides which file of the game folder a manifest key names. The manifest comes from outside: a
// key that would lead out of the folder, or that no file in it can have, gets a reason instead of a
// path. Made for one check: what it found out about folders is not asked again. One thread at a
// time.
class GameFolder
{
public:
    struct Refusal
    {
        QString reason;
    };

    // The folder itself may be a link and need not exist.
    explicit GameFolder(QString path);

    [[nodiscard]] const QString &path() const { return m_path; }
    // The absolute path of the file with that key, which keeps the key as it is.
    [[nodiscard]] std::variant<QString, Refusal> pathFor(const QString &key);

private:
    [[nodiscard]] QString reasonAgainstName(const QString &key) const;
    // Whether the folder with that path below ours, if it is there, lies in ours.
    [[nodiscard]] bool isInside(const QString &relativeFolder);

    const QString m_path;
    const QString m_canonicalPath; // empty while the folder does not exist
    QHash<QString, bool> m_isInside;
};
