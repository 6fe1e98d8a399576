#pragma once

#include "platform/AlertPresenter.h"

#include <QList>

// Records alerts instead of showing them. Modal ones are answered at once, sheets when the test
// says so.
class FakeAlertPresenter final : public AlertPresenter
{
public:
    struct Sheet
    {
        Alert alert;
        std::optional<AlertTextField> field;
        SheetCompletion completion;
    };

    int runModal(const Alert &alert) override
    {
        modalAlerts += alert;
        if (onModal)
            onModal();
        return response;
    }

    void beginSheet(const Alert &alert, std::optional<AlertTextField> field,
                    SheetCompletion completion) override
    {
        sheets += Sheet{alert, field, std::move(completion)};
    }

    // The answer to every modal alert.
    int response = FirstButtonReturn;
    // Runs while a modal alert would be on the screen.
    std::function<void()> onModal;

    QList<Alert> modalAlerts;
    QList<Sheet> sheets;
};
