#pragma once

#include "platform/HttpConnection.h"

#include <functional>
#include <memory>
#include <optional>

// The one way to the network. Answers are never taken from a cache, HTTP statuses are never
// interpreted, and certificates are always verified.
class HttpClient
{
public:
    // What a blocking read brought: no data when the exchange failed, else the whole body and the
    // HTTP status it came with.
    struct Contents
    {
        std::optional<QByteArray> data;
        int status = 0;
        std::optional<Error> error;
    };
    using Completion =
        std::function<void(std::optional<QByteArray> body, std::optional<Error> error)>;

    virtual ~HttpClient() = default;

    // Null when the URL is not a valid http or https URL. The connection holds the delegate until
    // its last message. Any thread.
    virtual std::shared_ptr<HttpConnection>
    makeConnection(const HttpRequest &request,
                   std::shared_ptr<HttpConnectionDelegate> delegate) = 0;

    // Reads the whole resource, of so many bytes at most, and waits for it. Never on the main
    // thread.
    [[nodiscard]] virtual Contents dataWithContentsOfURL(const QUrl &url, qint64 largestBody) = 0;

    // Sends the request without waiting; `completion` runs on the main thread with the body or the
    // error. Any thread. The client must live until the main queue has begun with it.
    void sendAsynchronousRequest(const HttpRequest &request, Completion completion);
};

// A client on Qt's network access. `extraCertificateFile` names a file of PEM certificates trusted
// besides the system's; empty means none, and one that cannot be read is logged and not used.
std::unique_ptr<HttpClient> makeHttpClient(const QString &extraCertificateFile);
