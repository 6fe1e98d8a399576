#pragma once

#include "platform/FileSystem.h"

#include <QTemporaryDir>

// A folder of a test's own, gone with it. Names are relative to it; what cannot be done there ends
// the test process, since then no test could tell anything.
class TestFolder
{
public:
    [[nodiscard]] QString path() const { return m_folder.path(); }
    [[nodiscard]] QString path(const QString &name) const;

    void makeFolder(const QString &name) const;
    // Makes the folders above, too.
    void write(const QString &name, const QByteArray &bytes) const;
    void link(const QString &target, const QString &name) const;
    // Anybody may open it, and whoever reads it waits for ever.
    void makePipe(const QString &name) const;
    void setModified(const QString &name, Date date) const;
    void setMode(const QString &name, unsigned mode) const;

    // Nothing when there is no file; links are followed.
    [[nodiscard]] std::optional<QByteArray> read(const QString &name) const;
    [[nodiscard]] Date modified(const QString &name) const;
    // Everything below, sorted, one entry each: "name=contents", "name -> target" or "name/".
    [[nodiscard]] QStringList tree() const;

private:
    QTemporaryDir m_folder;
};
