#include "app/program.h"
#include "platform/qt/qtDesktop.h"

int main() {
    platform::QtDesktop desktop;
    platform::setDesktop(&desktop);
    program::start();
    desktop.run();
}
