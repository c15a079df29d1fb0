#include "simulator/journal.h"

#include <sstream>

namespace simulator {

std::string journalText(const Journal& journal) {
    std::ostringstream text;
    text << "frames:";
    for (const ReceivedFrame& frame : journal.frames) {
        text << ' ' << frame.text << (frame.good ? "" : "!");
    }
    text << "\noperations:";
    for (const std::string& operation : journal.operations) {
        text << ' ' << operation;
    }
    text << "\nblocks: " << journal.blocksAccepted << " accepted, " << journal.blocksRefused << " refused, "
         << journal.blocksRepeated << " repeated";
    text << "\nends: " << journal.ends << ", cancels: " << journal.cancels;
    text << "\nimage: " << (journal.imageComplete ? "complete" : journal.packets > 0 ? "incomplete" : "none");
    if (journal.imageComplete) {
        text << " in " << journal.receiveTime / 1000 << " ms";
    }
    text << "\nsent: " << journal.blocksSent << " blocks in " << journal.packetsSent << " packets\n";
    return text.str();
}

} // namespace simulator
