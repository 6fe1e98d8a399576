#pragma once

#include "platform/HttpClient.h"

#include <mutex>

// A real client whose requests can be looked at, and whose patience can be shortened.
class AdjustableHttpClient final : public HttpClient
{
public:
    explicit AdjustableHttpClient(std::unique_ptr<HttpClient> client) : m_client(std::move(client))
    {
    }

    std::shared_ptr<HttpConnection>
    makeConnection(const HttpRequest &request,
                   std::shared_ptr<HttpConnectionDelegate> delegate) override
    {
        HttpRequest sent = request;
        {
            const std::lock_guard lock(m_mutex);
            m_lastRequest = request;
            sent.idleTimeout = m_idleTimeout.value_or(request.idleTimeout);
        }
        return m_client->makeConnection(sent, std::move(delegate));
    }
    Contents dataWithContentsOfURL(const QUrl &url, qint64 largestBody) override
    {
        return m_client->dataWithContentsOfURL(url, largestBody);
    }

    // For all connections from now on; nothing leaves each its own.
    void setIdleTimeout(std::optional<std::chrono::milliseconds> idleTimeout)
    {
        const std::lock_guard lock(m_mutex);
        m_idleTimeout = idleTimeout;
    }
    // That of the last connection, as it was asked for.
    [[nodiscard]] HttpRequest lastRequest() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lastRequest;
    }

private:
    const std::unique_ptr<HttpClient> m_client;
    mutable std::mutex m_mutex;
    std::optional<std::chrono::milliseconds> m_idleTimeout;
    HttpRequest m_lastRequest;
};
