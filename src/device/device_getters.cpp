// The getters of single fields, each of the selected device.
#include "device/device.h"

const std::string& DEVICE_GetManufacturer() {
    return DEVICE_Selected().Manufacturer;
}

const std::string& DEVICE_GetName() {
    return DEVICE_Selected().Device;
}

uint8_t DEVICE_GetWritable() {
    return DEVICE_Selected().Writable;
}

uint8_t DEVICE_GetIDLenMin() {
    return DEVICE_Selected().IDLenMin;
}

uint8_t DEVICE_GetIDLenMax() {
    return DEVICE_Selected().IDLenMax;
}

uint32_t DEVICE_GetIDLenAdr() {
    return DEVICE_Selected().IDLenAdr;
}

uint8_t DEVICE_GetNumIDAdr() {
    return static_cast<uint8_t>(DEVICE_Selected().aIDAdr.size());
}

uint8_t DEVICE_GetNumIVector() {
    return static_cast<uint8_t>(DEVICE_Selected().aIVector.size());
}

const std::string& DEVICE_GetRamcodeFile() {
    return DEVICE_Selected().RamcodeFile;
}

int32_t DEVICE_GetRamcodeType() {
    return DEVICE_Selected().RamcodeType;
}

uint32_t DEVICE_GetRamStart() {
    return DEVICE_Selected().RamStart;
}

uint32_t DEVICE_GetRamLen() {
    return DEVICE_Selected().RamLen;
}

uint32_t DEVICE_GetPWAreaStart() {
    return DEVICE_Selected().PWAreaStart;
}

uint32_t DEVICE_GetPWAreaLen() {
    return DEVICE_Selected().PWAreaLen;
}

uint32_t DEVICE_GetTimeoutEraseAll() {
    return DEVICE_Selected().TimeoutEraseAll;
}

uint32_t DEVICE_GetTimeoutEraseBlock() {
    return DEVICE_Selected().TimeoutEraseBlock;
}

uint32_t DEVICE_GetTimeoutGetSUM() {
    return DEVICE_Selected().TimeoutGetSUM;
}

uint32_t DEVICE_GetRelocateFrom() {
    return DEVICE_Selected().RelocateFrom;
}

uint32_t DEVICE_GetRelocateTo() {
    return DEVICE_Selected().RelocateTo;
}

uint32_t DEVICE_GetRelocateLen() {
    return DEVICE_Selected().RelocateLen;
}

uint32_t DEVICE_GetSprtProtectChip() {
    return DEVICE_Selected().SprtProtectChip;
}

uint32_t DEVICE_GetSprtProtectBlock() {
    return DEVICE_Selected().SprtProtectBlock;
}

uint32_t DEVICE_GetSprtEraseChip() {
    return DEVICE_Selected().SprtEraseChip;
}

uint32_t DEVICE_GetSprtCRC() {
    return DEVICE_Selected().SprtCRC;
}

uint32_t DEVICE_GetSprtErase() {
    return DEVICE_Selected().SprtErase;
}

uint32_t DEVICE_GetSprtBlankCheck() {
    return DEVICE_Selected().SprtBlankCheck;
}

uint32_t DEVICE_GetSprtFlashEraseCMD() {
    return DEVICE_Selected().SprtFlashEraseCMD;
}

uint32_t DEVICE_GetSprtReadProtect() {
    return DEVICE_Selected().SprtReadProtect;
}

uint32_t DEVICE_GetSprtFlashMemStatus() {
    return DEVICE_Selected().SprtFlashMemStatus;
}

uint32_t DEVICE_GetRAMCodeAdrLen() {
    return DEVICE_Selected().RAMCodeAdrLen;
}

uint32_t DEVICE_GetFLASHPageLen() {
    return DEVICE_Selected().FLASHPageLen;
}

uint32_t DEVICE_GetFLASHIsEE() {
    return DEVICE_Selected().FLASHIsEE;
}

uint32_t DEVICE_GetSkipPasswordCheck() {
    return DEVICE_Selected().SkipPasswordCheck;
}

uint32_t DEVICE_GetRewriteVersion() {
    return DEVICE_Selected().RewriteVersion;
}

uint32_t DEVICE_GetTimerInit() {
    return DEVICE_Selected().TimerInit;
}

uint8_t DEVICE_GetPICode() {
    return static_cast<uint8_t>(DEVICE_Selected().PICode);
}

uint32_t DEVICE_GetPIValue1() {
    return DEVICE_Selected().PIValue1;
}

uint32_t DEVICE_GetPIValue2() {
    return DEVICE_Selected().PIValue2;
}

const std::string& DEVICE_GetPIText() {
    return DEVICE_Selected().PIText;
}
