#include "platform/simulated/world.h"

namespace platform {

namespace {

constexpr const char* typeIni = "[AMP_TYPE]\r\n"
                                "1=10000,QT-MVR\r\n"
                                "2=20000,QT-MVR,,30000,QT-MVS\r\n"
                                "[AMP_BIN_TYPE]\r\n"
                                "AMPFIRM=1\r\n"
                                "NULL=1\r\n"
                                "[IFU_TYPE]\r\n"
                                "KP42 UNIT=K42,spare ' old label\r\n"
                                "[IFU_BIN_TYPE]\r\n"
                                "KP42FIRM=K42\r\n"
                                "[IFU_DEFINE]\r\n"
                                "K42=QT-KP42\r\n";

std::string_view textOf(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

} // namespace

World::World(WorldOptions options)
    : unit(std::move(options.unit)), line(&unit, options.pace), image(simulator::makeSampleImage(options.image)) {
    files.put(host.directory + "Setting.INI", "[IFU]\r\nCOM=" + std::to_string(options.comPort) + "\r\n");
    files.put(host.directory + "TYPE.INI", typeIni);
    files.put(firmwarePath, textOf(image));
    port.comPort(options.comPort).line = &line;
    host.chooseFile = [](const FileRequest& request) { return request.save ? savedPath : firmwarePath; };
    setHost(&host);
}

World::~World() {
    setHost(nullptr);
}

void World::restartUnit(Micros off, Micros on) {
    line.at(off, [this, off] { unit.options().silentFrom = off; });
    line.at(on, [this] {
        unit.options().silentFrom.reset();
        unit.restart();
    });
}

} // namespace platform
