// What a description must hold for its device to be worked with safely: found when it is read, not
// after the chip was erased.
#pragma once

#include "device/device_record.h"

#include <string>
#include <vector>

struct DescriptionFault {
    std::string key;  // of the statement that is to be changed
    std::string text; // what is wrong and what would be right
};

// The faults of a record whose statements are all good by themselves.
std::vector<DescriptionFault> checkDescription(const DeviceRecord& record);
