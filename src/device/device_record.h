// What the program knows about one microcontroller, as its device description gives it.
#pragma once

#include "device/ramcode_type.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct FlashBlock {
    uint32_t Start = 0;
    uint32_t Len = 0; // bytes
};

struct IVectorEntry {
    int32_t Number = 0;
    std::string Name;
    int32_t Bits = 0; // width of the vector's value
    uint32_t Address = 0;
};

// A routine that judges the ID bytes of a device; none is called by the program.
using IDCheckFunction = int (*)();

struct DeviceRecord {
    std::string Manufacturer;
    std::string Device;
    std::vector<FlashBlock> aBlock; // in file order
    uint8_t Writable = 1;
    uint8_t BootSelect = 0;
    uint8_t BootWarning = 0;
    uint8_t SIFType = 0;
    uint8_t AlgoS = 0;
    uint8_t AlgoP = 0;
    uint8_t VCCMin = 0; // tenths of a volt
    uint8_t VCCMax = 0;
    uint8_t Vpp = 0;
    std::vector<std::pair<int32_t, int32_t>> aHWRange;
    uint8_t DisplayBLVersion = 0;
    uint8_t IDLenMin = 0; // ID (password) bytes
    uint8_t IDLenMax = 0;
    uint32_t IDLenAdr = 0;
    std::vector<uint32_t> aIDAdr;
    std::vector<uint8_t> aConstIDData;
    IDCheckFunction idCheck = nullptr;
    uint8_t EnableClearAll = 0;
    uint8_t EnableClearChip = 0;
    uint8_t ParallelSupport = 0;
    uint8_t SerialSupport = 0;
    std::vector<IVectorEntry> aIVector;
    std::string RamcodeFile;
    int32_t RamcodeType = RAMCODE_NONE;
    uint32_t RamStart = 0;
    uint32_t RamLen = 0;
    uint32_t PWAreaStart = 0;
    uint32_t PWAreaLen = 0;
    uint32_t TimeoutEraseAll = 0; // ms
    uint32_t TimeoutEraseBlock = 0;
    uint32_t TimeoutGetSUM = 0;
    uint32_t RelocateFrom = 0;
    uint32_t RelocateTo = 0;
    uint32_t RelocateLen = 0;
    uint32_t SprtProtectChip = 0;
    uint32_t SprtProtectBlock = 0;
    uint32_t SprtEraseChip = 0;
    uint32_t RAMCodeAdrLen = 0;
    uint32_t FLASHPageLen = 0;
    uint32_t FLASHIsEE = 0;
    uint32_t SprtCRC = 0;
    uint32_t SprtErase = 0;
    uint32_t SprtBlankCheck = 0;
    uint32_t SprtFlashEraseCMD = 0;
    uint32_t SprtReadProtect = 0;
    uint32_t SprtFlashMemStatus = 0;
    uint32_t SkipPasswordCheck = 0;
    uint32_t RewriteVersion = 0;
    uint32_t PICode = 0;
    uint32_t PIValue1 = 0;
    uint32_t PIValue2 = 0;
    std::string PIText;
    uint32_t TimerInit = 0;
};
