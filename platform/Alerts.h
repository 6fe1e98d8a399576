#pragma once

#include <QCoreApplication>

// Texts of alerts in the player's language: Alerts::tr("English text"). The English text is the
// key, and what is shown where there is no translation. Main thread only.
class Alerts
{
    Q_DECLARE_TR_FUNCTIONS(Alerts)

public:
    Alerts() = delete;
};
