#pragma once

#include "platform/Workspace.h"

#include <QStringList>

#include <mutex>

// Records what the desktop would have been asked for, in order: "url <URL>",
// "file <path> with <application>", "icon <path>". Opens nothing.
class RecordingWorkspace final : public Workspace
{
public:
    bool openURL(const QUrl &url) override
    {
        add(QStringLiteral("url ") + QString::fromLatin1(url.toEncoded()));
        return true;
    }

    bool openFile(const QString &path, const QString &application) override
    {
        add(QStringLiteral("file %1 with %2").arg(path, application));
        return true;
    }

    void setIcon(const QString &path) override { add(QStringLiteral("icon ") + path); }

    [[nodiscard]] QStringList requests() const
    {
        const std::lock_guard lock(m_mutex);
        return m_requests;
    }

private:
    void add(const QString &request)
    {
        const std::lock_guard lock(m_mutex);
        m_requests += request;
    }

    mutable std::mutex m_mutex;
    QStringList m_requests;
};
