#include "platform/linux/QtHttp.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QThread>
#include <QThreadStorage>

namespace {

// What waits inside Qt while we do not read; the sender is slowed down beyond it.
constexpr qint64 ReadBufferSize = 1024 * 1024;

QThreadStorage<std::shared_ptr<QNetworkAccessManager>> managers;

QNetworkAccessManager &managerOfThisThread()
{
    auto &manager = managers.localData();
    if (!manager)
        manager = std::make_shared<QNetworkAccessManager>();
    return *manager;
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

// The statuses of which Qt follows the target or fails; the other ones of their hundred are
// answers.
bool isRedirect(int status)
{
    return (status >= 301 && status <= 303) || status == 305 || status == 307 || status == 308;
}

// Qt counts statuses of 400 and more as errors; here they are answers like any other.
bool isOnlyTheStatus(QNetworkReply::NetworkError error, int status)
{
    if (status < 400)
        return false;
    return error == QNetworkReply::ProtocolInvalidOperationError || // of 400 and 418
           error == QNetworkReply::ProxyAuthenticationRequiredError ||
           (error >= QNetworkReply::ContentAccessDenied &&
            error <= QNetworkReply::UnknownContentError) ||
           (error >= QNetworkReply::InternalServerError &&
            error <= QNetworkReply::UnknownServerError);
}

QNetworkRequest toQt(const HttpRequest &request, const QSslConfiguration &sslConfiguration)
{
    QNetworkRequest result(request.url);
    result.setSslConfiguration(sslConfiguration);
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    // One file at a time gains nothing from multiplexing, and HTTP/1.1 keeps the flow control of
    // one connection as simple as that of its socket.
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                        request.redirects == HttpRequest::Redirects::SameOrigin
                            ? QNetworkRequest::SameOriginRedirectPolicy
                            : QNetworkRequest::NoLessSafeRedirectPolicy);
    // Of a body packed for transport Qt does not tell whether it arrived whole. Ours are packed
    // already.
    result.setRawHeader(QByteArrayLiteral("Accept-Encoding"), QByteArrayLiteral("identity"));
    for (const auto &[name, value] : request.headers)
        result.setRawHeader(name, value);
    return result;
}

// A body that cannot be read twice. Qt sends a body that can be anew, unasked, when a connection
// ends without an answer; a login must not count twice.
class OneWayBody final : public QBuffer
{
public:
    OneWayBody(const QByteArray &body, QObject *parent) : QBuffer(parent)
    {
        setData(body);
        open(QIODevice::ReadOnly);
    }
    bool isSequential() const override { return true; }
};

// With a body, even an empty one, Qt ignores the read buffer's size and takes in all that comes.
QNetworkReply *sendByQt(const HttpRequest &request, const QSslConfiguration &sslConfiguration)
{
    QNetworkAccessManager &manager = managerOfThisThread();
    QNetworkRequest qtRequest = toQt(request, sslConfiguration);
    if (request.method == QByteArrayLiteral("GET"))
        return manager.get(qtRequest);
    if (request.body.isEmpty())
        return manager.sendCustomRequest(qtRequest, request.method);
    qtRequest.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    qtRequest.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    // Qt would want to read the body again for the next place.
    qtRequest.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                           QNetworkRequest::ManualRedirectPolicy);
    auto *body = new OneWayBody(request.body, &manager);
    QNetworkReply *reply = manager.sendCustomRequest(qtRequest, request.method, body);
    body->setParent(reply);
    return reply;
}

bool isSameOrigin(const QUrl &one, const QUrl &other)
{
    constexpr int standardPort = 443;
    return one.scheme() == other.scheme() && one.host() == other.host() &&
           one.port(standardPort) == other.port(standardPort);
}

} // namespace

void QtHttpConnection::closeIdleConnectionsOfThisThread()
{
    if (managers.hasLocalData())
        managers.localData().reset();
}

QtHttpConnection::QtHttpConnection(const HttpRequest &request,
                                   std::shared_ptr<HttpConnectionDelegate> delegate,
                                   const QSslConfiguration &sslConfiguration)
    : m_request(request),
      m_sslConfiguration(sslConfiguration),
      m_delegate(std::move(delegate)),
      m_idleTimer(this)
{
    m_idleTimer.setSingleShot(true);
    connect(&m_idleTimer, &QTimer::timeout, this,
            [this] { giveUp(QStringLiteral("The request timed out.")); });
}

void QtHttpConnection::start()
{
    m_self = shared_from_this();
    QThread *const mainThread = QCoreApplication::instance()->thread();
    if (thread() == mainThread || thread()->loopLevel() > 0) {
        send();
        return;
    }
    moveToThread(mainThread);
    QMetaObject::invokeMethod(this, &QtHttpConnection::send, Qt::QueuedConnection);
}

