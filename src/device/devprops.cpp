#include "device/devprops.h"

#include <mutex>

namespace {

std::mutex propsMutex;
DevProps props;

template <typename Field>
Field read(Field DevProps::*field) {
    const std::lock_guard lock(propsMutex);
    return props.*field;
}

template <typename Field>
void write(Field DevProps::*field, Field value) {
    const std::lock_guard lock(propsMutex);
    props.*field = value;
}

bool isSelectable(int block) {
    return block >= 0 && block < kMaxSelectableBlocks;
}

} // namespace

DevProps DEVPROPS_Get() {
    const std::lock_guard lock(propsMutex);
    return props;
}

void DEVPROPS_Set(const DevProps& newProps) {
    const std::lock_guard lock(propsMutex);
    props = newProps;
}

int DEVPROPS_GetDevice() {
    return read(&DevProps::Device);
}

void DEVPROPS_SetDevice(int index) {
    write(&DevProps::Device, index);
}

int32_t DEVPROPS_GetSpeed() {
    return read(&DevProps::Speed);
}

void DEVPROPS_SetSpeed(int32_t hz) {
    write(&DevProps::Speed, hz);
}

uint32_t DEVPROPS_GetXDataStart() {
    return static_cast<uint32_t>(read(&DevProps::XDataStart));
}

uint32_t DEVPROPS_GetXDataLen() {
    return static_cast<uint32_t>(read(&DevProps::XDataLen));
}

bool DEVPROPS_GetResetByPC() {
    return read(&DevProps::ResetByPC) != 0;
}

void DEVPROPS_SetResetByPC(bool on) {
    write(&DevProps::ResetByPC, int32_t{on});
}

bool DEVPROPS_IsBlockSelected(int block) {
    if (!isSelectable(block)) {
        return false;
    }
    const std::lock_guard lock(propsMutex);
    return props.aBlockSelect[static_cast<size_t>(block)] != 0;
}

void DEVPROPS_SelectBlock(int block, bool selected) {
    if (!isSelectable(block)) {
        return;
    }
    const std::lock_guard lock(propsMutex);
    props.aBlockSelect[static_cast<size_t>(block)] = int32_t{selected};
}
