// Any text on its way into a URL or a form. Odd inputs are UTF-8, even ones UTF-16 as it comes,
// with halves of pairs.
#include "Target.h"
#include "account/VARNOPostHelper.h"

#include <QUrl>

namespace {

bool isAllowed(QChar c)
{
    static const auto others = QStringLiteral("-._~!$&'()*+,/:;=?@%");
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           others.contains(c);
}

bool isDigit(QChar c) { return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F'); }

QString textFrom(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return {};
    if (bytes[0] & 1)
        return QString::fromUtf8(bytes.mid(1));
    QString text;
    for (qsizetype i = 2; i < bytes.size(); i += 2)
        text += QChar(char16_t(uint8_t(bytes[i - 1]) << 8 | uint8_t(bytes[i])));
    return text;
}

} // namespace

void prepareFuzzTarget() {}

void fuzzTarget(const QByteArray &bytes)
{
    const QString text = textFrom(bytes);
    const QString encoded = VARNOPostHelper::urlEncode(text);
    for (qsizetype i = 0; i < encoded.size(); ++i) {
        promise(isAllowed(encoded[i]), "only characters of URLs are left");
        promise(encoded[i] != u'%' ||
                    (i + 2 < encoded.size() && isDigit(encoded[i + 1]) && isDigit(encoded[i + 2])),
                "a percent sign stands for a byte");
    }
    promise(QByteArray::fromPercentEncoding(encoded.toLatin1()) == text.toUtf8(),
            "decoding gives the text back");
}
