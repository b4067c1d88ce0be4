#pragma once

#include <QString>

#include <cstdint>

namespace stellwyn::indicator_config {

// The transfers of an indicator's setup between the scale, the working values and the database.
// The pane's buttons and the command interface both drive them through this one face; each
// result is dropped by a command caller.
class ConfigOperations {
public:
    virtual ~ConfigOperations() = default;

    // Group setup.
    virtual std::int16_t save_screen_to_scale(std::int32_t& id) = 0;
    virtual std::int16_t load_screen_from_scale(std::int32_t& id) = 0;
    virtual std::int16_t save_screen_to_db(const QString& name) = 0;
    virtual std::int16_t load_screen_from_db(const QString& name) = 0;

    // Output configuration.
    virtual void move_ocdb_to_ocscreen() = 0;
    virtual std::int16_t upload_oc(std::int32_t& id) = 0;
    virtual void move_scale_to_ocscreen(std::int32_t& id) = 0;
    virtual void move_ocscreen_to_ocdb() = 0;

    // The busy label of the pane; the command interface's clear sequence hides it at the end.
    virtual void hideBusyLabel() = 0;
};

} // namespace stellwyn::indicator_config
