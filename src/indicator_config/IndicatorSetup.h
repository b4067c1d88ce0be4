#pragma once

#include "ConfigOperations.h"
#include "SetupPane.h"

#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <optional>

namespace stellwyn::core {
class Dialogs;
}

namespace stellwyn::acquisition {
struct AcquisitionContext;
class ModeTimers;
} // namespace stellwyn::acquisition

namespace stellwyn::indicator_config {

// The transfers of an indicator's own setup: the group setup, the output configuration and the
// totals, between the scale, the on-screen fields of the setup pane and the database. Reads
// stop the timers and give the mode back afterwards; writes go out while the timers poll.
class IndicatorSetup final : public ConfigOperations {
public:
    static constexpr int groupValueCount = 6;
    static constexpr int outputItemCount = 44;
    // The words of a group reply that hold the six values.
    static constexpr int firstGroupValueWord = 31;

    IndicatorSetup(acquisition::AcquisitionContext& context, acquisition::ModeTimers& timers,
                   core::Dialogs& dialogs);

    // Wires the pane's buttons to their handlers.
    void attach();

    SetupPane& pane() { return pane_; }

    // The on-screen fields. Group values are kept as the text shown; an empty one goes out as 0.
    const std::array<QString, groupValueCount>& groupValues() const { return groupValues_; }
    // Refuses what the "000.0" frame field cannot carry, saying why; nothing changes then.
    std::optional<QString> setGroupValue(int index, const QString& text);
    // The operator's edit of a value on the pane: a refusal is told, and the value stays.
    void editGroupValue(int index, const QString& text);
    const QStringList& outputItems() const { return outputItems_; }
    // The words of the last totals reply.
    const QStringList& totalsWords() const { return totalsWords_; }

    // ConfigOperations.
    std::int16_t save_screen_to_scale(std::int32_t& id) override;
    std::int16_t load_screen_from_scale(std::int32_t& id) override;
    std::int16_t save_screen_to_db(const QString& name) override;
    std::int16_t load_screen_from_db(const QString& name) override;
    void move_ocdb_to_ocscreen() override;
    std::int16_t upload_oc(std::int32_t& id) override;
    void move_scale_to_ocscreen(std::int32_t& id) override;
    void move_ocscreen_to_ocdb() override;
    void hideBusyLabel() override;

    // Does nothing: the output configuration goes to a scale through upload_oc.
    void move_ocscreen_to_scale() {}
    std::int16_t read_totals();
    // Sends the clear of the totals to the scale at this address, then waits 2.4 seconds for
    // the indicator to clear; reads nothing back. The busy label shows while it runs.
    void clearTotals(std::int32_t id);

    // The pane's handlers; each asks first and goes on only on Yes.
    void grp_loaddefaults_Click();
    void grp_savedefaults_Click();
    void grp_download_Click();
    void grp_loaddb_Click();
    void grp_savedb_Click();
    void grp_upload_Click();
    void grp_uploadall_Click();
    void oc_loaddefaults_Click();
    void oc_savedefaults_Click();
    void oc_download_Click();
    void oc_upload_Click();
    void oc_uploadall_Click();
    void totals_read_Click();
    void reset_totals();

    // The value as the "000.0" field of a group frame carries it.
    static QString groupFrameValue(const QString& text);

private:
    // How a request for a configuration reply ended.
    enum class Exchange {
        Reply,         // text holds the reply, address and line end taken off
        Failed,        // a message was shown; the read gives the mode back
        Dropped,       // an empty reply or a bad address byte: nothing was said
        NoResponse232, // the no-response box was shown after a beep
    };
    Exchange exchange(char code, std::int32_t id, bool goOnAfterTimeouts, QString& text);
    Exchange usb485Exchange(char code, std::int32_t id, bool goOnAfterTimeouts, QString& text);
    Exchange rs232Exchange(char code, QString& text);
    // net_stat_get, single mode without polling, halttimers.
    void stopForRead();
    void threeDelays();
    void delays(int count);
    void busy(bool on);

    // The frames of a write.
    void put(const QByteArray& bytes);
    void closeWrite(std::int32_t id);
    void sendGroupRs232();
    void sendGroupUsb485(std::int32_t id);

    QString combo1Text() const;
    std::int16_t groupKey(const QString& name) const;
    std::int32_t selectedNetId() const;

    acquisition::AcquisitionContext& c_;
    acquisition::ModeTimers& timers_;
    core::Dialogs& dialogs_;
    SetupPane pane_;
    std::array<QString, groupValueCount> groupValues_;
    QStringList outputItems_;
    QStringList totalsWords_;
};

} // namespace stellwyn::indicator_config
