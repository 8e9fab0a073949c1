#include "shell/cmdline_table.h"

#include "shell/cmdline_options.h"
#include "shell/command_ids.h"

namespace {

constexpr CmdlineEntry kTable[] = {
    {"OptionsCOMBaudrate", OPTION_ComBaudrate, 0, "\t<BAUDRATE> Sets baudrate"},
    {"OptionsCOMPort", OPTION_ComPort, 0, "\t\t<PORT> Sets COM-port of PC"},
    {"OptionsPWAdrCount", OPTION_PasswordAdrCount, 0,
     "\t<COUNTADR> Sets count address for password comparison"},
    {"OptionsPWAdrCompare", OPTION_PasswordAdrCompare, 0,
     "\t<COMPAREADR> Sets compare address for password comparison"},
    {"OptionsPWPassword", OPTION_Password, 0, "\t<PASSWORD> Sets password"},
    {"OptionsPWFillFF", OPTION_PasswordFillFF, 0,
     "\t\t<ENABLE> Enables/disables filling password with 0xFF"},
    {"OptionsPWHexmode", OPTION_PasswordHexmode, 0,
     "\t<ENABLE> Enables/disables hexmode for the password"},
    {"OptionsSettingsReset", OPTION_SettingsReset, 0,
     "\t<ENABLE> Enables/disables reset handling by Calvorin"},
    {"OptionsTargetDevice", OPTION_TargetDevice, 0, "\t<DEVICENAME> Selects the desired device"},
    {"OptionsTargetSelBlocks", OPTION_TargetSelBlocks, 0,
     "\t<ENABLE,B1[,B2...][,B2-Bn]> Enables/disables the desired blocks"},
    {"OptionsTargetSpeed", OPTION_TargetSpeed, 0,
     "\t<SPEED> Sets the oscillator frequency in [Hz]"},
    {"EditDeleteRange", nullptr, CMD_EDIT_DELETE_RANGE,
     "\t\t<FROM-TO> Deletes the specified range of data"},
    {"EditRelocate", nullptr, CMD_EDIT_RELOCATE, "\t\t<VALUE> Relocates loaded data"},
    {"TargetEraseChip", nullptr, CMD_TARGET_ERASE_CHIP, "\t\tErases complete chip"},
    {"TargetEraseBlocks", nullptr, CMD_TARGET_ERASE_BLOCKS, "\t\tErases selected blocks"},
    {"TargetProgram", nullptr, CMD_TARGET_PROGRAM, "\t\tPrograms loaded data into target"},
    {"TargetReadBack", nullptr, CMD_TARGET_READ_BACK,
     "\t\t<StartAdr,EndAdr> Read back target data"},
    {"TargetGetCRC", nullptr, CMD_TARGET_GET_CRC, "\t\tGets CRC of target"},
    {"TargetAuto", nullptr, CMD_TARGET_AUTO,
     "\t\tErases complete chip and programs loaded data into target"},
    {"TargetVerify", nullptr, CMD_TARGET_VERIFY, "\t\tVerifys loaded data with target"},
    {"TargetCheckBlankChip", nullptr, CMD_TARGET_BLANK_CHECK_CHIP, "\tChecks if chip is blank"},
    {"TargetCheckBlankBlocks", nullptr, CMD_TARGET_BLANK_CHECK_BLOCKS,
     "\tChecks if selected blocks are blank"},
    {"TargetStartApplication", nullptr, CMD_TARGET_START_APPLICATION,
     "\tStarts target application"},
    {"FileMerge", nullptr, CMD_FILE_MERGE, "\t\t<FILE.EXT> Merges specified file"},
    {"FileSaveAs", nullptr, CMD_FILE_SAVE_AS, "\t\t<FILE.EXT> Saves data to MOT- or HEX-file"},
    {"Exit", nullptr, CMD_EXIT, "\t\t\tTerminates PC-programm automatically"},
    {"?", nullptr, 0, "\t\t\tDisplay this box"},
};

} // namespace

std::span<const CmdlineEntry> CMDLINE_Table() {
    return kTable;
}

const CmdlineEntry* CMDLINE_Find(std::string_view text) {
    for (const CmdlineEntry& entry : kTable) {
        if (text.starts_with(entry.name)) {
            return &entry;
        }
    }
    return nullptr;
}
