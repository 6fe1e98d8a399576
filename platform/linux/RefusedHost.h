#pragma once

#include <QHostAddress>
#include <QList>
#include <QSslCertificate>
#include <QString>

// What Qt's network access does for no host whose name QUrl refuses. Any thread.
namespace RefusedHost {

// The addresses of that name, the best first; none when it is not known. Waits for the answer.
[[nodiscard]] QList<QHostAddress> addressesOf(const QString &name);

// Whether the certificate was given to that name. To Qt all names that it refuses are the same.
[[nodiscard]] bool isNamedIn(const QSslCertificate &certificate, const QString &name);

} // namespace RefusedHost
