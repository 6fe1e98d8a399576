#pragma once

#include "platform/BiometricPrompt.h"

#include <QPointer>
#include <QWidget>

class FingerprintPanel;

// Shows in a panel over the launcher window that a finger is waited for. Its button and Escape
// cancel. Main thread only.
class FingerprintPrompt final : public BiometricPrompt
{
public:
    ~FingerprintPrompt() override;

    // Before there is a window, and after it has gone, the panel stands in the middle of the
    // screen.
    void setWindow(QWidget *window) { m_window = window; }

    void show(const QString &reason, std::function<void()> cancel) override;
    void retry(const QString &text) override;
    void hide() override;

private:
    void panelFinished();

    QPointer<QWidget> m_window;
    QPointer<FingerprintPanel> m_panel; // the window's
    std::function<void()> m_cancel;     // empty when no question runs
};
