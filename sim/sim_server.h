// calvorin-sim without its command line: a chip from a description, served on a line until a signal
// ends it.
#pragma once

#include "sim/sim_options.h"

#include <string>

// Runs until SIGTERM or SIGINT. The exit code: 0, 3 when the chip recorded violations, 1 with a
// message on standard error when the start failed.
int SIM_Serve(const SimOptions& options);
// Plays the chip's side of a communication log, until the same or until the host does something
// that the log does not have, which is printed. The exit code: 0 when the log was played to its end
// without that, 3 when not, 1 as above.
int SIM_Replay(const SimOptions& options);
// Prints the devices of the folder, one a line.
int SIM_ListDevices(const SimOptions& options);
