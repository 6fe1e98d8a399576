#pragma once

#include "platform/HttpClient.h"

#include <atomic>
#include <mutex>

// One exchange that goes as the test says, on the thread on which it says so.
class FakeConnection : public HttpConnection
{
public:
    FakeConnection(HttpRequest request, std::shared_ptr<HttpConnectionDelegate> delegate);

    // Called by start() and setPaused(): before they do anything, and after.
    std::function<void()> onStart;
    std::function<void(bool isPaused)> onPause;
    std::function<void(bool isPaused)> onPaused;

    void start() override;
    void setPaused(bool isPaused) override;

    [[nodiscard]] const HttpRequest &request() const { return m_request; }
    [[nodiscard]] bool isStarted() const { return m_isStarted; }
    [[nodiscard]] bool isPaused() const { return m_isPaused; }

    void respond(qint64 expectedLength = -1, int status = 200);
    void receive(const QByteArray &piece);
    // After these the connection has let its delegate go.
    void finish();
    void fail(const QString &why);
    // A whole answer: response, one piece if there is a body, finish.
    void deliver(const QByteArray &body);

private:
    const HttpRequest m_request;
    std::shared_ptr<HttpConnectionDelegate> m_delegate;
    std::atomic<bool> m_isStarted = false;
    std::atomic<bool> m_isPaused = false;
};

// Makes connections that the test drives by hand. Refuses URLs as the real client does.
class FakeHttpClient : public HttpClient
{
public:
    // Called with each new connection before it is handed out.
    std::function<void(const std::shared_ptr<FakeConnection> &)> onConnection;

    std::shared_ptr<HttpConnection>
    makeConnection(const HttpRequest &request,
                   std::shared_ptr<HttpConnectionDelegate> delegate) override;
    Contents dataWithContentsOfURL(const QUrl &url, qint64 largestBody) override;

    // The connections made so far. One that does not exist ends the test process.
    [[nodiscard]] qsizetype connectionCount() const;
    [[nodiscard]] std::shared_ptr<FakeConnection> connection(qsizetype index) const;
    [[nodiscard]] std::shared_ptr<FakeConnection> last() const;

private:
    mutable std::mutex m_mutex;
    QList<std::shared_ptr<FakeConnection>> m_connections;
};
