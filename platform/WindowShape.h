#pragma once

class QWidget;

// Moves the question whether the desktop blends windows one step on, of two, without waiting: who
// calls it twice, some milliseconds apart, before cutToShape() finds the answer there. That is good
// for one cutToShape(); without it that asks by itself. Main thread only.
void askDesktopAhead();

// Windows are drawn over what lies behind them, through soft edges and shadows. A desktop that
// cannot do that shows black there. On such a one this cuts the window to those parts of the
// artwork, the window itself or something in it, that are more opaque than not; elsewhere it takes
// such a cut away. For a window that is about to be shown and has its size. Main thread only.
void cutToShape(QWidget &window, QWidget &artwork);
