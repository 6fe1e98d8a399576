#pragma once

#include "platform/HttpClient.h"

#include <QHash>
#include <QString>

// Sends HTML forms by POST and hands the raw answers back. It knows nothing of what they mean. The
// client must outlive it. Any thread.
class VARNOPostHelper
{
public:
    using Form = QHash<QString, QString>; // field name to value

    explicit VARNOPostHelper(HttpClient &client);

    // Sends the form without waiting. `completionHandler` runs on the main thread with the body,
    // whatever the HTTP status, or with the error: of the network, or of a URL that does not parse.
    // Redirects are followed within the same origin only, so that a form never reaches another
    // host.
    void postToURL(const QString &url, const Form &dictionaryData,
                   HttpClient::Completion completionHandler) const;

    // name=value pairs joined by "&", in the order in which the dictionary yields them. Names and
    // values are passed through urlEncode().
    [[nodiscard]] static QString buildPostString(const Form &dictionaryData);

    // Writes each character that may not stand in a URL's query as its UTF-8 bytes, each "%" and
    // two upper-case hexadecimal digits. "&", "=" and "+" may stand there and so are not escaped:
    // in a value they reach the server as they are.
    [[nodiscard]] static QString urlEncode(const QString &string);

private:
    HttpClient &m_client;
};
