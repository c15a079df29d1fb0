#include "soak/order.h"

#include <algorithm>
#include <array>

namespace soak {

namespace {

struct Step {
    Phase from;
    Word word;
    Phase to;
    int most = 0;                // times in a row, 0: any number
    bool ofVerification = false; // only there
};

constexpr int tries = 3;
constexpr int cancelCount = 10;
constexpr std::array steps{
    Step{Phase::starting, Word::askIdentification, Phase::asked},
    Step{Phase::asked, Word::askIdentification, Phase::asked}, // the set button
    Step{Phase::asked, Word::askState, Phase::stated},
    Step{Phase::stated, Word::askVersion, Phase::versioned},
    Step{Phase::versioned, Word::askTypeKey, Phase::typed},
    Step{Phase::typed, Word::askIdentification, Phase::resting},

    Step{Phase::resting, Word::askVersion, Phase::checked},
    Step{Phase::checked, Word::askVersion, Phase::checked}, // the operator has not gone on
    Step{Phase::checked, Word::prepareWrite, Phase::preparing},
    Step{Phase::preparing, Word::prepareWrite, Phase::preparing, tries},
    Step{Phase::preparing, Word::startWrite, Phase::startingWrite},
    Step{Phase::preparing, Word::endTransfer, Phase::closingWrite},
    Step{Phase::startingWrite, Word::startWrite, Phase::startingWrite, tries},
    Step{Phase::startingWrite, Word::block, Phase::sending},
    Step{Phase::startingWrite, Word::endTransfer, Phase::closingWrite},
    Step{Phase::sending, Word::block, Phase::sending},
    Step{Phase::sending, Word::endOfImage, Phase::ending},
    Step{Phase::sending, Word::endTransfer, Phase::closingWrite},
    Step{Phase::ending, Word::endOfImage, Phase::ending},
    Step{Phase::ending, Word::endTransfer, Phase::closingWrite},
    Step{Phase::closingWrite, Word::closeProcedure, Phase::resting},
    Step{Phase::closingWrite, Word::startRead, Phase::startingRead, 1, true},
    Step{Phase::closingWrite, Word::askVersion, Phase::checked, 1, true}, // after a write that failed

    Step{Phase::resting, Word::startRead, Phase::startingRead},
    Step{Phase::checked, Word::startRead, Phase::startingRead},
    Step{Phase::startingRead, Word::startRead, Phase::startingRead, tries},
    Step{Phase::startingRead, Word::nak, Phase::reading},
    Step{Phase::startingRead, Word::endTransfer, Phase::closingRead},
    Step{Phase::reading, Word::ack, Phase::reading},
    Step{Phase::reading, Word::nak, Phase::readEnding},
    Step{Phase::reading, Word::can, Phase::cancelling},
    Step{Phase::reading, Word::endTransfer, Phase::closingRead},
    Step{Phase::readEnding, Word::ack, Phase::readDone},
    Step{Phase::readEnding, Word::can, Phase::cancelling},
    Step{Phase::readEnding, Word::endTransfer, Phase::closingRead},
    Step{Phase::readDone, Word::endTransfer, Phase::closingRead},
    Step{Phase::cancelling, Word::can, Phase::cancelling, cancelCount},
    Step{Phase::cancelling, Word::endTransfer, Phase::closingRead},
    Step{Phase::closingRead, Word::closeProcedure, Phase::resting},
    Step{Phase::closingRead, Word::endTransfer, Phase::closingVerification, 2, true},
    Step{Phase::closingVerification, Word::closeProcedure, Phase::resting},
};

const Step* stepFrom(Phase phase, Word word) {
    const auto fits = [&](const Step& step) { return step.from == phase && step.word == word; };
    const auto step = std::ranges::find_if(steps, fits);
    return step == steps.end() ? nullptr : &*step;
}

// The step that takes the word, from the phase or from one that messages which never came would have led to.
const Step* reachable(Phase phase, Word word, std::uint32_t& seen) {
    const std::uint32_t mark = 1u << static_cast<unsigned>(phase);
    if ((seen & mark) != 0) {
        return nullptr;
    }
    seen |= mark;
    if (const Step* step = stepFrom(phase, word)) {
        return step;
    }
    for (const Step& step : steps) {
        if (step.from == phase) {
            if (const Step* further = reachable(step.to, word, seen)) {
                return further;
            }
        }
    }
    return nullptr;
}

} // namespace

bool Order::take(Word word, bool verifying, bool portFailed) {
    std::uint32_t seen = 0;
    const Step* step = portFailed ? reachable(phase_, word, seen) : stepFrom(phase_, word);
    if (step == nullptr || (step->ofVerification && !verifying)) {
        return false;
    }
    move(step->to, word);
    return step->most == 0 || inARow_ <= step->most;
}

void Order::move(Phase phase, Word word) {
    inARow_ = word == latest_ ? inARow_ + 1 : 1;
    latest_ = word;
    phase_ = phase;
}

bool Order::settled(bool verifying) const {
    return phase_ == Phase::resting || phase_ == Phase::checked ||
           (verifying && (phase_ == Phase::closingWrite || phase_ == Phase::closingRead));
}

} // namespace soak
