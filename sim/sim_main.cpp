// calvorin-sim: a virtual chip on a pseudo-terminal or a TCP port.
#include "platform/format.h"
#include "platform/process.h"
#include "platform/version.h"
#include "sim/sim_server.h"

int main(int argc, char** argv) {
    PROCESS_ReportExceptions();
    SimOptions options;
    std::string error;
    if (!SIM_ParseOptions(std::vector<std::string>(argv + 1, argv + argc), options, error)) {
        PROCESS_WriteError("calvorin-sim: " + formatPrintable(error, LineEnds::stay) + "\n");
        return 1;
    }
    if (options.help) {
        PROCESS_WriteOut(SIM_HelpText());
        return 0;
    }
    if (!options.replay.empty()) {
        return SIM_Replay(options);
    }
    if (options.version) {
        PROCESS_WriteOut(std::string("calvorin-sim V") + kProductVersion + "\n");
        return 0;
    }
    return options.listDevices ? SIM_ListDevices(options) : SIM_Serve(options);
}
