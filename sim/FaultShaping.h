#pragma once

#include "Indicator.h"

#include <QByteArray>
#include <QList>

namespace stellwyn::sim {

// One piece of a reply and how long after the normal reply time it may start.
struct ReplyPiece {
    QByteArray bytes;
    double delay = 0.0;
};

// Counts down an armed fault of this kind; true when it spoils the reply at hand.
bool useFault(Indicator& indicator, Fault::Kind kind);

// Applies the indicator's armed faults to one reply about to go out. An empty list is silence.
// The broken tag is not handled here: it changes the text, not the sending.
QList<ReplyPiece> shapeReply(Indicator& indicator, QByteArray reply, bool addressed);

} // namespace stellwyn::sim
