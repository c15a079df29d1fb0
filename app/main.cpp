#include "app/program.h"
#include "platform/qt/qtHost.h"
#include "story/record/recording.h"
#include "ui/serviceScreen.h"

int main(int argc, char** argv) {
    platform::QtHost host;
    const char* build = hiddenControls.cmdPresent.visible ? "service" : "delivered";
    story::Recording recording(host, story::recordOption(argc, argv), {build, platform::systemName()});
    recording.run("start", program::start);
    host.run();
}
