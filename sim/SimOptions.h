#pragma once

#include "KlDatWriter.h"
#include "Scenario.h"

#include <QString>
#include <QStringList>

namespace stellwyn::sim {

// What the stellwyn-sim command line asks for.
struct SimOptions {
    Scenario scenario;
    bool pty = true;
    QString linkPath;
    QString logPath;
    int tcpPort = -1; // -1: no socket
    QString klPath;   // set: write a KL.Dat and leave
    KlDatOptions kl;
    bool help = false; // answered with simUsage() and nothing else
};

// Reads the arguments (the program name first). False with a message for the user.
bool parseSimOptions(const QStringList& arguments, SimOptions* options, QString* error);
QString simUsage();

} // namespace stellwyn::sim
