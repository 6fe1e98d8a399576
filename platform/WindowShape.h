#pragma once

class QWidget;

// Windows are drawn over what lies behind them, through soft edges and shadows. A desktop that
// cannot do that shows black there. On such a one this cuts the window to those parts of the
// artwork, the window itself or something in it, that are more opaque than not; elsewhere it takes
// such a cut away. For a window that is about to be shown and has its size. Main thread only.
void cutToShape(QWidget &window, QWidget &artwork);
