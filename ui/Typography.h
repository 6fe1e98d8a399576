#pragma once

#include <QColor>
#include <QFont>

// Typefaces and colours of the whole user interface, in one place. Sizes in points of the interface
// file, which are device-independent pixels.
namespace Typography {

// An old-style serif, for titles and the play button.
[[nodiscard]] QFont display(int pixelSize, QFont::Weight weight = QFont::DemiBold);
// A plain sans, for everything that is read or typed.
[[nodiscard]] QFont text(int pixelSize, QFont::Weight weight = QFont::Normal);

} // namespace Typography

namespace Palette {

inline constexpr QRgb Text = 0xffdce7e3;
inline constexpr QRgb Mist = 0xff9fb4ae;   // what matters less
inline constexpr QRgb Teal = 0xff5bc8b5;   // what goes on, and what has the keyboard
inline constexpr QRgb Brass = 0xffe0b25b;  // what can be pressed
inline constexpr QRgb Bright = 0xfff8d995; // brass under the mouse
inline constexpr QRgb Ink = 0xff1d1405;    // on brass
inline constexpr QRgb Faded = 0xffc2cdc8;  // on a plate that is switched off
inline constexpr QRgb Peat = 0xff101819;   // grounds

} // namespace Palette
