#pragma once

#include <QByteArray>

namespace stellwyn::sim {

// A misbehaviour of one indicator's replies, armed for a number of replies or for good.
struct Fault {
    enum class Kind {
        Silence,    // no reply at all
        Split,      // the reply in two pieces with a pause between them
        Late,       // the whole reply delayed
        Garbage,    // stray bytes in front of the reply
        LowAddress, // the address byte of the reply replaced by one below 128
        BangNoHash, // a tag opened by "!" that never meets its "#"
        MissingCr,  // the reply without its CR
    };

    Kind kind = Kind::Silence;
    int remaining = 0;    // replies still to spoil; 0 or less spoils every reply
    double seconds = 0.0; // Split: the pause; Late: the delay
    int splitAt = 1;      // Split: bytes in the first piece
    QByteArray bytes;     // Garbage: the bytes sent first
    int address = 127;    // LowAddress: the byte sent instead of the NetID
};

} // namespace stellwyn::sim
