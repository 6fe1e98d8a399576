#include "platform/HttpClient.h"

#include "app/ErrorHandler.h"
#include "platform/DispatchQueue.h"
#include "platform/linux/Post.h"
#include "platform/linux/QtHttp.h"

#include <QFile>
#include <QSslCertificate>
#include <QSslSocket>
#include <QThread>

#include <openssl/crypto.h>

#include <future>
#include <mutex>

namespace {

// Gathers a whole body in memory.
class Collector final : public HttpConnectionDelegate
{
public:
    using Done = std::function<void(HttpClient::Contents)>;
    explicit Collector(Done done) : m_done(std::move(done)) {}

    void connectionDidReceiveResponse(const HttpResponse &response) override
    {
        m_status = response.status;
        m_data.clear();
    }
    void connectionDidReceiveData(const QByteArray &data) override { m_data += data; }
    void connectionDidFinishLoading() override { m_done({std::move(m_data), m_status, {}}); }
    void connectionDidFailWithError(const Error &error) override
    {
        m_data = {}; // the connection may hold this object for a while
        m_done({{}, m_status, error});
    }

private:
    const Done m_done;
    QByteArray m_data = QByteArrayLiteral("");
    int m_status = 0;
};

Error invalidUrl() { return {QStringLiteral("The URL cannot be used."), 0}; }

QSslConfiguration sslConfigurationWith(const QString &extraCertificateFile)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    if (extraCertificateFile.isEmpty())
        return configuration;
    const auto extra = QSslCertificate::fromPath(extraCertificateFile, QSsl::Pem);
    if (extra.isEmpty())
        ErrorHandler::log(
            QStringLiteral("No certificate authority in %1.").arg(extraCertificateFile));
    // The system's stay those that are looked up when they are needed. To read them all takes a
    // while, for which the window would wait when its login is the first to ask.
    configuration.addCaCertificates(extra);
    return configuration;
}

class QtHttpClient final : public HttpClient
{
public:
    explicit QtHttpClient(const QString &extraCertificateFile)
        : m_extraCertificateFile(extraCertificateFile)
    {
        m_readerContext.moveToThread(&m_reader);
        m_reader.setObjectName(QStringLiteral("http"));
        m_reader.start();
    }

    ~QtHttpClient() override
    {
        m_reader.quit();
        m_reader.wait();
        QtHttpConnection::closeIdleConnectionsOfThisThread();
    }

    std::shared_ptr<HttpConnection>
    makeConnection(const HttpRequest &request,
                   std::shared_ptr<HttpConnectionDelegate> delegate) override
    {
        const QString scheme = request.url.scheme();
        if (!request.url.isValid() || request.url.host().isEmpty() ||
            (scheme != QStringLiteral("https") && scheme != QStringLiteral("http")))
            return nullptr;
        return {new QtHttpConnection(request, std::move(delegate), sslConfiguration()),
                [](QtHttpConnection *connection) { connection->deleteLater(); }};
    }

    // Runs on a thread of its own, so that the caller's thread needs no event loop.
    Contents dataWithContentsOfURL(const QUrl &url, qint64 largestBody) override
    {
        std::promise<Contents> promise;
        std::future<Contents> contents = promise.get_future();
        const auto done = [&promise](Contents result) { promise.set_value(std::move(result)); };
        postTo(&m_readerContext, [this, url, largestBody, done] {
            HttpRequest request;
            request.url = url;
            request.largestBody = largestBody;
            if (const auto connection = makeConnection(request, std::make_shared<Collector>(done)))
                connection->start();
            else
                done({{}, 0, invalidUrl()});
        });
        return contents.get();
    }

private:
    const QSslConfiguration &sslConfiguration()
    {
        // Qt loads its TLS library at first use, which takes longer than a window may wait for, and
        // warns when two threads are the first.
        std::call_once(m_sslOnce, [this] {
            QSslSocket::supportsSsl();
            m_sslConfiguration = sslConfigurationWith(m_extraCertificateFile);
        });
        return *m_sslConfiguration;
    }

    const QString m_extraCertificateFile;
    std::once_flag m_sslOnce;
    std::optional<QSslConfiguration> m_sslConfiguration;
    QThread m_reader;
    QObject m_readerContext;
};

} // namespace

void HttpClient::sendAsynchronousRequest(const HttpRequest &request, Completion completion)
{
    DispatchQueue::main()->async([this, request, completion = std::move(completion)] {
        auto collector = std::make_shared<Collector>([completion](Contents contents) {
            completion(std::move(contents.data), std::move(contents.error));
        });
        if (const auto connection = makeConnection(request, std::move(collector)))
            connection->start();
        else
            completion(std::nullopt, invalidUrl());
    });
}

std::unique_ptr<HttpClient> makeHttpClient(const QString &extraCertificateFile)
{
    // Qt does not join its threads: one may still be giving back its part of OpenSSL when the
    // process ends. OpenSSL would then give back all parts, and this one twice.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    return std::make_unique<QtHttpClient>(extraCertificateFile);
}
