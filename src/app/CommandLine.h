#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace stellwyn::app {

struct CommandLine {
    QString home;
    bool createDatabase = false;
    bool unattended = false;
    bool answerYes = false;
    // Opens the main screen at start-up, as "Activate Remote Screen" would.
    bool activate = false;
    // Opens the Setup screen at start-up, as "Scale Configurations" would; before the main
    // screen when both are asked for.
    bool setup = false;
    // Runs on a demonstration home with simulated scales.
    bool demo = false;
    // The demonstration's link: the USB-RS485 adapter, or Ethernet to a loopback port.
    bool demoEthernet = false;
    // Writes the kept readings to this file (CSV or XLSX by its extension) and exits.
    QString exportFile;
    // Collects with no window: the collector program takes over with the other arguments.
    bool headless = false;
    // The arguments the collector is given in place of --headless.
    QStringList collectorArguments;
};

// Parses the arguments (without the program name). On a bad argument returns nothing and sets
// `error`; --help and --version are answered by the caller through `helpText` and `wants*`.
// Qt's own options (-platform, -style, ...) are accepted and left in place for the toolkit.
struct ParsedCommandLine {
    std::optional<CommandLine> options;
    QString error;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

ParsedCommandLine parseCommandLine(const QStringList& arguments);
QString helpText();

} // namespace stellwyn::app
