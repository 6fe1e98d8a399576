#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The digest of the bytes as 64 lower-case hexadecimal digits. Any thread.
[[nodiscard]] QString SHA256(const QByteArray &data);

// The digest of a regular file's contents, read in pieces; links are not followed. Nothing when the
// file cannot be read to its end.
[[nodiscard]] std::optional<QString> SHA256OfFile(const QString &path);

// Two lower-case hexadecimal digits a byte. Sets each byte to 0 as soon as it is written out, so
// that the digest does not stay behind in memory.
[[nodiscard]] QString toHexString(unsigned char *bytes, qsizetype length);
