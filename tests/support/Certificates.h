#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A certificate authority of its own for each test process, and server certificates signed by it,
// as PEM files in a folder that is gone when the process ends. Any failure to make them is fatal.
class Certificates
{
public:
    // The files a server shows who it is with.
    struct Identity
    {
        QString certificateFile;
        QString keyFile;
    };
    enum class Validity { Now, Past };

    // Made at first use. Main thread only.
    static const Certificates &shared();

    // What a client must trust to accept the identities below.
    [[nodiscard]] const QString &authorityFile() const { return m_authority.certificateFile; }

    // Valid for localhost, 127.0.0.1 and the launcher's hosts below localhost.
    [[nodiscard]] const Identity &localhost() const { return m_localhost; }
    // Signed by the same authority, but for other hosts.
    [[nodiscard]] const Identity &otherHost() const { return m_otherHost; }
    // For localhost, but it ended yesterday.
    [[nodiscard]] const Identity &expired() const { return m_expired; }

private:
    Certificates();
    [[nodiscard]] Identity make(const QString &name, const QStringList &alternativeNames,
                                Validity validity) const;
    [[nodiscard]] QString file(const QString &name) const { return m_folder.filePath(name); }

    const QTemporaryDir m_folder;
    const Identity m_authority;
    const Identity m_localhost;
    const Identity m_otherHost;
    const Identity m_expired;
};
