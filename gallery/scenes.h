// Every window of the program, in every state, in both languages: for pictures, and for tests of the windows.
#pragma once

#include "platform/qt/qtHost.h"

#include <QPalette>
#include <QWidget>

#include <functional>
#include <string>

namespace gallery {

enum class Language { japanese, english };

// Called while a window is open: the name of the scene, and the window.
using Visitor = std::function<void(const std::string& scene, QWidget& window)>;

// Shows one scene after the other, with the program's own forms and variables; no unit is needed. No form is loaded
// afterwards.
void showAll(platform::QtHost& host, Language language, const Visitor& visitor);

// The colours of a dark desktop; it sets only those that most desktops set.
QPalette darkPalette();

} // namespace gallery
