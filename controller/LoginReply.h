#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// What the account server says to a login. Servers send numbers as strings and strings as numbers;
// both count. A plain value; parse() runs on any thread.
struct LoginReply
{
    static constexpr qint64 TwoStepTokenRequired = 3;
    static constexpr qint64 LoggedIn = 7;

    // Nothing when the reply has none, whatever else it is.
    std::optional<qint64> status;
    std::optional<QString> message;
    std::optional<QString> token;
    std::optional<QString> gameserver;

    [[nodiscard]] static LoginReply parse(const QByteArray &bytes);

    // "50", the status, a colon and the message; for a reply with a status.
    [[nodiscard]] QString statusText() const;
};
