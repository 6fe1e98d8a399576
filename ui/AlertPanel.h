#pragma once

#include "platform/AlertPresenter.h"

#include <QDialog>
#include <QPointer>

class QHBoxLayout;
class QVBoxLayout;
class TextField;
class WindowShade;

// The window of one alert, in the launcher's own style: title, text, perhaps a text field, buttons
// with the first one on the right. Return presses the first button, Escape the last; so does
// closing. Its result is the answer as AlertPresenter counts it. The owner's window is darkened
// while this is on the screen. Main thread only.
class AlertPanel : public QDialog
{
    Q_OBJECT

public:
    // Over the middle of the owner's window; null for the middle of the screen.
    AlertPanel(const Alert &alert, std::optional<AlertTextField> field, QWidget *owner);
    ~AlertPanel() override;

    // Empty without a field.
    [[nodiscard]] QString fieldText() const;

    // Answers as the last button does.
    void reject() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void addTexts(QVBoxLayout &column, const Alert &alert);
    void addField(QVBoxLayout &column, const Alert &alert, AlertTextField field);
    void addButtons(QVBoxLayout &column);
    void moveOverOwner();

    const QStringList m_buttons;
    TextField *m_field = nullptr;
    QPointer<WindowShade> m_shade; // the owner's window may go first
};
