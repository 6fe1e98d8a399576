#pragma once

class QLabel;

// What assistive technology is told about the launcher's own controls, beyond what Qt knows by
// itself: windows are windows, the bar has a value, pictures that only decorate are left out, and
// labels can be read out. Main thread only.
namespace Accessibility {

// Lets screen readers into the web pages of this process. Changes the environment, so call it
// before the process has a second thread.
void openWebPages();

// From now on new widgets are described so. May be called again.
void install();

// Marks a label as one whose text is read out, wherever the keyboard is. At once and for good.
void makeSpoken(QLabel &label);
[[nodiscard]] bool isSpoken(const QLabel &label);
// Reads the text of such a label out, if it is on the screen.
void speak(QLabel &label);

} // namespace Accessibility
