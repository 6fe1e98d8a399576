#include "FakeHttpClient.h"

FakeConnection::FakeConnection(HttpRequest request,
                               std::shared_ptr<HttpConnectionDelegate> delegate)
    : m_request(std::move(request)), m_delegate(std::move(delegate))
{
}

void FakeConnection::start()
{
    if (onStart)
        onStart();
    m_isStarted = true;
}

void FakeConnection::setPaused(bool isPaused)
{
    if (onPause)
        onPause(isPaused);
    m_isPaused = isPaused;
    if (onPaused)
        onPaused(isPaused);
}

void FakeConnection::respond(qint64 expectedLength, int status)
{
    m_delegate->connectionDidReceiveResponse({status, expectedLength});
}

void FakeConnection::receive(const QByteArray &piece)
{
    m_delegate->connectionDidReceiveData(piece);
}

void FakeConnection::finish() { std::exchange(m_delegate, nullptr)->connectionDidFinishLoading(); }

void FakeConnection::fail(const QString &why)
{
    std::exchange(m_delegate, nullptr)->connectionDidFailWithError({why, 1});
}

void FakeConnection::deliver(const QByteArray &body)
{
    respond(body.size());
    if (!body.isEmpty())
        receive(body);
    finish();
}

std::shared_ptr<HttpConnection>
FakeHttpClient::makeConnection(const HttpRequest &request,
                               std::shared_ptr<HttpConnectionDelegate> delegate)
{
    if (!request.url.isValid() || request.url.host().isEmpty() ||
        request.url.scheme() != QStringLiteral("https"))
        return nullptr;
    auto connection = std::make_shared<FakeConnection>(request, std::move(delegate));
    if (onConnection)
        onConnection(connection);
    const std::lock_guard lock(m_mutex);
    m_connections += connection;
    return connection;
}

HttpClient::Contents FakeHttpClient::dataWithContentsOfURL(const QUrl &url, qint64 /*largestBody*/)
{
    qFatal("nobody should read %s here", qPrintable(url.toString()));
}

qsizetype FakeHttpClient::connectionCount() const
{
    const std::lock_guard lock(m_mutex);
    return m_connections.size();
}

std::shared_ptr<FakeConnection> FakeHttpClient::connection(qsizetype index) const
{
    const std::lock_guard lock(m_mutex);
    if (index < 0 || index >= m_connections.size())
        qFatal("there is no connection %d", int(index));
    return m_connections[index];
}

std::shared_ptr<FakeConnection> FakeHttpClient::last() const
{
    return connection(connectionCount() - 1);
}
