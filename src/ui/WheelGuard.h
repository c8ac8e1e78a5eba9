#pragma once

class QWidget;

namespace korvane {

// Lets the mouse wheel change `control` (a menu, a spin box) only while it
// has the keyboard focus; otherwise the wheel goes on to what holds it, so
// turning the wheel over the port list scrolls the list instead of changing
// whichever menu passes under the pointer. A click still gives the focus.
void guardWheel(QWidget& control);

} // namespace korvane
