// The command-line options, which change a setting. Each reads its argument with the getters of
// cmdline_values.h into what it would change.
#pragma once

#include "shell/cmdline_values.h"

struct Setting;

// The value of a setting from the argument, in its own way or as a number within its range.
ArgumentValue OPTION_Read(const Setting& setting);

ArgumentValue OPTION_Password();
ArgumentValue OPTION_TargetDevice();
ArgumentValue OPTION_TargetSelBlocks();
