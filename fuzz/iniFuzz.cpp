// The INI reader, the list, and the load of a firmware file with its model lookups. The first line of an input is the key that
// is looked up and the type text of the file, the second one a raw version; what follows is the text of both INI files.
#include "app/program.h"
#include "base/text.h"
#include "configuration/iniFiles.h"
#include "fuzz/check.h"
#include "platform/profile.h"
#include "platform/simulated/world.h"
#include "state/variables.h"
#include "ui/forms.h"

#include <algorithm>
#include <optional>
#include <sstream>

namespace {

using platform::World;

void checkReader(const std::string& text, const std::string& key) {
    for (const std::string section : {"AMP_TYPE", "IFU_DEFINE", "IFU"}) {
        const std::string value = profileValue(text, section, key);
        check(value.size() <= profileValueLimit && text.find(value) != std::string::npos,
              "a value is a part of the file");
        check(value == profileValue(text, upperCase(section), upperCase(key)), "case does not matter");
        check(value.empty() || profileValue(text + "\n[" + section + "]\n" + key + "=other", section, key) == value,
              "the first value counts");
        const std::string cleaned = cleanedValue(value);
        check(cleaned == trim(cleaned) && cleaned.find_first_of("'\t") == std::string::npos, "a value is cleaned");
    }
    std::string list = text;
    const auto items = std::ranges::count(text, ',') + 1;
    check(Common::fncSplitList(list) == std::min<std::ptrdiff_t>(items, 101), "a list is split at its commas");
    for (const std::string& item : Common::ini.iniList) {
        check(item == trim(item) && item.find_first_of(",\t") == std::string::npos, "an item is clean");
    }
}

void checkLoad(World& world, const std::string& typeText, std::int32_t rawVersion) {
    const Bytes image =
        simulator::makeSampleImage({.typeText = typeText, .rawVersion = static_cast<std::uint16_t>(rawVersion)});
    world.files.put(World::firmwarePath, {reinterpret_cast<const char*>(image.data()), image.size()});
    const std::size_t boxesBefore = world.host.boxes().size();
    world.host.run([&] { world.theOperator.perform(platform::click("frmMain", "cmdLoading")); });
    const FrmMain& form = frmMain();
    check(form.enabled && form.cmdUpgrade.enabled && form.mousePointer != platform::MousePointer::hourglass &&
              shared.fileLoaded && world.host.violations().empty(),
          "the window is enabled again and a loaded file can be written");
    check(world.host.boxes().size() - boxesBefore <= 2, "a version and an entry can be reported");
    check(std::ranges::equal(image, std::span(shared.firmwareImage).first(image.size())), "the image is the file");
    check(form.lblTitle[2].caption.empty() == form.lblVersion[2].caption.empty(), "a model has a version");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static std::optional<World> world;
    if (static int run = 0; run++ % 1000 == 0) { // a World keeps all its records
        world.reset();
        world.emplace();
        world->host.reactionTime = 0;
        world->host.run(program::start);
    }
    std::istringstream input(std::string(data, data + size));
    std::string key;
    std::string version;
    std::getline(input, key);
    std::getline(input, version);
    const auto rawVersion = static_cast<std::int32_t>(std::strtol(version.c_str(), nullptr, 10));
    const std::string text(std::istreambuf_iterator<char>(input), {});
    world->files.put(world->host.directory + "TYPE.INI", text);
    world->files.put(world->host.directory + "Setting.INI", text);
    checkReader(text, key);
    checkLoad(*world, key, rawVersion);
    const std::size_t boxesBefore = world->host.boxes().size();
    const bool fits = Common::fncReadSetting();
    check(fits == (world->host.boxes().size() == boxesBefore), "a port number that does not fit is reported");
    check(fits || shared.comPortNumber == 1, "the port is then 1");
    return 0;
}
