// What faults make of bytes on the line.
#pragma once

#include "simulator/wire.h"
#include "soak/random.h"

#include <string>

namespace soak {

void flipBits(Bytes& bytes, Random& random);
void loseBytes(Bytes& bytes, Random& random);
void doubleByte(Bytes& bytes, Random& random);
void insertBytes(Bytes& bytes, Random& random); // control bytes, mostly
void cutShort(Bytes& bytes, Random& random);

// Changes two data bytes of a block so that their sum stays; anything else stays as it is.
void hideInSum(Bytes& bytes, Random& random);

// Change a field of a reply frame and put its block check right; anything else stays as it is.
void changeCommandCode(Bytes& bytes, Random& random);
void changeResultCode(Bytes& bytes, Random& random);
void changeData(Bytes& bytes, Random& random);
void changeEndCode(Bytes& bytes, Random& random);

// A byte that the other side may take for an answer, or any.
std::uint8_t strayByte(Random& random);

// Result codes that the program knows, and any others.
std::string someResultCode(Random& random);

} // namespace soak
