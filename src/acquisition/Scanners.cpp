#include "Scanners.h"

#include "AcquisitionContext.h"
#include "ReplyText.h"
#include "collection/StoreReading.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"

#include <QLoggingCategory>

namespace stellwyn::acquisition {

namespace {
Q_LOGGING_CATEGORY(lcAcquisition, "stellwyn.acquisition", QtInfoMsg)
} // namespace

Scanners::Scanners(AcquisitionContext& context)
    : c_(context), scanTable_(context),
      receiveCut_(lcAcquisition(), QStringLiteral("A receive text with no CR")) {}

QByteArray Scanners::receive(const QByteArray& chunk) {
    bool cut = false;
    QByteArray kept = appendReply(c_.m.scalelast[0], chunk, cut);
    if (cut) {
        receiveCut_.cut();
    }
    return kept;
}

bool Scanners::closing() const {
    return c_.m.formclosing != 0;
}

QString Scanners::blz(const QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text.at(i) != u'0') {
            // A text of blanks alone counts as empty, but a blank in front of a value is kept.
            return core::trimBlanks(text).isEmpty() ? QString() : text.mid(i);
        }
    }
    return {};
}

void Scanners::showOnScreen(int i) {
    if (i == c_.m.curscale) {
        c_.f.Screen.caption = c_.m.scaleweight[i];
    }
}

qint64 Scanners::store(const QString& scaleid, const std::optional<QString>& reading) {
    // The count caption that followed a store was written to nothing, so the count on screen
    // is left to the collection pane.
    return collection::store_reading(c_.m, c_.clock, scaleid, reading);
}

void Scanners::excelOutput(qint64 storedId) {
    collection::setExcelRowAfter(c_.m, storedId);
    if (c_.hooks.excelOutput) {
        c_.hooks.excelOutput(c_.f.Combo1.listIndex());
    }
}

} // namespace stellwyn::acquisition
