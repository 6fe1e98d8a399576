#pragma once

#include <QString>

// What went wrong, as a value: a sentence for the log or the status line and the number the system
// gave (errno, a QNetworkReply::NetworkError; 0 when there was none). Carries no secrets.
struct Error
{
    QString localizedDescription;
    int code = 0;
};
