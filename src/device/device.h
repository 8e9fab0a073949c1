// The table of known devices, filled once at start-up from the descriptions beside the program and
// read-only afterwards, and the queries on the selected device. Any thread may query.
#pragma once

#include "data/address_range.h"
#include "device/device_record.h"
#include "notice/hint.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

inline constexpr int kMaxDevices = 200;

// Reads every description in the folders Device of program and user. One that cannot be used is
// left out: the log says why, and in a run that is not unattended one box names them all. 0 when a
// device is left, 1 when none is, reported.
int DEVICE_Init();
// Parses one description and adds its device. 0 when it was accepted, 1 when refused, which the log
// says.
int _ParseDeviceFile(const std::string& text, const std::string& path);
void _AddDevice(const DeviceRecord& record);
int DEVICE_GetNumDevices();
// Empties the table, for tests.
void DEVICE_Clear();

// Selects the device of that name: 0. Unknown: the selected one stays, 1; reported unless the name
// is empty. User-interface thread.
int DEVICE_FindByName(const std::string& name);
// The slot of the device of that name without selecting it; none for an unknown one.
std::optional<int> DEVICE_SlotOf(const std::string& name);
// What is said of a name that no device has; nothing of an empty one.
std::string DEVICE_UnknownText(const std::string& name);
// The devices that there are, those whose names are most like it first.
Hint DEVICE_UnknownHint(const std::string& name);

// Name of the device in a slot of the table; empty beyond the last.
std::string DEVICE_GetNameAt(int index);
// The record in a slot of the table; a blank one beyond the last.
const DeviceRecord& DEVICE_At(int index);
// The record of the selected device; a blank one when the table is empty.
const DeviceRecord& DEVICE_Selected();
// The slot of the selected device, 0 in an empty table.
int DEVICE_SelectedIndex();
// How many blocks a device has, the extra data area of the properties included.
int DEVICE_CountBlocks(const DeviceRecord& device);
// The blocks of a device, the extra data area of the properties included; and those of the selected
// device that are selected.
struct DeviceBlock {
    int index = 0;
    AddressRange range;
};
std::vector<DeviceBlock> DEVICE_Blocks(const DeviceRecord& device = DEVICE_Selected());
std::vector<DeviceBlock> DEVICE_SelectedBlocks();
// First address of the selected device's first block and last address of its last block.
uint32_t DEVICE_GetFlashStart();
uint32_t DEVICE_GetFlashEnd(); // inclusive

uint32_t DEVICE_GetIDAdr(int index); // 0 when there is none
// Fills the arguments from interrupt vector `index`; unchanged when there is none.
void DEVICE_GetIVector(int index, int32_t& number, std::string& name, int32_t& bits,
                       uint32_t& address);
// A chip address as the image sees it: moved when it lies in the relocation range.
uint32_t DEVICE_RelocateAddr(uint32_t address, const DeviceRecord& device = DEVICE_Selected());

// One getter a field of the selected device.
const std::string& DEVICE_GetManufacturer();
const std::string& DEVICE_GetName();
uint8_t DEVICE_GetWritable();
uint8_t DEVICE_GetIDLenMin();
uint8_t DEVICE_GetIDLenMax();
uint32_t DEVICE_GetIDLenAdr();
uint8_t DEVICE_GetNumIDAdr();
uint8_t DEVICE_GetNumIVector();
const std::string& DEVICE_GetRamcodeFile();
int32_t DEVICE_GetRamcodeType();
uint32_t DEVICE_GetRamStart();
uint32_t DEVICE_GetRamLen();
uint32_t DEVICE_GetPWAreaStart();
uint32_t DEVICE_GetPWAreaLen();
uint32_t DEVICE_GetTimeoutEraseAll();
uint32_t DEVICE_GetTimeoutEraseBlock();
uint32_t DEVICE_GetTimeoutGetSUM();
uint32_t DEVICE_GetRelocateFrom();
uint32_t DEVICE_GetRelocateTo();
uint32_t DEVICE_GetRelocateLen();
uint32_t DEVICE_GetSprtProtectChip();
uint32_t DEVICE_GetSprtProtectBlock();
uint32_t DEVICE_GetSprtEraseChip();
uint32_t DEVICE_GetSprtCRC();
uint32_t DEVICE_GetSprtErase();
uint32_t DEVICE_GetSprtBlankCheck();
uint32_t DEVICE_GetSprtFlashEraseCMD();
uint32_t DEVICE_GetSprtReadProtect();
uint32_t DEVICE_GetSprtFlashMemStatus();
uint32_t DEVICE_GetRAMCodeAdrLen();
uint32_t DEVICE_GetFLASHPageLen();
uint32_t DEVICE_GetFLASHIsEE();
uint32_t DEVICE_GetSkipPasswordCheck();
uint32_t DEVICE_GetRewriteVersion();
uint32_t DEVICE_GetTimerInit();
uint8_t DEVICE_GetPICode();
uint32_t DEVICE_GetPIValue1();
uint32_t DEVICE_GetPIValue2();
const std::string& DEVICE_GetPIText();
