#pragma once

#include "links/UsbLink.h"

#include <QString>

namespace stellwyn::indicator_config::texts {

// The texts the transfers say or show, each written once here.

inline QString noResponse() {
    return QStringLiteral(
        "There is no response from the scale.\r"
        "Please make sure that the scale is interfaced properly and is connected to COM1.\r"
        "The communication speed needs to be set to 9600 baud.\r"
        "The scale also needs to be in its main weighing screen in order to communicate.\r"
        "Aborting operation.\r");
}
inline QString scaleNotResponding() {
    return QStringLiteral("Scale not responding.");
}
inline QString setFlowControlFailed() {
    return links::UsbLink::flowControlFailed();
}
inline QString notSuccessful() {
    return QStringLiteral("Operation was not successful");
}
inline QString noDefaultRecord() {
    return QStringLiteral("No default record exists. One must be saved first");
}
inline QString questionProceed() {
    return QStringLiteral("This action will save the values on the screen to the database. "
                          "Proceed?");
}
inline QString groupSetupTitle() {
    return QStringLiteral("Group Setup - ");
}
inline QString scaleNumber() {
    return QStringLiteral("Scale #");
}
inline QString databaseGroupSetupTitle() {
    return QStringLiteral("Database Group Setup for  ");
}
inline QString outputConfigurationTitle() {
    return QStringLiteral("Output Configuration - ");
}
inline QString groupTotalsTitle() {
    return QStringLiteral("Group Totals - ");
}
inline QString paneTitle() {
    return QStringLiteral("Indicator Setup");
}
inline QString badGroupValue() {
    return QStringLiteral("A group value is a number from 0 to 999.9. The value was not changed.");
}

} // namespace stellwyn::indicator_config::texts
