#include "SlaveWindows.h"

#include "core/Conversions.h"
#include "core/Form1Controls.h"
#include "core/Module1.h"
#include "core/Yield.h"
#include "core/store/SysCfg.h"

namespace stellwyn::display {

using core::yieldToEvents;

namespace {

// Window k of the first five stands in a column at the right edge of a 1024-pixel screen.
constexpr int columnLeft = 11535;
constexpr std::array<int, 5> columnTop{0, 2025, 4035, 6045, 8055};
constexpr int openWidth = 3615;
constexpr int openHeight = 1995;

QString field(int k, const char* what) {
    return QStringLiteral("slave%1%2").arg(k).arg(QLatin1String(what));
}

} // namespace

ScreenFace slaveFace(std::int16_t smallfonts) {
    if (smallfonts != 0) {
        return {QStringLiteral("Arial"), 48, true, {0, 180, 3495, 1035}};
    }
    return {QStringLiteral("Swiss911 XCm BT"), 72, true, {0, 0, 3495, 1575}};
}

SlaveWindows::SlaveWindows(core::Module1& m, core::Form1Controls& f, QObject* parent)
    : QObject(parent), m_(m), f_(f) {
    for (int k = 0; k < core::slaveCount; ++k) {
        forms_[static_cast<std::size_t>(k)].Caption =
            k == 0 ? QStringLiteral("Slave0") : QStringLiteral("Slave1");
    }
}

const SlaveForm& SlaveWindows::slave(int k) const {
    return forms_.at(static_cast<std::size_t>(k));
}

SlaveForm& SlaveWindows::form(int k) {
    return forms_.at(static_cast<std::size_t>(k));
}

void SlaveWindows::Form_Load(int k) {
    SlaveForm& s = form(k);
    s.face = slaveFace(m_.smallfonts);
    s.loaded = true;
    emit changed(k);
    yieldToEvents();
}

void SlaveWindows::Form_Unload(int k) {
    m_.slaveopen[k] = 0;
    yieldToEvents();
}

// Showing a window loads it first when it is not loaded.
void SlaveWindows::show(int k) {
    if (!form(k).loaded) {
        Form_Load(k);
    }
    SlaveForm& s = form(k);
    s.visible = true;
    ++s.placeVersion;
    emit changed(k);
}

void SlaveWindows::sizeToOpen(int k) {
    SlaveForm& s = form(k);
    s.Caption = m_.scaledesc[k];
    s.Height = openHeight;
    s.Width = openWidth;
    emit changed(k);
}

void SlaveWindows::unload(int k) {
    if (!form(k).loaded) {
        return;
    }
    Form_Unload(k);
    // The form goes back to its design: the next load starts from there.
    SlaveForm& s = form(k);
    s = SlaveForm{};
    s.Caption = k == 0 ? QStringLiteral("Slave0") : QStringLiteral("Slave1");
    emit changed(k);
}

void SlaveWindows::Command11_Click() {
    const std::int16_t k = m_.curscale;
    if (k >= 0 && k < core::slaveCount) {
        show(k);
        if (k < static_cast<int>(columnTop.size())) {
            SlaveForm& s = form(k);
            s.Left = columnLeft;
            s.Top = columnTop[static_cast<std::size_t>(k)];
            s.placed = true;
            ++s.placeVersion;
        }
        sizeToOpen(k);
    }
    yieldToEvents();
    m_.slaveopen[m_.curscale] = 1;
}

void SlaveWindows::btn_saveslave_Click() {
    core::Connection connection = core::Connection::open(m_.cfgconn);
    std::array<core::SlavePlace, core::kSavedSlaves> places{};
    for (int k = 0; k < core::kSavedSlaves; ++k) {
        if (m_.slaveopen[k] == 0) {
            continue;
        }
        emit changed(k);
        yieldToEvents();
        const SlaveForm& s = form(k);
        places[static_cast<std::size_t>(k)] = {true, s.Left, s.Top};
    }
    core::writeSlaveLayout(connection, places);
}

void SlaveWindows::btn_slavesload_Click() {
    slavesload();
    yieldToEvents();
}

void SlaveWindows::slavesload() {
    const core::SysCfgRecord cfg = core::readSysCfg(m_.cfgconn, core::SysCfgPart::SlaveLayout);
    for (int k = 0; k < core::kSavedSlaves; ++k) {
        const std::size_t i = static_cast<std::size_t>(k);
        if (core::toBool16(cfg.slaveEnb[i], field(k, "enb")) == core::vbFalse) {
            continue;
        }
        m_.slaveopen[k] = 1;
        show(k);
        sizeToOpen(k);
        SlaveForm& s = form(k);
        s.Left = core::toInt32(cfg.slaveLeft[i], field(k, "left"));
        s.Top = core::toInt32(cfg.slaveTop[i], field(k, "top"));
        s.placed = true;
        ++s.placeVersion;
        emit changed(k);
        yieldToEvents();
    }
}

void SlaveWindows::btn_closeallslaves_Click() {
    for (int k = 0; k < core::kSavedSlaves; ++k) {
        if (m_.slaveopen[k] == 1) {
            unload(k);
        }
        yieldToEvents();
    }
}

void SlaveWindows::Screen_Click(int k) {
    f_.Combo1.setListIndex(k);
}

void SlaveWindows::moved(int k, int left, int top) {
    SlaveForm& s = form(k);
    s.Left = left;
    s.Top = top;
}

void SlaveWindows::showWeight(int k, const QString& text) {
    SlaveForm& s = form(k);
    if (s.screen != text) {
        s.screen = text;
        emit changed(k);
    }
}

} // namespace stellwyn::display
