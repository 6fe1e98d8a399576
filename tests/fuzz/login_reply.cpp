// What a hostile account host answers to a login.
#include "Target.h"
#include "controller/LoginReply.h"

#include <QJsonDocument>
#include <QJsonObject>

void prepareFuzzTarget() {}

void fuzzTarget(const QByteArray &bytes)
{
    const LoginReply reply = LoginReply::parse(bytes);
    const QJsonObject json = QJsonDocument::fromJson(bytes).object();
    promise(!reply.status || json.contains(QStringLiteral("status")), "a status is never made up");
    promise(!reply.token || json.contains(QStringLiteral("token")), "a token is never made up");

    const QString start = QStringLiteral("50%1: ").arg(reply.status.value_or(0));
    const QString text = reply.statusText();
    promise(text.startsWith(start), "the text begins with the status");
    promise(text.mid(start.size()) == reply.message.value_or(QStringLiteral("(null)")),
            "the text ends with the message, letter by letter");
}
