// calvorin-sim without its command line: a chip from a description, served on a line until a signal
// ends it.
#pragma once

#include "sim/sim_options.h"

#include <string>

// Runs until SIGTERM or SIGINT. The exit code: 0, 3 when the chip recorded violations, 1 with a
// message on standard error when the start failed.
int SIM_Serve(const SimOptions& options);
// Prints the devices of the folder, one a line.
int SIM_ListDevices(const SimOptions& options);
