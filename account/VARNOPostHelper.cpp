#include "account/VARNOPostHelper.h"

#include "platform/Limits.h"

VARNOPostHelper::VARNOPostHelper(HttpClient &client) : m_client(client) {}

void VARNOPostHelper::postToURL(const QString &url, const Form &dictionaryData,
                                HttpClient::Completion completionHandler) const
{
    HttpRequest request;
    request.url = QUrl(url, QUrl::StrictMode);
    request.method = QByteArrayLiteral("POST");
    request.body = buildPostString(dictionaryData).toUtf8();
    request.headers = {
        {QByteArrayLiteral("Content-Length"), QByteArray::number(request.body.size())},
        {QByteArrayLiteral("Content-Type"), QByteArrayLiteral("application/x-www-form-urlencoded")},
    };
    request.redirects = HttpRequest::Redirects::SameOrigin;
    request.largestBody = Limits::LoginReply;
    m_client.sendAsynchronousRequest(request, std::move(completionHandler));
}

QString VARNOPostHelper::buildPostString(const Form &dictionaryData)
{
    QString result;
    for (auto field = dictionaryData.cbegin(); field != dictionaryData.cend(); ++field) {
        const QString separator = result.isEmpty() ? QString() : QStringLiteral("&");
        result += separator + urlEncode(field.key()) + QLatin1Char('=') + urlEncode(field.value());
    }
    return result;
}

QString VARNOPostHelper::urlEncode(const QString &string)
{
    // Letters, digits and - . _ ~ always stay.
    static const auto alsoStay = QByteArrayLiteral("!$&'()*+,/:;=?@");
    return QString::fromLatin1(QUrl::toPercentEncoding(string, alsoStay));
}
