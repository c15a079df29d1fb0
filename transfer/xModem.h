// The XMODEM sender: 128-byte blocks, CRC or checksum by the receiver's first byte.
#pragma once

#include "base/bytes.h"

#include <cstdint>

namespace xModem {

// Control bytes on the wire.
constexpr std::uint8_t soh = 0x01;
constexpr std::uint8_t eot = 0x04;
constexpr std::uint8_t ack = 0x06;
constexpr std::uint8_t nak = 0x15;
constexpr std::uint8_t can = 0x18;
constexpr std::uint8_t crcRequest = 'C';

// Results of a transfer that has failed; 0 is success. A transfer that ends with a failure of the port has the number of
// that failure.
constexpr std::int32_t tooManyRetries = 0x1001;
constexpr std::int32_t timedOut = 0x1002;
constexpr std::int32_t cancelled = 0x1003;

// Places in a block.
constexpr std::int32_t headerSize = 3;

extern bool waitTimedOut; // the present wait for a byte; set by timerWait

// Sends shared.firmwareImage, 1,920 blocks and EOT, and returns 0 when the unit has acknowledged EOT. Window events run
// while it waits for the unit: 60 s for the first byte, 10 s for each reply; a packet is sent ten times at most.
// Shows a failure of the port's write; any other failure of the port is thrown.
std::int32_t xModemS();

// The next received byte, or timedOut when none has come within `limit` milliseconds. Window events run meanwhile.
std::int16_t pWaitByte(std::int32_t limit);

// Discards received bytes, so that a late answer does not count for this packet, and writes the packet. Returns 0, or
// the number of a failure that it has shown.
std::int32_t pSendPacket(const Bytes& packet);

// The CRC of XMODEM over `nByte` bytes of `tData` from index `nPtr` on: polynomial 0x1021, start value 0, most
// significant bit first, no final XOR (J. Byrns, "XMODEM/CRC Protocol Overview", 1985).
std::int32_t pCrcCalc(std::int16_t nByte, const Bytes& tData, std::int16_t nPtr);

} // namespace xModem
