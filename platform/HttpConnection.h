#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <chrono>
#include <functional>
#include <limits>
#include <utility>

// One HTTP exchange as it is asked for.
struct HttpRequest
{
    // Never follows from https to http; SameOrigin never leaves scheme, host and port either.
    enum class Redirects { NoLessSafe, SameOrigin };

    QUrl url;
    QByteArray method = QByteArrayLiteral("GET");
    QList<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;
    Redirects redirects = Redirects::NoLessSafe;
    // Asked before each redirect is followed, on the connection's thread: where it says no, the
    // exchange has failed. Without it what `redirects` allows is followed.
    std::function<bool(const QUrl &target)> mayFollow = {};
    // The exchange fails when nothing at all arrives for so long. Pauses do not count.
    std::chrono::milliseconds idleTimeout{60000};
    // In bytes. The exchange fails when more arrives, or when no memory is left for what arrives.
    qint64 largestBody = std::numeric_limits<qint64>::max();
};

struct HttpResponse
{
    int status = 0;
    // In bytes; -1 when the server does not say.
    qint64 expectedContentLength = -1;
};

// Hears how one exchange goes: a response, then data in pieces, then exactly one of finish and
// failure; a failure may come alone. The messages arrive one at a time on the connection's thread.
// Every status of HTTP is a finish; a failure is what kept the answer from arriving whole. A body
// without a length counts as whole where the connection ends. Bodies are handed on as they were
// sent; none is asked for packed.
class HttpConnectionDelegate
{
public:
    virtual ~HttpConnectionDelegate() = default;
    virtual void connectionDidReceiveResponse(const HttpResponse &response) = 0;
    virtual void connectionDidReceiveData(const QByteArray &data) = 0;
    virtual void connectionDidFinishLoading() = 0;
    virtual void connectionDidFailWithError(const Error &error) = 0;
};

// One exchange on its way. It belongs to the thread that starts it when that thread runs an event
// loop, else to the main thread, and stays alive by itself until its last message.
class HttpConnection
{
public:
    virtual ~HttpConnection() = default;

    // Sends the request. Once only.
    virtual void start() = 0;

    // While paused nothing more is read from the network than a small buffer holds, so that the
    // sender slows down, and no message is sent. Any thread.
    virtual void setPaused(bool isPaused) = 0;
};
