#include "app/program.h"
#include "platform/qt/qtHost.h"

int main() {
    platform::QtHost host;
    platform::setHost(&host);
    program::start();
    host.run();
}
