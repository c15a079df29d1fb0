// Every window of the program, in every state worth a look, in either language: for pictures, and for tests of what the
// windows say.
#pragma once

#include "platform/qt/qtDesktop.h"

#include <QPalette>
#include <QWidget>

#include <functional>
#include <string>

namespace gallery {

enum class Language { japanese, english };

// Called while a window stands: the name of the scene, and the window.
using Look = std::function<void(const std::string& scene, QWidget& window)>;

// Brings up one scene after the other. Forms and variables are those of the program, but no routine of it has run
// that needs a unit; nothing is loaded afterwards.
void showAll(platform::QtDesktop& desktop, Language language, const Look& look);

// The colours of a dark desktop, which names no more of them than most do.
QPalette darkPalette();

} // namespace gallery
