#pragma once

#include <QObject>
#include <QPointer>

#include <memory>
#include <utility>
#include <vector>

class QEvent;
class QWindow;

// Keys and mouse buttons that come to a window before it can do anything with them: kept in their
// order, and handed on as soon as it can, so that nothing is lost and nothing lands in the wrong
// field. Main thread only.
class HeldInput : public QObject
{
public:
    // Holds everything back from now on. The window may go before this.
    explicit HeldInput(QWindow &window);
    ~HeldInput() override;

    // Hands on what has come, at the next turn of the event loop, and holds nothing back any more.
    void letGo();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    const QPointer<QWindow> m_window;
    std::vector<std::unique_ptr<QEvent>> m_events;
};
