#include "cli/commandLine.h"

#include "base/exitCode.h"
#include "base/text.h"
#include "base/version.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <string_view>

namespace cli {

namespace {

constexpr const char* description =
    "Identify a sensor amplifier unit, upgrade its firmware or save it, over a serial port.";

constexpr const char* footer = R"(
Exit codes:
  0  done, or nothing to do with --if-different
  1  the transfer failed, or the unit refused it
  2  the command line is wrong
  3  the port cannot be used: it is missing, held or forbidden
  4  no unit answers, or it is not ready: state, sensors, failed check
  5  the file cannot be used: missing, size, unknown, another model; for save: exists, no room, forbidden
  6  TYPE.INI is missing or wrong
  130, 143  broken off by Ctrl-C, by SIGTERM

No question is ever asked. During a transfer a first Ctrl-C only warns; a second one within three seconds breaks the
transfer off.)";

// The number of a text such as COM5, in any case; nullopt for any other text.
std::optional<std::int16_t> comNumber(const std::string& text) {
    constexpr std::string_view prefix = "COM";
    std::int16_t number = 0;
    const std::string name = upperCase(text);
    const char* const end = name.data() + name.size();
    if (name.starts_with(prefix)) {
        const auto [rest, error] = std::from_chars(name.data() + prefix.size(), end, number);
        if (error == std::errc() && rest == end && number >= 1 && number <= highestPort) {
            return number;
        }
    }
    return {};
}

std::string checkPort(const std::string& text) {
    const bool path = text.find_first_of("/\\") != std::string::npos;
    return path || comNumber(text) ? std::string() : "a port is COM1 to COM16, or the path of a device";
}

std::string checkFile(const std::string& text) {
    return trim(text).empty() ? "the name of a file is missing" : "";
}

void addCommands(CLI::App& app, CommandLine& line) {
    const auto unit = [&line](CLI::App* command) {
        command
            ->add_option_function<std::string>(
                "--unit", [&line](const std::string& name) { line.interfaceUnit = name == "interface"; },
                "the part of the unit: amplifier (default) or interface")
            ->check(CLI::IsMember({"amplifier", "interface"}))
            ->option_text("UNIT");
    };
    app.require_subcommand(1);
    app.fallthrough();
    app.add_subcommand("identify", "Print models and versions of both parts of the unit");
    CLI::App* const upgrade = app.add_subcommand("upgrade", "Write a firmware file into the unit");
    upgrade->add_option("FILE", line.file, "the firmware file")->required()->check(checkFile)->option_text(" ");
    unit(upgrade);
    upgrade->add_flag("--verify", line.verify, "read the unit back after the write and compare");
    upgrade->add_flag("--accept-unchecked", line.acceptUnchecked, "write even if the check of the sensor fails");
    upgrade->add_flag("--if-different", line.ifDifferent, "leave a unit alone that has the file's version already");
    CLI::App* const save = app.add_subcommand("save", "Read the firmware of the unit into a file");
    save->add_option("FILE", line.file, "the file to be written")->required()->check(checkFile)->option_text(" ");
    unit(save);
    save->add_flag("--overwrite", line.overwrite, "replace a file that exists");
    app.add_subcommand("ports", "List the serial ports");
}

std::string failureText(const CLI::App* app, const CLI::Error& error) {
    std::string text = error.what();
    if (app->get_parent() == nullptr && app->get_subcommands().empty() && error.get_name() == "RequiredError") {
        const std::vector<std::string> unknown = app->remaining();
        text = unknown.empty()                    ? "a command is missing"
               : unknown.front().starts_with('-') ? unknown.front() + " is not an option"
                                                  : unknown.front() + " is not a command";
        text += "; the commands are identify, upgrade, save and ports";
    }
    return "tarnbeacon-cli: " + text + "\nRun it with --help for more information.\n";
}

void finish(CommandLine& line, const std::string& port) {
    line.portNumber = comNumber(port);
    if (!port.empty() && !line.portNumber) {
        line.device = port;
    }
    line.file = trim(line.file); // as the dialogs of the windows return it
    if (!line.folder.empty()) {
        line.folder = std::filesystem::absolute(line.folder).generic_string() + '/';
    }
}

} // namespace

std::optional<int> readCommandLine(int argc, char** argv, CommandLine& line) {
    CLI::App app(description, "tarnbeacon-cli");
    std::string port;
    app.footer(footer);
    app.failure_message(failureText);
    app.set_version_flag("--version",
                         "tarnbeacon-cli " + std::to_string(program::major) + '.' + std::to_string(program::minor));
    app.add_option("--port", port, "the port: COM1 to COM16, or the path of a device; default: Setting.INI says")
        ->check(checkPort)
        ->take_last()
        ->option_text("PORT");
    app.add_option("--config", line.folder, "the folder of Setting.INI and TYPE.INI")
        ->check(CLI::ExistingDirectory)
        ->option_text("FOLDER");
    app.add_option("--language", line.language, "en or ja; default: the user's")
        ->check(CLI::IsMember({"en", "ja"}))
        ->option_text("LANGUAGE");
    app.add_flag("--json", line.json, "print one JSON object a line");
    app.add_option("--record", line.record, "append a record of the session to FILE")->type_name("FILE");
    app.add_flag("--quiet", line.quiet, "print no progress, and of the messages only errors");
    addCommands(app, line);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& stop) {
        return app.exit(stop) == 0 ? exitCode::done : exitCode::commandLineWrong;
    }
    line.command = app.get_subcommands().front()->get_name();
    finish(line, port);
    return {};
}

} // namespace cli
