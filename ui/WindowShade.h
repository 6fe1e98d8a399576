#pragma once

#include "ui/PictureView.h"

#include <QImage>

// Darkens a window while something in front of it wants an answer: ink over everything in it, as
// long as this lives. Only inside the outline of the picture that is the window's ground, if it has
// one: its shadow and what lies beyond stay as they are. Several on one window darken it no more
// than one. Lets the mouse through and is nothing to assistive technology. Main thread only.
class WindowShade : public PictureView
{
    Q_OBJECT

public:
    // Over a window that keeps its size, which owns it.
    explicit WindowShade(QWidget &window);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] QImage inkFor(qreal scale) const;

    QImage m_ink; // in the window's outline, at the scale it was last painted at
};
