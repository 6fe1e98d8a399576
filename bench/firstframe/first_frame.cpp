// Preloaded into a program: tells when its window stands painted on the screen and has the
// keyboard. Writes a line to the file descriptor in FIRST_FRAME_FD: the monotonic clock at that
// time and the processor time that the program has used, both in nanoseconds. With a name in
// FIRST_FRAME_FOCUS the widget of that name must have the keyboard, otherwise any window. With a
// name in FIRST_FRAME_TEXTS the widget of that name must have been painted a second time: texts
// follow the first frame. With FIRST_FRAME_STOP the program then stops, as by SIGSTOP, so that it
// can be looked at.
#include <QApplication>
#include <QWidget>

#include <unistd.h>

#include <csignal>
#include <ctime>

namespace {

long long nanoseconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return now.tv_sec * 1000000000LL + now.tv_nsec;
}

class FirstFrame final : public QObject
{
public:
    explicit FirstFrame(QObject *parent) : QObject(parent) { parent->installEventFilter(this); }

    bool eventFilter(QObject *object, QEvent *event) override
    {
        const auto *widget = qobject_cast<QWidget *>(object);
        if (event->type() == QEvent::Paint && widget)
            notePaintingOf(*widget);
        else if (m_paintedTexts == 2)
            look(); // what was painted is on the screen when something else happens
        if (m_isPainted && m_texts.isEmpty() && !m_isTold && !std::exchange(m_willLook, true))
            // What is painted now is on the screen when the event loop has its next turn.
            QMetaObject::invokeMethod(this, &FirstFrame::look, Qt::QueuedConnection);
        return false;
    }

private:
    void notePaintingOf(const QWidget &widget)
    {
        if (widget.isWindow())
            m_isPainted = true;
        if (!m_texts.isEmpty() && widget.objectName() == m_texts && m_paintedTexts < 2)
            ++m_paintedTexts;
    }

    void look()
    {
        m_willLook = false;
        const QWidget *focus = QApplication::focusWidget();
        const bool hasKeyboard = m_focus.isEmpty() ? QApplication::activeWindow() != nullptr
                                                   : focus && focus->objectName() == m_focus;
        if (!hasKeyboard || std::exchange(m_isTold, true))
            return;
        dprintf(qEnvironmentVariableIntValue("FIRST_FRAME_FD"), "%lld %lld\n",
                nanoseconds(CLOCK_MONOTONIC), nanoseconds(CLOCK_PROCESS_CPUTIME_ID));
        if (qEnvironmentVariableIsSet("FIRST_FRAME_STOP"))
            raise(SIGSTOP);
    }

    const QString m_focus = qEnvironmentVariable("FIRST_FRAME_FOCUS");
    const QString m_texts = qEnvironmentVariable("FIRST_FRAME_TEXTS");
    bool m_isPainted = false;
    int m_paintedTexts = 0;
    bool m_willLook = false;
    bool m_isTold = false;
};

void watch() { new FirstFrame(QCoreApplication::instance()); }

} // namespace

Q_COREAPP_STARTUP_FUNCTION(watch)
