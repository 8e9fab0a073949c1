// The command-line options, which change a setting at once. Each reads its argument with the
// getters of cmdline_values.h and applies nothing when one of them fails.
#pragma once

struct Setting;

// A setting from the argument, in its own way or as a number.
void OPTION_Apply(const Setting& setting);

void OPTION_Password();
void OPTION_TargetDevice();
void OPTION_TargetSelBlocks();
