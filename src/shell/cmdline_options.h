// The command-line options that change a setting at once. Each reads its argument with the getters
// of cmdline_values.h and applies nothing when one of them fails.
#pragma once

void OPTION_ComBaudrate();
void OPTION_ComPort();
void OPTION_PasswordAdrCount();
void OPTION_PasswordAdrCompare();
void OPTION_Password();
void OPTION_PasswordFillFF();
void OPTION_PasswordHexmode();
void OPTION_SettingsReset();
void OPTION_TargetDevice();
void OPTION_TargetSelBlocks();
void OPTION_TargetSpeed();
