// The rows of the device view: the properties of the selected device as texts.
#pragma once

#include <string>
#include <vector>

// Both texts are empty in a row that parts two groups.
struct DeviceRow {
    std::string name;
    std::string value;
    bool operator==(const DeviceRow&) const = default;
};

// All rows in the order of the view. User-interface thread: looking at the blocks may correct the
// selection.
std::vector<DeviceRow> DEVICEVIEW_MakeRows();
