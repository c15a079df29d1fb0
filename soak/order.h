// What the procedures allow the tool to say, and when.
#pragma once

#include "soak/toolReader.h"

namespace soak {

enum class Phase {
    starting, // of the program
    asked,    // 0501 has gone out
    stated,   // 0601
    versioned,
    typed,
    resting,
    checked,
    preparing,
    startingWrite,
    sending, // blocks
    ending,  // EOT
    closingWrite,
    startingRead,
    reading,
    readEnding, // the first EOT is answered
    readDone,   // the second one
    cancelling,
    closingRead,
    closingVerification,
};

class Order {
  public:
    Phase phase() const { return phase_; }

    // Takes a message of the tool. False when it has no business to come here. A write or read with verification has an
    // order of its own. Where the port has failed, messages may be missing.
    bool take(Word word, bool verifying, bool portFailed);

    // The program waits for the operator.
    void rest() { move(Phase::resting, Word::unknown); }

    // Nothing that the procedures owe the unit is missing.
    bool settled(bool verifying) const;

    // An image is on its way, in or out.
    bool writes() const { return phase_ >= Phase::startingWrite && phase_ <= Phase::ending; }
    bool reads() const { return phase_ >= Phase::reading && phase_ <= Phase::cancelling; }

  private:
    void move(Phase phase, Word word);

    Phase phase_ = Phase::starting;
    Word latest_ = Word::unknown;
    int inARow_ = 0; // how often the latest word has come
};

} // namespace soak
