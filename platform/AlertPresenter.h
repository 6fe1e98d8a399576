#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// What an alert shows. All texts are already localised. The first button is the default one.
struct Alert
{
    QString messageText;
    QString informativeText;
    QStringList buttons;
};

// Shows alerts to the player. The user interface implements it; tests answer by themselves.
// Main thread only.
class AlertPresenter
{
public:
    // Answers count up from the first button: 1000, 1001, ...
    static constexpr int FirstButtonReturn = 1000;

    virtual ~AlertPresenter() = default;

    // Shows the alert and waits in a nested event loop for the player's answer. Closing the alert
    // or pressing Escape counts as its last button.
    virtual int runModal(const Alert &alert) = 0;
};
