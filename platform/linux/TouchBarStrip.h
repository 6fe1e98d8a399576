#pragma once

#include <QWidget>

class QHBoxLayout;

// A slim window of its own right below another window, for what a Touch Bar would show. Follows
// that window wherever it goes, out of sight as well, and is there only while it has something to
// show. On desktops that place windows themselves it stands where those put it. Main thread only;
// a child of the window that it follows.
class TouchBarStrip : public QWidget
{
    Q_OBJECT

public:
    TouchBarStrip(QWidget &window, int gap);

    // Shows these, left to right, in place of the ones before. They become children of the strip
    // and may be deleted by their owner at any time.
    void setViews(const QList<QWidget *> &views);

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void follow();
    void place();

    QWidget &m_window;
    const int m_gap;
    QHBoxLayout *m_row = nullptr;
    QWidget *m_rim = nullptr;
};
