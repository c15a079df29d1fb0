#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace simulator {

// A file descriptor that closes itself.
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

// The unit's end of a pseudo terminal. The other end is raw, and held open here too, so that the tool may open and
// close it at will. Throws std::system_error where the system refuses.
class PseudoTerminal {
  public:
    // Makes the terminal and, unless `link` is empty, a symbolic link to the tool's end. A link that stands there
    // already is replaced, any other file is not.
    explicit PseudoTerminal(const std::filesystem::path& link);
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    // Removes the link.
    ~PseudoTerminal();

    const std::string& device() const { return device_; }
    int descriptor() const { return unitEnd_.number(); }

    // Takes what the tool has written, as much as fits, and gives the number of bytes. Never blocks.
    std::size_t read(std::span<std::uint8_t> bytes);

    // Gives the number of bytes that found room. Never blocks.
    std::size_t write(std::span<const std::uint8_t> bytes);

  private:
    Descriptor unitEnd_;
    std::string device_;
    Descriptor toolEnd_;
    std::filesystem::path link_;
};

} // namespace simulator
