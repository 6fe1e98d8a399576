#pragma once

#include <QUrl>

#include <optional>

// URLs of every host that can serve. QUrl refuses a host name with a label that begins or ends in
// "-", such as download-.example; here the URL of such a host carries a stand-in in its place, one
// for each name, so that URLs compare and resolve as ever. HttpClient asks the host itself.
// Any thread.
namespace HttpUrl {

// Not valid when the text is no URL.
[[nodiscard]] QUrl fromText(const QString &text, QUrl::ParsingMode mode = QUrl::StrictMode);

// The host name that a stand-in in this URL stands for, in lower case; nothing for any other URL.
[[nodiscard]] std::optional<QString> refusedHost(const QUrl &url);

} // namespace HttpUrl
