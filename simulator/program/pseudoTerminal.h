#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace simulator {

// Owns a file descriptor.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();

    int number() const { return number_; }

  private:
    int number_ = -1;
};

// The unit's end of a pseudo terminal. The other end is raw and also kept open here, so that the program can close and reopen
// it. Throws std::system_error when a system call fails.
class PseudoTerminal {
  public:
    // Creates the terminal and, unless `link` is empty, a symbolic link to the program's end. Replaces an existing link, but
    // no other file.
    explicit PseudoTerminal(const std::filesystem::path& link);
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Removes the link.
    ~PseudoTerminal();

    const std::string& device() const { return device_; }
    int descriptor() const { return unitEnd_.number(); }

    // Reads what the program has written, as much as fits, and returns the number of bytes. Never blocks.
    std::size_t read(std::span<std::uint8_t> bytes);

    // Returns the number of bytes written. Never blocks.
    std::size_t write(std::span<const std::uint8_t> bytes);

  private:
    Descriptor unitEnd_;
    std::string device_;
    Descriptor toolEnd_;
    std::filesystem::path link_;
};

} // namespace simulator
