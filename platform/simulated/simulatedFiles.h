// The disk of the simulated host, in memory. Paths are compared as exact texts; a folder exists if a file is in it.
#pragma once

#include "platform/files.h"
#include "platform/simulated/operationGate.h"

#include <map>
#include <optional>
#include <string_view>

namespace platform {

struct SimulatedFile {
    std::string content;
    bool readOnly = false;
    bool unreadable = false;
    std::optional<std::size_t> readable = std::nullopt; // a read beyond this offset fails
};

class SimulatedFiles : public Files {
  public:
    explicit SimulatedFiles(const VirtualClock& clock) : operations_(clock) {}

    void put(const std::string& path, std::string_view content);
    void remove(const std::string& path) { files_.erase(path); } // an open file stays usable
    SimulatedFile* find(const std::string& path);

    // Free space in bytes; nullopt: unlimited. A write that does not fit stores the part that fits, and fails.
    void setRoom(std::optional<std::size_t> bytes) { room_ = bytes; }
    OperationGate& operations() { return operations_; }

    bool exists(const std::string& path) override;
    std::int64_t length(const std::string& path) override;
    std::unique_ptr<BinaryFile> openBinary(const std::string& path, FileAccess access) override;
    std::string readAll(const std::string& path) override;
    void appendLine(const std::string& path, const std::string& text) override;

  private:
    friend class OpenSimulatedFile;

    void refuseFolder(const std::string& path) const;
    SimulatedFile& required(const std::string& path);
    SimulatedFile copyOf(const std::string& path); // empty for a missing file
    void takeRoom(std::size_t bytes);
    std::shared_ptr<SimulatedFile> presentFile(const std::string& path);
    void store(const std::string& path, SimulatedFile& file, std::size_t offset, std::string_view bytes);

    OperationGate operations_;
    std::map<std::string, std::shared_ptr<SimulatedFile>> files_;
    std::optional<std::size_t> room_;
};

} // namespace platform