void QtHttpConnection::send()
{
    m_reply = sendByQt(m_request, m_sslConfiguration);
    m_reply->setReadBufferSize(ReadBufferSize);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &QtHttpConnection::takeResponse);
    connect(m_reply, &QNetworkReply::readyRead, this, &QtHttpConnection::takeData);
    connect(m_reply, &QNetworkReply::finished, this, &QtHttpConnection::takeEnd);
    connect(m_reply, &QNetworkReply::requestSent, this, [this] { m_isSent = true; });
    connect(m_reply, &QNetworkReply::encrypted, this, [this] {
        if (m_isSent && !m_request.body.isEmpty())
            m_reply->abort(); // a second connection, for which there is no body
    });
    if (!m_isPaused)
        m_idleTimer.start(m_request.idleTimeout);
}

void QtHttpConnection::setPaused(bool isPaused)
{
    if (thread() != QThread::currentThread()) {
        QMetaObject::invokeMethod(
            this, [self = shared_from_this(), isPaused] { self->setPaused(isPaused); },
            Qt::QueuedConnection);
        return;
    }
    if (std::exchange(m_isPaused, isPaused) == isPaused || !m_reply)
        return;
    if (isPaused) {
        m_idleTimer.stop();
        return;
    }
    m_idleTimer.start(m_request.idleTimeout);
    takeData();
    if (m_reply && m_reply->isFinished() && !m_isPaused)
        takeEnd();
}

void QtHttpConnection::takeResponse()
{
    const int status = statusOf(*m_reply);
    if (m_isPaused || m_hasResponse || status == 0 || isRedirect(status))
        return;
    m_hasResponse = true;
    m_status = status;
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    m_expectedLength = length.isValid() ? length.toLongLong() : -1;
    m_delegate->connectionDidReceiveResponse({status, m_expectedLength});
}

void QtHttpConnection::takeData()
{
    if (m_isPaused || !m_reply || m_whyGivenUp)
        return;
    takeResponse();
    if (!m_hasResponse || m_isPaused) // the delegate may have paused at the response
        return;
    if (!m_reply->isFinished())
        m_idleTimer.start(m_request.idleTimeout);
    const QByteArray data = m_reply->readAll();
    if (data.isEmpty())
        return;
    m_receivedLength += data.size();
    if (m_receivedLength > m_request.largestBody) {
        giveUp(QStringLiteral("The answer is larger than %1 bytes.").arg(m_request.largestBody));
        return;
    }
    try {
        m_delegate->connectionDidReceiveData(data);
    } catch (const std::bad_alloc &) {
        giveUp(QStringLiteral("There is not enough memory for the answer."));
    }
}

// Only for requests with a body; Qt follows the others by itself.
bool QtHttpConnection::followRedirect()
{
    constexpr int mostRedirects = 10;
    const int status = statusOf(*m_reply);
    const QUrl target = m_reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (m_whyGivenUp || m_request.body.isEmpty() || !isRedirect(status) || !target.isValid() ||
        ++m_redirectCount > mostRedirects)
        return false;
    const QUrl url = m_reply->url().resolved(target);
    const bool isSafe = url.scheme() == m_request.url.scheme();
    if (!isSafe || (m_request.redirects == HttpRequest::Redirects::SameOrigin &&
                    !isSameOrigin(url, m_request.url)))
        return false;
    constexpr int temporaryRedirect = 307;
    if (status < temporaryRedirect) { // the answer is there to be fetched, as for a form
        m_request.method = QByteArrayLiteral("GET");
        m_request.body.clear();
        m_request.headers.clear();
    }
    m_request.url = url;
    m_isSent = false;
    m_reply->disconnect(this);
    m_reply->deleteLater();
    send();
    return true;
}

void QtHttpConnection::takeEnd()
{
    if (m_isPaused || !m_reply || followRedirect())
        return;
    m_idleTimer.stop();
    takeData();
    if (m_isPaused)
        return;
    const QNetworkReply::NetworkError error = m_reply->error();
    if (m_whyGivenUp)
        fail({*m_whyGivenUp, int(error)});
    else if (error != QNetworkReply::NoError && !isOnlyTheStatus(error, m_status))
        fail({m_reply->errorString(), int(error)});
    else if (!m_hasResponse || !isWholeBody())
        fail({QStringLiteral("The network connection was lost."),
              int(QNetworkReply::RemoteHostClosedError)});
    else {
        m_delegate->connectionDidFinishLoading();
        end();
    }
}

bool QtHttpConnection::isWholeBody() const
{
    return m_expectedLength < 0 || m_receivedLength >= m_expectedLength ||
           m_request.method == QByteArrayLiteral("HEAD");
}

// Ends the exchange with a failure of ours instead of Qt's.
void QtHttpConnection::giveUp(const QString &reason)
{
    if (std::exchange(m_whyGivenUp, reason))
        return;
    if (m_reply->isFinished())
        return; // whoever told us of the end goes on to take it
    m_reply->abort();
}

void QtHttpConnection::fail(const Error &error)
{
    m_delegate->connectionDidFailWithError(error);
    end();
}

void QtHttpConnection::end()
{
    m_reply->disconnect(this);
    m_reply->deleteLater();
    m_reply = nullptr;
    m_delegate.reset();
    m_self.reset(); // may be the last reference
}
