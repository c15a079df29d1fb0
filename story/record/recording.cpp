#include "story/record/recording.h"

#include "base/failure.h"
#include "base/version.h"
#include "platform/profile.h"
#include "story/record/shortLines.h"
#include "story/record/text.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace story {

using platform::Host;

namespace {

class SessionFile : public SessionSink {
  public:
    SessionFile(Host& host, const std::string& path) : host_(host) {
        attempt([&] {
            file_ = host.files().openBinary(path, platform::FileAccess::extend);
            at_ = host.files().length(path);
            std::array<std::uint8_t, 1> last{'\n'};
            if (at_ > 0) {
                file_->read(at_ - 1, last);
            }
            unwritten_ = last[0] == '\n' ? "" : "\n"; // a session that was cut off
        });
    }

    void add(std::string_view line, bool) override {
        if (!file_) {
            return;
        }
        const ShortLines::Change change = short_.add(line);
        const std::size_t unwritten = std::min(change.back, unwritten_.size());
        unwritten_.resize(unwritten_.size() - unwritten);
        at_ -= static_cast<std::int64_t>(change.back - unwritten);
        unwritten_ += change.text;
    }

    void flush() override {
        if (file_ && !unwritten_.empty()) {
            attempt([this] {
                file_->write(at_, {reinterpret_cast<const std::uint8_t*>(unwritten_.data()), unwritten_.size()});
                at_ += std::ssize(unwritten_);
                unwritten_.clear();
            });
        }
    }

  private:
    template <class Action>
    void attempt(Action action) {
        try {
            action();
        } catch (const Failure& failure) {
            file_.reset();
            log("The record of this session ends: " + failure.description());
        }
    }

    void log(const std::string& text) {
        try {
            host_.files().appendLine(host_.programDirectory() + "KelpLog.txt", host_.dateAndTime() + ' ' + text);
        } catch (const Failure&) {
            return; // the program goes on without it
        }
    }

    Host& host_;
    std::unique_ptr<platform::BinaryFile> file_;
    std::int64_t at_ = 0; // where the unwritten text goes
    std::string unwritten_;
    ShortLines short_;
};

std::string settingOf(Host& host) {
    return cleanedValue(
        getPrivateProfileString(host.files(), "RECORD", "FILE", host.programDirectory() + "Setting.INI"));
}

std::string contentOf(Host& host, const std::string& path) {
    try {
        return host.files().readAll(path);
    } catch (const Failure&) {
        return {}; // the program's own read will tell
    }
}

} // namespace

std::string recordOption(int argc, const char* const* argv) {
    for (int at = 1; at + 1 < argc; ++at) {
        if (std::strcmp(argv[at], "--record") == 0) {
            return argv[at + 1];
        }
    }
    return {};
}

std::string headOf(Host& host, const ProgramNames& names, KnownFiles& known) {
    const platform::Size screen = host.screenSize();
    std::string head = recordedMark;
    head += std::string(". program ") + program::name + ' ' + std::to_string(program::major) + '.' +
            std::to_string(program::minor) + ", " + names.build + ", " + names.system + '\n';
    head += ". directory " + escaped(host.programDirectory()) + '\n';
    if (const auto port = host.givenPort()) {
        head += ". port " + std::to_string(*port) + '\n';
    }
    head += ". screen " + std::to_string(screen.width) + ' ' + std::to_string(screen.height) + '\n';
    for (const char* name : {"Setting.INI", "TYPE.INI"}) {
        const std::string path = host.programDirectory() + name;
        if (const std::string content = contentOf(host, path); !content.empty()) {
            known.content(path, 0, content);
            head += ". content 0 " + std::to_string(content.size()) + ' ' + escaped(path) + '\n' + rowsOf(content);
        }
    }
    return head;
}

Recording::Recording(Host& host, const std::string& option, const ProgramNames& names) {
    platform::setHost(&host);
    const std::string path = option.empty() ? settingOf(host) : option;
    if (!path.empty()) {
        KnownFiles known;
        file_ = std::make_unique<SessionFile>(host, path);
        file_->add("== session of " + host.dateAndTime() + '\n' + headOf(host, names, known), false);
        host_ = std::make_unique<RecordingHost>(host, *file_, std::move(known));
        platform::setHost(host_.get());
    }
}

Recording::~Recording() = default;

void Recording::run(const std::string& event, const std::function<void()>& handler) {
    host_ ? host_->event(event, handler) : handler();
}

} // namespace story
