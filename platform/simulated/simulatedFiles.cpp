#include "platform/simulated/simulatedFiles.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

[[noreturn]] void fail(int number, const std::string& path, const std::string& cause) {
    throw Failure(number, path + ": " + cause);
}

std::string_view readablePart(const std::string& path, const SimulatedFile& file) {
    if (file.unreadable) {
        fail(failureNumber::fileRefused, path, "the file may not be read");
    }
    return std::string_view(file.content).substr(0, file.readable.value_or(std::string::npos));
}

} // namespace

// A file opened for reading, or a copy opened for writing.
class OpenSimulatedFile : public BinaryFile {
  public:
    OpenSimulatedFile(SimulatedFiles& disk, std::string path, std::shared_ptr<SimulatedFile> file, FileAccess access)
        : disk_(disk), path_(std::move(path)), file_(std::move(file)), sizeBefore_(file_->content.size()),
          isCopy_(access == FileAccess::write) {}

    ~OpenSimulatedFile() override {
        if (file_ != nullptr) {
            release();
        }
    }

    void read(std::int64_t offset, std::span<std::uint8_t> bytes) override {
        disk_.operations_.pass(Operation::readFile);
        requireOpen();
        const std::string_view content = readablePart(path_, *file_);
        const auto start = static_cast<std::size_t>(offset);
        if (start > content.size() || content.size() - start < bytes.size()) {
            fail(failureNumber::fileBroken, path_, "the file ends too early");
        }
        content.copy(reinterpret_cast<char*>(bytes.data()), bytes.size(), start);
    }

    void write(std::int64_t offset, std::span<const std::uint8_t> bytes) override {
        complete_ = false;
        disk_.operations_.pass(Operation::writeFile);
        requireOpen();
        const std::string text(bytes.begin(), bytes.end());
        disk_.store(path_, *file_, static_cast<std::size_t>(offset), text);
        complete_ = true;
    }

    void close() override {
        requireOpen();
        const auto file = release();
        disk_.operations_.pass(Operation::closeFile);
        if (!complete_) {
            fail(failureNumber::fileBroken, path_, "not all bytes were written");
        }
        if (isCopy_) {
            disk_.files_[path_] = file;
            disk_.takeRoom(file->content.size() - sizeBefore_);
        }
    }

  private:
    void requireOpen() const {
        if (file_ == nullptr) {
            fail(failureNumber::fileBroken, path_, "the file is closed");
        }
    }

    // Gives back the room that the copy takes.
    std::shared_ptr<SimulatedFile> release() {
        disk_.takeRoom(sizeBefore_ - file_->content.size());
        return std::exchange(file_, nullptr);
    }

    SimulatedFiles& disk_;
    std::string path_;
    std::shared_ptr<SimulatedFile> file_; // nullptr after close()
    std::size_t sizeBefore_;
    bool isCopy_;
    bool complete_ = true; // no write has failed
};

void SimulatedFiles::put(const std::string& path, std::string_view content) {
    files_[path] = std::make_shared<SimulatedFile>(SimulatedFile{.content = std::string(content)});
}

SimulatedFile* SimulatedFiles::find(const std::string& path) {
    const auto at = files_.find(path);
    return at == files_.end() ? nullptr : at->second.get();
}

void SimulatedFiles::refuseFolder(const std::string& path) const {
    const std::string folder = path.ends_with('/') ? path : path + '/';
    const auto inside = files_.lower_bound(folder);
    if (inside != files_.end() && inside->first.starts_with(folder)) {
        fail(failureNumber::fileRefused, path, "a folder is no file");
    }
}

SimulatedFile& SimulatedFiles::required(const std::string& path) {
    refuseFolder(path);
    SimulatedFile* file = find(path);
    if (file == nullptr) {
        fail(failureNumber::fileNotFound, path, "the file does not exist");
    }
    return *file;
}

SimulatedFile SimulatedFiles::copyOf(const std::string& path) {
    refuseFolder(path);
    const SimulatedFile* file = find(path);
    if (file != nullptr && file->readOnly) {
        fail(failureNumber::fileRefused, path, "the file may not be written");
    }
    return file == nullptr ? SimulatedFile() : *file;
}

void SimulatedFiles::takeRoom(std::size_t bytes) {
    if (room_) {
        *room_ -= bytes; // modulo: a negative number gives room back
    }
}

void SimulatedFiles::store(const std::string& path, SimulatedFile& file, std::size_t offset, std::string_view bytes) {
    const std::size_t present = file.content.size();
    std::size_t end = std::max(present, offset + bytes.size());
    const bool fits = !room_ || end - present <= *room_;
    if (!fits) {
        end = present + *room_;
        bytes = bytes.substr(0, end > offset ? end - offset : 0);
    }
    takeRoom(end - present);
    file.content.resize(end);
    std::ranges::copy(bytes, file.content.begin() + static_cast<std::ptrdiff_t>(std::min(offset, end)));
    if (!fits) {
        fail(failureNumber::fileBroken, path, "no room left on the disk");
    }
}

bool SimulatedFiles::exists(const std::string& path) {
    operations_.pass(Operation::fileExists);
    return find(path) != nullptr;
}

std::int64_t SimulatedFiles::length(const std::string& path) {
    operations_.pass(Operation::fileLength);
    return static_cast<std::int64_t>(required(path).content.size());
}

std::unique_ptr<BinaryFile> SimulatedFiles::openBinary(const std::string& path, FileAccess access) {
    operations_.pass(Operation::openFile);
    if (access == FileAccess::read) {
        readablePart(path, required(path));
        return std::make_unique<OpenSimulatedFile>(*this, path, files_.at(path), access);
    }
    return std::make_unique<OpenSimulatedFile>(
        *this, path, access == FileAccess::extend ? presentFile(path) : std::make_shared<SimulatedFile>(copyOf(path)),
        access);
}

// The file itself; creates a missing one.
std::shared_ptr<SimulatedFile> SimulatedFiles::presentFile(const std::string& path) {
    copyOf(path); // fails where the file may not be written
    std::shared_ptr<SimulatedFile>& file = files_[path];
    if (file == nullptr) {
        file = std::make_shared<SimulatedFile>();
    }
    return file;
}

std::string SimulatedFiles::readAll(const std::string& path) {
    operations_.pass(Operation::readWholeFile);
    const SimulatedFile& file = required(path);
    const std::string_view content = readablePart(path, file);
    if (content.size() < file.content.size()) {
        fail(failureNumber::fileBroken, path, "the file cannot be read to its end");
    }
    return std::string(content);
}

void SimulatedFiles::appendLine(const std::string& path, const std::string& text) {
    operations_.pass(Operation::appendLine);
    const std::shared_ptr<SimulatedFile> file = presentFile(path);
    store(path, *file, file->content.size(), text + '\n');
}

} // namespace platform
