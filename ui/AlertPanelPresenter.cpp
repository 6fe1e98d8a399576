#include "ui/AlertPanelPresenter.h"

#include "ui/AlertPanel.h"

int AlertPanelPresenter::runModal(const Alert &alert)
{
    // By pointer: the window, which owns the panel, may go while the panel is on the screen.
    const QPointer<AlertPanel> panel = new AlertPanel(alert, std::nullopt, m_window);
    const int answer = panel->exec();
    delete panel;
    const int lastButton = FirstButtonReturn + std::max(1, int(alert.buttons.size())) - 1;
    return answer >= FirstButtonReturn ? answer : lastButton;
}

void AlertPanelPresenter::beginSheet(const Alert &alert, std::optional<AlertTextField> field,
                                     SheetCompletion completion)
{
    auto *panel = new AlertPanel(alert, field, m_window);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(panel, &QDialog::finished, panel,
                     [panel, completion = std::move(completion)](int response) {
                         completion(response, panel->fieldText());
                     });
    panel->open();
}
