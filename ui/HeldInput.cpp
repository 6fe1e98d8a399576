#include "ui/HeldInput.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWindow>

HeldInput::HeldInput(QWindow &window) : m_window(&window) { window.installEventFilter(this); }

HeldInput::~HeldInput() = default;

void HeldInput::letGo()
{
    if (!m_window)
        return;
    m_window->removeEventFilter(this);
    for (auto &event : std::exchange(m_events, {}))
        QCoreApplication::postEvent(m_window, event.release());
}

bool HeldInput::eventFilter(QObject *, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        m_events.emplace_back(event->clone());
        return true;
    default:
        return false;
    }
}
