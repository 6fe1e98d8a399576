#include "ui/FingerprintPrompt.h"

#include "ui/FingerprintPanel.h"

FingerprintPrompt::~FingerprintPrompt() { hide(); }

void FingerprintPrompt::show(const QString &reason, std::function<void()> cancel)
{
    hide();
    m_cancel = std::move(cancel);
    m_panel = new FingerprintPanel(reason, m_window);
    m_panel->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(m_panel, &QDialog::finished, m_panel, [this] { panelFinished(); });
    m_panel->open();
}

void FingerprintPrompt::retry(const QString &text)
{
    if (m_panel)
        m_panel->setHint(text);
}

void FingerprintPrompt::hide()
{
    m_cancel = nullptr;
    if (FingerprintPanel *panel = std::exchange(m_panel, nullptr))
        panel->close();
}

void FingerprintPrompt::panelFinished()
{
    m_panel = nullptr;
    // Ends the question, which calls hide() before it returns.
    if (const auto cancel = std::exchange(m_cancel, nullptr))
        cancel();
}
