// Where the built program and its data stand: beside the running test, in the build tree. Nothing
// of it is compiled in, so that what one clone has compiled serves another.
#pragma once

#include <filesystem>

// Holds "calvorin", "calvorin-sim", the help document and the folders "Device" and "RamImage".
inline const std::filesystem::path& builtFolder() {
    static const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    return folder;
}

// Makes a program folder's devices and RAM images.
inline void copyDevices(const std::filesystem::path& folder) {
    for (const char* const name : {"Device", "RamImage"}) {
        std::filesystem::copy(builtFolder() / name, folder / name);
    }
}
