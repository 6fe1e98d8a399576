#pragma once

#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

// The launcher's window: no frame, nothing of its own to be seen, moved by dragging anywhere that
// no control takes the mouse. Closing it by the desktop's own means ends the program. Main thread
// only.
class CustomWindow : public QWidget
{
    Q_OBJECT

public:
    // Made at that place and in that style, then centred on the screen. The style decides whether
    // there is a frame; the launcher's window is made without.
    explicit CustomWindow(const QRect &contentRect,
                          Qt::WindowFlags styleMask = Qt::Window | Qt::FramelessWindowHint);

    // Becomes the whole content at the window's origin and gives the window its size. The window
    // owns it from then on.
    void setContentView(QWidget *contentView);

    // To the middle of the screen's visible part.
    void center();

    [[nodiscard]] static bool canBecomeKeyWindow() { return true; }

    // Where the last press of the mouse landed, in window coordinates.
    [[nodiscard]] QPointF initialLocation() const { return m_initialLocation; }
    void setInitialLocation(const QPointF &location) { m_initialLocation = location; }

    // Where the window goes when the mouse, pressed at `initialLocation`, is now at `location`,
    // both in window coordinates. Its top edge stays within the visible frame; the other edges may
    // leave it.
    [[nodiscard]] static QPoint originForDrag(const QRect &frame, const QPointF &initialLocation,
                                              const QPointF &location, const QRect &visibleFrame);

    // Whether a widget that is being painted shall draw its texts. Not in the first frame of a
    // CustomWindow, which is there sooner without them; the widget is painted again right after it.
    [[nodiscard]] static bool drawsTexts(QWidget &painted);

signals:
    // Once, when the window has been painted and has the keyboard, so that what takes long can
    // begin. A window that is painted and gets no keyboard, or is not even painted, as on a desktop
    // that is out of sight, tells so a second after it was shown, too.
    void appeared();

protected:
    // Qt's name of the window system.
    [[nodiscard]] virtual QString platformName() const;
    // Hands a move that has begun with the mouse over to the desktop.
    virtual void startSystemMove();

    void closeEvent(QCloseEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void drawTexts();
    void appearSoon();

    QPointF m_initialLocation;
    bool m_wasShown = false;
    bool m_isPainted = false;
    bool m_drawsTexts = false;
    QList<QPointer<QWidget>> m_withoutTexts; // were painted so in the first frame
    QTimer m_patience;     // runs from when it is first shown until it has appeared
    bool m_isHeld = false; // by a press that no control took
};
