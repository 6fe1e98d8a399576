#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// What an alert shows. All texts are already localised. The first button is the default one.
struct Alert
{
    QString messageText;
    QString informativeText;
    QStringList buttons;
};

// A plain text field under an alert's text, in points. It has the keyboard when the alert opens.
struct AlertTextField
{
    int width = 100;
    int height = 25;
};

// Shows alerts to the player. The user interface implements it; tests answer by themselves.
// Main thread only.
class AlertPresenter
{
public:
    // Answers count up from the first button: 1000, 1001, ...
    static constexpr int FirstButtonReturn = 1000;

    // The answer, and the text field's text (empty without a field).
    using SheetCompletion = std::function<void(int response, const QString &fieldText)>;

    virtual ~AlertPresenter() = default;

    // Shows the alert and waits in a nested event loop for the player's answer. Closing the alert
    // or pressing Escape counts as its last button.
    virtual int runModal(const Alert &alert) = 0;

    // Shows the alert over the launcher window, whose controls do not answer meanwhile, and returns
    // at once. `completion` runs once, when the player has answered; not at all when the launcher
    // ends before.
    virtual void beginSheet(const Alert &alert, std::optional<AlertTextField> field,
                            SheetCompletion completion) = 0;
};
