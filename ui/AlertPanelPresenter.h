#pragma once

#include "platform/AlertPresenter.h"

#include <QPointer>
#include <QWidget>

// Shows alerts in panels over the launcher window. Main thread only.
class AlertPanelPresenter final : public AlertPresenter
{
public:
    // Before there is a window, and after it has gone, alerts stand in the middle of the screen.
    void setWindow(QWidget *window) { m_window = window; }

    int runModal(const Alert &alert) override;
    void beginSheet(const Alert &alert, std::optional<AlertTextField> field,
                    SheetCompletion completion) override;

private:
    QPointer<QWidget> m_window;
};
