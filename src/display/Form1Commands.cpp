#include "Form1Commands.h"

#include "Form1.h"
#include "core/AppHome.h"
#include "indicator_config/CommandInterface.h"
#include "indicator_config/CommandProtocol.h"
#include "indicator_config/CommandServer.h"

#include <memory>

namespace stellwyn::display {

void serveCommands(Form1& form, const core::AppHome& home, core::Dialogs& dialogs,
                   indicator_config::CapturingDialogs& capturing) {
    auto linkExecute = std::make_shared<indicator_config::CommandInterface>(
        form.context(), form.configOperations(), dialogs);
    auto* server = new indicator_config::CommandServer(
        indicator_config::protocol::socketPath(home.folder()),
        [&form, linkExecute](const QString& cmdStr) {
            form.runEvent([&] {
                std::int16_t Cancel = 0;
                linkExecute->Form_LinkExecute(cmdStr, Cancel);
            });
        },
        capturing, &form);
    server->listen();
}

} // namespace stellwyn::display
