#include "TestServer.h"

namespace {

QByteArray headOf(int status, const HttpHeaders &headers)
{
    QByteArray head = "HTTP/1.1 " + QByteArray::number(status) + " Status\r\n";
    for (const auto &[name, value] : headers)
        head += name + ": " + value + "\r\n";
    return head + "\r\n";
}

QByteArray headWithLength(qint64 length, int status = 200, const HttpHeaders &headers = {})
{
    return headOf(status, HttpHeaders{{"Content-Length", QByteArray::number(length)}} + headers);
}

QByteArray chunk(const QByteArray &bytes)
{
    return QByteArray::number(bytes.size(), 16) + "\r\n" + bytes + "\r\n";
}

} // namespace

QList<QByteArray> TestRequest::header(const QByteArray &name) const
{
    QList<QByteArray> values;
    for (const QByteArray &line : head.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0 && line.left(colon).compare(name, Qt::CaseInsensitive) == 0)
            values += line.mid(colon + 1).trimmed();
    }
    return values;
}

TestReply TestReply::whole(const QByteArray &body, int status, const HttpHeaders &headers)
{
    return TestReply({headWithLength(body.size(), status, headers) + body});
}

TestReply TestReply::redirect(const QUrl &to, int status)
{
    return whole({}, status, {{"Location", to.toEncoded()}});
}

TestReply TestReply::announcing(qint64 length, const QByteArray &body)
{
    return TestReply({headWithLength(length) + body, Close{}});
}

TestReply TestReply::cut(const QByteArray &body, qsizetype after)
{
    return TestReply({headWithLength(body.size()) + body.left(after), Close{}});
}

TestReply TestReply::reset(const QByteArray &body, qsizetype after)
{
    return TestReply({headWithLength(body.size()) + body.left(after), Reset{}});
}

TestReply TestReply::closeDelimited(const QByteArray &body)
{
    return TestReply({headOf(200, {{"Connection", "close"}}) + body, Close{}});
}

TestReply TestReply::chunked(const QByteArray &body)
{
    const qsizetype half = body.size() / 2;
    const QByteArray last = half < body.size() ? chunk(body.mid(half)) : QByteArray();
    const QByteArray first = half > 0 ? chunk(body.left(half)) : QByteArray();
    return TestReply(
        {headOf(200, {{"Transfer-Encoding", "chunked"}}) + first + last + "0\r\n\r\n"});
}

TestReply TestReply::badChunk(const QByteArray &body)
{
    return TestReply(
        {headOf(200, {{"Transfer-Encoding", "chunked"}}) + chunk(body) + "no number\r\nrest\r\n",
         Close{}});
}

TestReply TestReply::stalled(const QByteArray &body, qsizetype after)
{
    return TestReply({headWithLength(body.size()) + body.left(after), Wait{}, body.mid(after)});
}

TestReply TestReply::inPieces(const QList<QByteArray> &pieces)
{
    std::vector<Step> steps{headWithLength(pieces.join().size())};
    for (const QByteArray &piece : pieces) {
        steps.emplace_back(Wait{});
        steps.emplace_back(piece);
    }
    return TestReply(std::move(steps));
}
