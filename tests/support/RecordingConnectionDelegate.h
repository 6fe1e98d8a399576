#pragma once

#include "platform/HttpConnection.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <mutex>
#include <thread>

// Writes down the messages of one connection.
class RecordingConnectionDelegate final : public HttpConnectionDelegate
{
public:
    void connectionDidReceiveResponse(const HttpResponse &response) override
    {
        add(QStringLiteral("response %1 %2")
                .arg(response.status)
                .arg(response.expectedContentLength));
        if (onResponse)
            onResponse();
    }
    void connectionDidReceiveData(const QByteArray &bytes) override
    {
        const std::lock_guard lock(m_mutex);
        m_data += bytes;
        if (m_events.isEmpty() || m_events.last() != QStringLiteral("data"))
            m_events += QStringLiteral("data");
        m_thread = std::this_thread::get_id();
    }
    void connectionDidFinishLoading() override { add(QStringLiteral("finish")); }
    void connectionDidFailWithError(const Error &error) override
    {
        add(error.localizedDescription.isEmpty() ? QStringLiteral("failure without words")
                                                 : QStringLiteral("failure"));
        const std::lock_guard lock(m_mutex);
        m_error = error;
    }

    // Runs within the message.
    std::function<void()> onResponse;

    // "response STATUS LENGTH", "data" (once for pieces in a row), "finish", "failure".
    [[nodiscard]] QStringList events() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }
    [[nodiscard]] QByteArray data() const
    {
        const std::lock_guard lock(m_mutex);
        return m_data;
    }
    [[nodiscard]] Error error() const
    {
        const std::lock_guard lock(m_mutex);
        return m_error;
    }
    // Where the last message came.
    [[nodiscard]] std::thread::id thread() const
    {
        const std::lock_guard lock(m_mutex);
        return m_thread;
    }
    [[nodiscard]] bool hasEnded() const
    {
        const QStringList all = events();
        return all.contains(QStringLiteral("finish")) ||
               !all.filter(QStringLiteral("fail")).isEmpty();
    }

private:
    void add(const QString &event)
    {
        const std::lock_guard lock(m_mutex);
        m_events += event;
        m_thread = std::this_thread::get_id();
    }

    mutable std::mutex m_mutex;
    QStringList m_events;
    QByteArray m_data;
    Error m_error;
    std::thread::id m_thread;
};
