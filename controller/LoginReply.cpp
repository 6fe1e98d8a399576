#include "controller/LoginReply.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <cmath>

namespace {

// How the platform prints an object that is not there.
const auto NullText = QStringLiteral("(null)");

// Numbers given as strings count; a string counts as the number it begins with, or 0.
std::optional<qint64> integerOf(const QJsonValue &value)
{
    if (value.isBool())
        return value.toBool() ? 1 : 0;
    if (value.isDouble()) {
        constexpr double limit = 9.2e18; // beyond it lies nothing that fits in 64 bits
        const double number = value.toDouble();
        return std::abs(number) < limit ? value.toInteger(qint64(number)) : 0;
    }
    if (!value.isString())
        return std::nullopt;
    static const QRegularExpression leadingInteger(QStringLiteral("\\A\\s*([+-]?[0-9]+)"));
    return leadingInteger.match(value.toString()).captured(1).toLongLong();
}

std::optional<QString> textOf(const QJsonValue &value)
{
    if (value.isString())
        return value.toString();
    if (value.isDouble() || value.isBool())
        return value.toVariant().toString();
    return std::nullopt;
}

} // namespace

LoginReply LoginReply::parse(const QByteArray &bytes)
{
    const QJsonObject reply = QJsonDocument::fromJson(bytes).object();
    return {integerOf(reply[QStringLiteral("status")]), textOf(reply[QStringLiteral("message")]),
            textOf(reply[QStringLiteral("token")]), textOf(reply[QStringLiteral("gameserver")])};
}

QString LoginReply::statusText() const
{
    return QStringLiteral("50%1: %2")
        .arg(QString::number(status.value_or(0)), message.value_or(NullText));
}
