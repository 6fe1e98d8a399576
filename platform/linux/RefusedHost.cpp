#include "platform/linux/RefusedHost.h"

#include <netdb.h>
#include <openssl/x509v3.h>

#include <memory>

QList<QHostAddress> RefusedHost::addressesOf(const QString &name)
{
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_ADDRCONFIG;
    addrinfo *found = nullptr;
    if (getaddrinfo(name.toLatin1().constData(), nullptr, &wanted, &found) != 0)
        return {};
    const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owner(found, &freeaddrinfo);
    QList<QHostAddress> addresses;
    for (; found; found = found->ai_next)
        addresses += QHostAddress(found->ai_addr);
    return addresses;
}

bool RefusedHost::isNamedIn(const QSslCertificate &certificate, const QString &name)
{
    const QByteArray bytes = certificate.toDer();
    const auto *data = reinterpret_cast<const unsigned char *>(bytes.constData());
    const std::unique_ptr<X509, decltype(&X509_free)> parsed(
        d2i_X509(nullptr, &data, long(bytes.size())), &X509_free);
    const QByteArray host = name.toLatin1();
    return parsed && X509_check_host(parsed.get(), host.constData(), size_t(host.size()),
                                     X509_CHECK_FLAG_NEVER_CHECK_SUBJECT |
                                         X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS,
                                     nullptr) == 1;
}
