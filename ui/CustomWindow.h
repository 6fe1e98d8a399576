#pragma once

#include <QWidget>

// The launcher's window: no frame, nothing of its own to be seen, moved by dragging anywhere that
// no control takes the mouse. Main thread only.
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

signals:
    // Once, when the window has been painted for the first time. What can wait until then should.
    void appeared();

protected:
    // Qt's name of the window system.
    [[nodiscard]] virtual QString platformName() const;
    // Hands a move that has begun with the mouse over to the desktop.
    virtual void startSystemMove();

    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QPointF m_initialLocation;
    bool m_hasAppeared = false;
    bool m_isHeld = false; // by a press that no control took
};
