// The rows of the interrupt vector view: the selected device's vectors with what the loaded data
// holds at them.
#pragma once

#include <string>
#include <vector>

struct IVectorRow {
    std::string number;
    std::string name;
    std::string bits;
    std::string address;
    std::string contents; // "--" when the data does not hold all of the vector's bytes
    // A loaded reset vector that does not point into the flash: worth a warning.
    bool resetOutsideFlash = false;
};

// One row a vector, in the order of the device description. User-interface thread.
std::vector<IVectorRow> IVECT_MakeRows();
