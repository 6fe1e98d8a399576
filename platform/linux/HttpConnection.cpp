#include "platform/DispatchQueue.h"
#include "platform/HttpUrl.h"
#include "platform/linux/Post.h"
#include "platform/linux/QtHttp.h"
#include "platform/linux/RefusedHost.h"

#include <QAbstractEventDispatcher>
#include <QBuffer>
#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QThread>
#include <QThreadStorage>

namespace {

// What waits inside Qt while we do not read; the sender is slowed down beyond it.
constexpr qint64 ReadBufferSize = 1024LL * 1024;

QThreadStorage<std::shared_ptr<QNetworkAccessManager>> managers;

const std::shared_ptr<QNetworkAccessManager> &managerOfThisThread()
{
    auto &manager = managers.localData();
    if (!manager)
        manager = std::make_shared<QNetworkAccessManager>();
    return manager;
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

const auto ConnectionLost = QStringLiteral("The network connection was lost.");

// The statuses that name another place; the other ones of their hundred are answers.
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

// Nobody was reached at that address; another one of the same host may do.
bool isOnlyTheAddress(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::ConnectionRefusedError || error == QNetworkReply::TimeoutError ||
           error == QNetworkReply::UnknownNetworkError;
}

// Qt keeps connections apart by the name that they are verified for.
void askAt(const QHostAddress &address, const QString &host, QNetworkRequest &request)
{
    QUrl url = request.url();
    const QString port =
        url.port() < 0 ? QString() : QLatin1Char(':') + QString::number(url.port());
    request.setRawHeader(QByteArrayLiteral("Host"), (host + port).toLatin1());
    request.setPeerVerifyName(host);
    url.setHost(address.toString());
    request.setUrl(url);
}

QNetworkRequest toQt(const HttpRequest &request, const QSslConfiguration &sslConfiguration)
{
    QNetworkRequest result(request.url);
    result.setSslConfiguration(sslConfiguration);
    result.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    // One file at a time gains nothing from multiplexing, and HTTP/1.1 keeps the flow control of
    // one connection as simple as that of its socket.
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    // Qt would send headers of one host to the next, and want to read a body again.
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                        QNetworkRequest::ManualRedirectPolicy);
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
QNetworkReply *replyOfQt(QNetworkAccessManager &manager, const HttpRequest &request,
                         QNetworkRequest qtRequest)
{
    if (request.method == QByteArrayLiteral("GET"))
        return manager.get(qtRequest);
    if (request.body.isEmpty())
        return manager.sendCustomRequest(qtRequest, request.method);
    qtRequest.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    qtRequest.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    auto *body = new OneWayBody(request.body, &manager);
    QNetworkReply *reply = manager.sendCustomRequest(qtRequest, request.method, body);
    body->setParent(reply);
    return reply;
}

bool isSafe(const QUrl &from, const QUrl &to)
{
    return to.scheme() == QStringLiteral("https") || to.scheme() == from.scheme();
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
    postTo(this, [this] { send(); });
}

void QtHttpConnection::send()
{
    if (!m_isPaused)
        m_idleTimer.start(m_request.idleTimeout);
    m_refusedHost = HttpUrl::refusedHost(m_request.url);
    m_addresses.clear();
    if (!m_refusedHost) {
        sendByQt(toQt(m_request, m_sslConfiguration));
        return;
    }
    DispatchQueue::global(DispatchQueue::QualityOfService::High)
        ->async([self = shared_from_this(), host = *m_refusedHost] {
            const QList<QHostAddress> addresses = RefusedHost::addressesOf(host);
            postTo(self.get(),
                   [connection = self.get(), addresses] { connection->sendToAnyOf(addresses); });
        });
}

void QtHttpConnection::sendToAnyOf(const QList<QHostAddress> &addresses)
{
    if (m_whyGivenUp)
        return;
    m_addresses = addresses;
    if (!sendToNextAddress())
        giveUp(QStringLiteral("Host %1 not found").arg(*m_refusedHost));
}

bool QtHttpConnection::sendToNextAddress()
{
    if (m_addresses.isEmpty())
        return false;
    QNetworkRequest request = toQt(m_request, m_sslConfiguration);
    askAt(m_addresses.takeFirst(), *m_refusedHost, request);
    sendByQt(request);
    connect(m_reply, &QNetworkReply::sslErrors, this, &QtHttpConnection::passOverTheName);
    return true;
}

void QtHttpConnection::sendByQt(const QNetworkRequest &request)
{
    m_isSent = false;
    m_manager = managerOfThisThread();
    m_reply = replyOfQt(*m_manager, m_request, request);
    m_reply->setReadBufferSize(ReadBufferSize);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &QtHttpConnection::takeResponse);
    connect(m_reply, &QNetworkReply::readyRead, this, &QtHttpConnection::takeData);
    connect(m_reply, &QNetworkReply::finished, this, &QtHttpConnection::takeEnd);
    connect(m_reply, &QNetworkReply::requestSent, this, [this] { m_isSent = true; });
    connect(m_reply, &QNetworkReply::encrypted, this, &QtHttpConnection::takeConnection);
}

// Nothing has been sent on a connection that is ended here.
void QtHttpConnection::takeConnection()
{
    if (m_isSent && !m_request.body.isEmpty())
        giveUp(ConnectionLost); // a second connection, for which there is no body
    else if (m_refusedHost &&
             !RefusedHost::isNamedIn(m_reply->sslConfiguration().peerCertificate(), *m_refusedHost))
        giveUp(QStringLiteral("The certificate is not one of %1.").arg(*m_refusedHost));
}

// The name is for takeConnection() to verify; all else is for Qt.
void QtHttpConnection::passOverTheName(QList<QSslError> errors)
{
    errors.removeIf(
        [](const QSslError &error) { return error.error() != QSslError::HostNameMismatch; });
    m_reply->ignoreSslErrors(errors);
}

void QtHttpConnection::setPaused(bool isPaused)
{
    if (thread() != QThread::currentThread()) {
        // Without holding itself: an event that nobody takes any more may not be the last to.
        postTo(this, [this, isPaused] { setPaused(isPaused); });
        return;
    }
    if (std::exchange(m_isPaused, isPaused) == isPaused || !m_self)
        return;
    if (isPaused) {
        m_idleTimer.stop();
        return;
    }
    m_idleTimer.start(m_request.idleTimeout);
    takeData();
    if (m_self && (!m_reply || m_reply->isFinished()))
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
    const bool isOnTheWay = !m_hasResponse && isRedirect(statusOf(*m_reply));
    if (m_isPaused || !(m_hasResponse || isOnTheWay)) // the delegate may have paused at it
        return;
    if (!m_reply->isFinished())
        m_idleTimer.start(m_request.idleTimeout);
    const QByteArray data = m_reply->readAll();
    if (data.isEmpty() || isOnTheWay) // nobody wants to hear what a redirect says besides
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

bool QtHttpConnection::followRedirect()
{
    constexpr int mostRedirects = 10;
    const int status = m_reply ? statusOf(*m_reply) : 0;
    if (m_whyGivenUp || !isRedirect(status) || ++m_redirectCount > mostRedirects)
        return false;
    const QString location = QString::fromUtf8(m_reply->rawHeader(QByteArrayLiteral("Location")));
    const QUrl target = HttpUrl::fromText(location, QUrl::TolerantMode);
    const QUrl url = m_request.url.resolved(target);
    if (location.isEmpty() || !target.isValid())
        return false;
    if (m_request.mayFollow && !m_request.mayFollow(url))
        return false;
    if (!isSafe(m_request.url, url) || (m_request.redirects == HttpRequest::Redirects::SameOrigin &&
                                        !isSameOrigin(url, m_request.url)))
        return false;
    constexpr int temporaryRedirect = 307;
    if (status < temporaryRedirect) { // the answer is there to be fetched, as for a form
        m_request.method = QByteArrayLiteral("GET");
        m_request.body.clear();
        m_request.headers.clear();
    }
    m_request.url = url;
    dropReply();
    send();
    return true;
}

void QtHttpConnection::takeEnd()
{
    const bool isLookingUp = !m_reply && !m_whyGivenUp;
    if (m_isPaused || isLookingUp || followRedirect())
        return;
    takeData();
    if (m_isPaused)
        return;
    if (hasNextAddress()) {
        dropReply();
        sendToNextAddress();
        return;
    }
    if (const auto error = failure())
        m_delegate->connectionDidFailWithError(*error);
    else
        m_delegate->connectionDidFinishLoading();
    end();
}

bool QtHttpConnection::hasNextAddress() const
{
    return !m_whyGivenUp && isOnlyTheAddress(m_reply->error()) && !m_isSent &&
           !m_addresses.isEmpty();
}

std::optional<Error> QtHttpConnection::failure() const
{
    const auto error = m_reply ? m_reply->error() : QNetworkReply::HostNotFoundError;
    if (m_whyGivenUp)
        return Error{*m_whyGivenUp, int(error)};
    const bool isAnswer = error == QNetworkReply::NoError || isOnlyTheStatus(error, m_status);
    if (!isAnswer && error != QNetworkReply::RemoteHostClosedError)
        return Error{m_reply->errorString(), int(error)};
    if (!isAnswer || !m_hasResponse || !isWholeBody())
        return Error{ConnectionLost, int(QNetworkReply::RemoteHostClosedError)};
    return std::nullopt;
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
    // Qt would go on waiting for a handshake and hand later requests to the same socket; those of
    // a new manager connect anew.
    if (m_manager && managers.localData() == m_manager)
        managers.localData().reset();
    if (!m_reply)
        takeEnd();
    else if (!m_reply->isFinished()) // else whoever told us of the end goes on to take it
        m_reply->abort();
}

void QtHttpConnection::dropReply()
{
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->deleteLater();
    m_reply = nullptr;
    // A manager takes its replies with it, and this may run within a signal of one.
    postTo(QAbstractEventDispatcher::instance(), [manager = std::move(m_manager)] {});
}

void QtHttpConnection::end()
{
    m_idleTimer.stop();
    dropReply();
    m_delegate.reset();
    m_self.reset(); // may be the last reference
}
