#include "AcquisitionContext.h"
#include "ReplyText.h"
#include "Scanners.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"

#include <cstdint>

namespace stellwyn::acquisition {

using core::yieldToEvents;

namespace {
// A scale whose logging was switched on with Check1.
bool loggingOn(std::int16_t flag) {
    return static_cast<std::uint16_t>(flag) > 65534;
}
} // namespace

// A reply that arrived on the Ethernet socket, read as it stands: no wait and no line end needed.
int Scanners::parseweight(const QByteArray& data) {
    core::Module1& m = c_.m;
    QString received;
    bool cut = false;
    appendReply(received, data, cut);
    if (cut) {
        receiveCut_.cut();
    }
    const std::optional<AddressedReply> reply = splitAddress(core::trimBlanks(received));
    if (!reply) {
        return -1;
    }
    const int i = findScale(m, reply->address);
    if (i < 0) {
        return -1;
    }
    m.scaleweight[i] = cutAtLineEnd(reply->text);
    showOnScreen(i);
    if (loggingOn(m.scalelogging[i])) {
        Data_collect();
        yieldToEvents();
    }
    return i;
}

// The row is filed under the scale picked in Combo1, not the one that answered, and its
// emptiness test looks at entry 0 whatever is picked: rows have always been kept that way.
void Scanners::Data_collect() {
    core::Module1& m = c_.m;
    core::Form1Controls& f = c_.f;
    const int n = f.Combo1.listIndex();
    std::optional<QString> reading;
    if (!m.scaleweight[0].isEmpty()) {
        reading = m.scaleweight[n];
    }
    const qint64 id = store(m.scaledesc[n], reading);
    yieldToEvents();
    if (!closing() && f.chk_Excel.value() == 1) {
        excelOutput(id);
    }
}

} // namespace stellwyn::acquisition
