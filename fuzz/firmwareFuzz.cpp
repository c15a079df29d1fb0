// The load of a firmware file. An input gives what the file is: its first byte the length (0: right, else wrong by so
// much), the next 32 the identification block, the rest TYPE.INI.
#include "app/program.h"
#include "base/text.h"
#include "fuzz/check.h"
#include "fuzz/profileOracle.h"
#include "platform/profile.h"
#include "platform/simulated/world.h"
#include "state/variables.h"
#include "ui/forms.h"

#include <cstring>
#include <memory>
#include <span>

namespace {

using platform::World;
using Input = std::span<const std::uint8_t>;

constexpr std::size_t blockOffset = 0x3BF00;
constexpr std::size_t identificationSize = 0x20;
constexpr int loadsOfOneRun = 1000; // a world keeps what its operator has seen

World& startedWorld() {
    static std::unique_ptr<World> world;
    static int loads = 0;
    if (loads++ % loadsOfOneRun == 0) {
        world.reset();
        world = std::make_unique<World>();
        world->desktop.reactionTime = 0;
        world->desktop.run(program::start);
    }
    return *world;
}

// Makes the sample file of the world what the input says.
const std::string& changeFile(World& world, std::uint8_t tooLong, Input block) {
    std::string& file = world.files.find(World::firmwarePath)->content;
    file.resize(static_cast<std::size_t>(imageSize + static_cast<std::int8_t>(tooLong)));
    std::ranges::copy(block, file.begin() + blockOffset);
    return file;
}

// The model of an interface-unit file, empty for any other and where the oracle cannot say, for a value that is cut.
std::string interfaceUnit(const std::vector<profileOracle::Entry>& entries, Input block) {
    std::string type(block.begin() + 0x10, block.end());
    std::ranges::replace(type, '\0', ' ');
    type = trim(textOfBytes(type));
    std::string key = valueOf(entries, "IFU_BIN_TYPE", type.empty() ? "NULL" : type);
    if (key.size() > profileValueLimit) {
        return {};
    }
    std::ranges::replace(key, '\t', ' ');
    key = trim(key.substr(0, key.find('\'')));
    const std::string model = valueOf(entries, "IFU_DEFINE", trim(key.substr(0, key.find(','))));
    return key.empty() || model.size() > profileValueLimit ? ""
                                                           : profileOracle::stripped(model.substr(0, model.find('\'')));
}

void checkRow(const std::string& typeIni, Input block) {
    const FrmMain& form = frmMain();
    const std::string& model = form.lblTitle[2].caption;
    const std::string& version = form.lblVersion[2].caption;
    check(model.empty() == version.empty(), "a row without a model has no version, any other one has one");
    const std::string expected = interfaceUnit(profileOracle::entriesOf(typeIni), block);
    const int rawVersion = block[6] < 0x80 ? block[6] * 256 + block[5] : 0;
    if (!expected.empty() && expected.find('\t') == std::string::npos) {
        check(model == expected && version == thousandthsText(rawVersion), "an interface-unit file shows what it is");
    }
    check(version.size() <= 6, "a version has five digits at the most");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1 + identificationSize) {
        return 0;
    }
    World& world = startedWorld();
    const Input block(data + 1, identificationSize);
    const std::string typeIni(data + 1 + identificationSize, data + size);
    const std::string& file = changeFile(world, data[0], block);
    world.files.put(world.desktop.directory + "TYPE.INI", typeIni);
    FrmMain& form = frmMain();
    form.lblTitle[2].caption = shared.fileTypeName = "before";
    shared.fileLoaded = form.cmdUpgrade.enabled = false;
    const std::size_t boxesBefore = world.desktop.boxes().size();

    world.desktop.run([&] { world.person.perform(platform::click("frmMain", "cmdLoading")); });

    const std::size_t boxes = world.desktop.boxes().size() - boxesBefore;
    check(form.enabled && form.mousePointer != platform::MousePointer::hourglass, "the window comes back");
    check(form.cmdUpgrade.enabled == shared.fileLoaded, "what is loaded can be written");
    check(shared.fileLoaded == (data[0] == 0), "a file of the right size is loaded, any other is not");
    check(world.desktop.violations().empty(), "no failure leaves an event");
    if (!shared.fileLoaded) {
        check(boxes == 0 && form.lblTitle[2].caption == "before", "a file of another size changes nothing");
        return 0;
    }
    check(boxes <= 2, "a version and an entry can be reported");
    check(std::memcmp(file.data(), shared.firmwareImage.data(), file.size()) == 0, "the image is the file");
    checkRow(typeIni, block);
    return 0;
}
