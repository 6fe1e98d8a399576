#include "Certificates.h"

#include <QFile>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <memory>

namespace {

struct Deleter
{
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
    void operator()(X509 *certificate) const { X509_free(certificate); }
    void operator()(X509_EXTENSION *extension) const { X509_EXTENSION_free(extension); }
    void operator()(FILE *file) const { std::fclose(file); }
};
template<typename Type>
using Owned = std::unique_ptr<Type, Deleter>;

constexpr long Day = 24L * 60 * 60;

void require(bool isTrue, const char *what)
{
    if (!isTrue)
        qFatal("cannot make the test certificates: %s", what);
}

Owned<FILE> openFile(const QString &path, const char *mode)
{
    Owned<FILE> file(std::fopen(QFile::encodeName(path).constData(), mode));
    require(file != nullptr, qPrintable(path));
    return file;
}

// The macro of OpenSSL for this casts constness away.
Owned<EVP_PKEY> makeKey()
{
    Owned<EVP_PKEY> key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
    require(key != nullptr, "key");
    return key;
}

void addExtension(X509 *certificate, int kind, const QByteArray &value)
{
    const Owned<X509_EXTENSION> extension(
        X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.constData()));
    require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value.constData());
}

Owned<X509> makeCertificate(const QString &name, EVP_PKEY *key, Certificates::Validity validity)
{
    static long serialNumber = 0;
    Owned<X509> certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), ++serialNumber);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -30 * Day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()),
                    validity == Certificates::Validity::Now ? 30 * Day : -Day);
    const QByteArray text = name.toUtf8();
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char *>(text.constData()),
                               int(text.size()), -1, 0);
    X509_set_pubkey(certificate.get(), key);
    return certificate;
}

void save(const Certificates::Identity &identity, X509 *certificate, EVP_PKEY *key)
{
    require(PEM_write_X509(openFile(identity.certificateFile, "w").get(), certificate) == 1,
            "certificate file");
    require(PEM_write_PrivateKey(openFile(identity.keyFile, "w").get(), key, nullptr, nullptr, 0,
                                 nullptr, nullptr) == 1,
            "key file");
}

Certificates::Identity makeAuthority(const Certificates::Identity &identity)
{
    const Owned<EVP_PKEY> key(makeKey());
    const auto certificate = makeCertificate(QStringLiteral("Quellmoor test authority"), key.get(),
                                             Certificates::Validity::Now);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    addExtension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), NID_key_usage, "critical,keyCertSign");
    require(X509_sign(certificate.get(), key.get(), EVP_sha256()) > 0, "authority");
    save(identity, certificate.get(), key.get());
    return identity;
}

} // namespace

const Certificates &Certificates::shared()
{
    static const Certificates instance;
    return instance;
}

Certificates::Certificates()
    : m_authority(makeAuthority(
          {file(QStringLiteral("authority.pem")), file(QStringLiteral("authority.key"))})),
      m_localhost(make(
          QStringLiteral("localhost"),
          {QStringLiteral("DNS:localhost"), QStringLiteral("IP:127.0.0.1"),
           QStringLiteral("DNS:download.localhost"), QStringLiteral("DNS:download-qa.localhost"),
           QStringLiteral("DNS:download-.localhost"), QStringLiteral("DNS:download-x-.localhost"),
           QStringLiteral("DNS:download--x.localhost"),
           QStringLiteral("DNS:download-a_b.localhost"), QStringLiteral("DNS:account.localhost")},
          Validity::Now)),
      m_otherHost(
          make(QStringLiteral("other-host"),
               {QStringLiteral("DNS:other-host.localhost"), QStringLiteral("DNS:other-.localhost")},
               Validity::Now)),
      m_expired(make(QStringLiteral("expired"),
                     {QStringLiteral("DNS:localhost"), QStringLiteral("DNS:download-.localhost"),
                      QStringLiteral("IP:127.0.0.1")},
                     Validity::Past))
{
}

Certificates::Identity Certificates::make(const QString &name, const QStringList &alternativeNames,
                                          Validity validity) const
{
    const Owned<X509> authority(
        PEM_read_X509(openFile(m_authority.certificateFile, "r").get(), nullptr, nullptr, nullptr));
    const Owned<EVP_PKEY> authorityKey(
        PEM_read_PrivateKey(openFile(m_authority.keyFile, "r").get(), nullptr, nullptr, nullptr));
    require(authority && authorityKey, "authority files");

    const Owned<EVP_PKEY> key(makeKey());
    const auto certificate = makeCertificate(name, key.get(), validity);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(authority.get()));
    addExtension(certificate.get(), NID_subject_alt_name,
                 alternativeNames.join(QLatin1Char(',')).toLatin1());
    addExtension(certificate.get(), NID_ext_key_usage, "serverAuth");
    require(X509_sign(certificate.get(), authorityKey.get(), EVP_sha256()) > 0, "signature");

    const Identity identity{file(name + QStringLiteral(".pem")),
                            file(name + QStringLiteral(".key"))};
    save(identity, certificate.get(), key.get());
    return identity;
}
