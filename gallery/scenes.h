// Every window of the program, in every state, in both languages: for pictures, and for tests of the windows.
#pragma once

#include "gallery/unitLine.h"
#include "platform/qt/qtHost.h"
#include "state/variables.h"

#include <QPalette>
#include <QWidget>

#include <functional>
#include <string>

namespace gallery {

// Called while a window is open: the name of the scene, and the window.
using Visitor = std::function<void(const std::string& scene, QWidget& window)>;

// Starts the program on a simulated unit, whose line is the host's, and shows one scene after the other as the operator
// meets it. No form is loaded afterwards.
void showAll(platform::QtHost& host, UnitLine& line, Language language, const Visitor& visitor);

// The colours of a dark desktop; it sets only those that most desktops set.
QPalette darkPalette();

} // namespace gallery
