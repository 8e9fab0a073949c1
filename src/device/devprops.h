// The user's choice of target: device, clock, extra data area, reset handling, selected blocks.
// Written by the user-interface thread; the worker reads it.
#pragma once

#include <array>
#include <cstdint>

inline constexpr int kMaxSelectableBlocks = 200;

struct DevProps {
    int32_t Device = 0;    // index into the device table
    int32_t Interface = 0; // kept with the settings
    int32_t Speed = 0;     // oscillator frequency in Hz
    int32_t XDataStart = 0;
    int32_t XDataLen = 0; // bytes; not 0: one more block, the last one
    int32_t ResetByPC = 0;
    std::array<int32_t, kMaxSelectableBlocks> aBlockSelect{};
    bool operator==(const DevProps&) const = default;
};

// A copy of the record, and the record replaced by another: what dialogs work with.
DevProps DEVPROPS_Get();
void DEVPROPS_Set(const DevProps& props);

int DEVPROPS_GetDevice();
void DEVPROPS_SetDevice(int index);
int32_t DEVPROPS_GetSpeed(); // Hz
void DEVPROPS_SetSpeed(int32_t hz);
uint32_t DEVPROPS_GetXDataStart();
uint32_t DEVPROPS_GetXDataLen();
bool DEVPROPS_GetResetByPC();
void DEVPROPS_SetResetByPC(bool on);
// Block indexes outside 0 to 199 are not selected and cannot be.
bool DEVPROPS_IsBlockSelected(int block);
void DEVPROPS_SelectBlock(int block, bool selected);
