#pragma once

#include "platform/HttpClient.h"

#include <QStringList>

// A network on which nothing can be reached; keeps the URLs that were asked for, in order.
class RefusingHttpClient final : public HttpClient
{
public:
    std::shared_ptr<HttpConnection> makeConnection(const HttpRequest &request,
                                                   std::shared_ptr<HttpConnectionDelegate>) override
    {
        m_urls += request.url.toString(QUrl::FullyEncoded);
        return nullptr;
    }

    Contents dataWithContentsOfURL(const QUrl &url, qint64 /*largestBody*/) override
    {
        m_urls += url.toString(QUrl::FullyEncoded);
        return {};
    }

    [[nodiscard]] const QStringList &urls() const { return m_urls; }

private:
    QStringList m_urls;
};
