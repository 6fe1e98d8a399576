#include "platform/ActivationPolicy.h"

#include <QApplication>
#include <QPointer>
#include <QWidget>

namespace {

class DesktopActivationPolicy final : public ActivationPolicy
{
public:
    DesktopActivationPolicy() { QApplication::setQuitOnLastWindowClosed(false); }

    void setActivationPolicy(Policy policy) override
    {
        if (std::exchange(m_policy, policy) == policy)
            return;
        if (policy == Policy::Accessory)
            hideWindows();
        else
            showWindows();
    }

    void activateIgnoringOtherApps() override
    {
        const auto windows = QApplication::topLevelWidgets();
        for (QWidget *window : windows) {
            if (!window->isVisible() ||
                window->windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus))
                continue;
            window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
            window->raise();
            window->activateWindow();
        }
    }

private:
    void hideWindows()
    {
        const auto windows = QApplication::topLevelWidgets();
        for (QWidget *window : windows) {
            // Hiding a question would answer it.
            if (!window->isVisible() || window->isModal())
                continue;
            m_hiddenWindows += window;
            window->hide();
        }
    }

    void showWindows()
    {
        for (const auto &window : std::exchange(m_hiddenWindows, {}))
            if (window)
                window->show();
    }

    Policy m_policy = Policy::Regular;
    QList<QPointer<QWidget>> m_hiddenWindows;
};

} // namespace

std::unique_ptr<ActivationPolicy> makeActivationPolicy()
{
    return std::make_unique<DesktopActivationPolicy>();
}
