// The INI reader, the list, the model lookups and the load of a firmware file. The first line of an input is the key that
// is looked up and the type text of the file, the second one a raw version; what follows is the text of both INI files.
#include "app/program.h"
#include "base/text.h"
#include "fuzz/check.h"
#include "platform/profile.h"
#include "platform/simulated/world.h"
#include "startup/configuration.h"
#include "state/variables.h"
#include "ui/forms.h"

#include <algorithm>
#include <memory>

namespace {

using platform::World;

// A world keeps what its operator has seen, so it is made anew from time to time.
World& startedWorld() {
    constexpr int runs = 1000;
    static std::unique_ptr<World> world;
    static int run = 0;
    if (run++ % runs == 0) {
        world.reset();
        world = std::make_unique<World>();
        world->desktop.reactionTime = 0;
        world->desktop.run(program::start);
    }
    return *world;
}

std::string takeLine(std::string_view& input) {
    const std::size_t end = std::min(input.find('\n'), input.size());
    std::string line(input.substr(0, end));
    input.remove_prefix(std::min(end + 1, input.size()));
    return line;
}

void checkReader(const std::string& text, const std::string& key) {
    for (const std::string section : {"AMP_TYPE", "IFU_DEFINE", "IFU"}) {
        const std::string value = profileValue(text, section, key);
        check(value.size() <= profileValueLimit, "a value keeps its limit");
        check(text.find(value) != std::string::npos, "a value stands in the file");
        check(value == profileValue(text, upperCase(section), upperCase(key)), "case does not matter");
        if (!value.empty()) {
            check(profileValue(text + "\n[" + section + "]\n" + key + "=other", section, key) == value,
                  "the first value counts");
        }
        const std::string cleaned = cleanedValue(value);
        check(cleaned == trim(cleaned) && cleaned.find_first_of("'\t") == std::string::npos, "a value is cleaned");
    }
}

void checkList(std::string list) {
    const auto commas = std::ranges::count(list, ',');
    check(Common::fncSplitList(list) == std::min<std::ptrdiff_t>(commas + 1, 101), "a list is split at its commas");
    for (const std::string& item : shared.iniList) {
        check(item == trim(item) && item.find_first_of(",\t") == std::string::npos, "an item is clean");
    }
}

void checkAmplifier(const std::string& key, std::int32_t rawVersion) {
    std::string typeName = "before";
    std::int32_t version = -1;
    try {
        if (Common::fncGetAmpType(key, rawVersion, typeName, version)) {
            check(version >= 0 && version <= 9999, "a version lies in its range");
        } else {
            check((typeName.empty() && version == 0) || (typeName == "before" && version == -1),
                  "an unknown version empties both, an unknown type neither");
        }
    } catch (const Failure& failure) {
        check(failure.number() == failureNumber::overflow || shared.iniList.size() < 5, "only what is missing fails");
    }
}

void checkLoad(World& world, const std::string& typeText, std::int32_t rawVersion) {
    simulator::SampleImage sample{.typeText = typeText, .rawVersion = static_cast<std::uint16_t>(rawVersion)};
    const Bytes image = simulator::makeSampleImage(sample);
    world.files.put(World::firmwarePath, {reinterpret_cast<const char*>(image.data()), image.size()});
    const std::size_t boxesBefore = world.desktop.boxes().size();
    world.desktop.run([&] { world.person.perform(platform::click("frmMain", "cmdLoading")); });
    const FrmMain& form = frmMain();
    check(form.enabled && form.mousePointer != platform::MousePointer::hourglass, "the window comes back");
    check(shared.fileLoaded && form.cmdUpgrade.enabled, "what is loaded can be written");
    check(world.desktop.violations().empty(), "no failure leaves an event");
    check(world.desktop.boxes().size() - boxesBefore <= 2, "a version and an entry can be reported");
    check(std::ranges::equal(image, std::span(shared.firmwareImage).first(image.size())), "the image is the file");
    check(form.lblTitle[2].caption.empty() == form.lblVersion[2].caption.empty(), "a model has a version");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    World& world = startedWorld();
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string key = takeLine(input);
    const auto rawVersion = static_cast<std::int32_t>(std::strtol(takeLine(input).c_str(), nullptr, 10));
    const std::string text(input);
    world.files.put(world.desktop.directory + "TYPE.INI", text);
    world.files.put(world.desktop.directory + "Setting.INI", text);
    checkReader(text, key);
    checkList(text);
    checkAmplifier(key, rawVersion);
    checkLoad(world, key, rawVersion);
    const std::size_t boxesBefore = world.desktop.boxes().size();
    const bool fits = Common::fncReadSetting();
    check(fits == (world.desktop.boxes().size() == boxesBefore), "a port number that does not fit is reported");
    check(fits || shared.comPortNumber == 1, "the port is then 1");
    return 0;
}
