// A world with the worker running and a small program loaded, and the commands as the Target menu
// runs them.
#pragma once

#include "data/hexdata.h"
#include "link/password.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "support/world.h"
#include "target/commands.h"
#include "target/worker.h"

#include <numeric>

struct TargetWorld : World {
    explicit TargetWorld(const WorldOptions& options) : World(options) {
        PASSWORD_SetBytes(options.chip.password);
        PASSWORD_SetAdrCount(DEVICE_GetPWAreaStart());
        PASSWORD_SetAdrCompare(DEVICE_GetPWAreaStart() + 1);
        loadProgram();
        TARGET_Init(nullptr, [this](uint8_t byte) { terminal.push_back(static_cast<char>(byte)); });
    }

    // Two stretches: near the start of the first block, and up to the end of the last one.
    static void loadProgram() {
        std::vector<uint8_t> bytes(300);
        std::iota(bytes.begin(), bytes.end(), uint8_t{7});
        HEXDATA_Clear();
        HEXDATA_AddData(DEVICE_GetFlashStart() + 0x11, bytes);
        HEXDATA_AddData(DEVICE_GetFlashEnd() - 199, std::span(bytes).first(200));
    }

    // Whether the flash holds the loaded program and nothing else.
    bool chipHoldsProgram() const {
        return std::ranges::all_of(DEVICE_Blocks(), [this](const DeviceBlock& block) {
            std::vector<uint8_t> image(block.range.size(), 0xFF);
            HEXDATA_Copy(block.range.start, image, {});
            return flash(block.range.start, image.size()) == image;
        });
    }
    bool chipIsBlank() const {
        bool blank = false;
        SIMPORT_WithChip(line, [&blank](Chip& looked) { blank = CHIP_IsBlank(looked); });
        return blank;
    }

    std::vector<uint8_t> flash(uint32_t address, size_t count) const {
        std::vector<uint8_t> bytes;
        SIMPORT_WithChip(line, [&](Chip& looked) {
            bytes = CHIP_GetFlash(looked, address, static_cast<uint32_t>(count));
        });
        return bytes;
    }
    void putFlash(uint32_t address, const std::vector<uint8_t>& bytes) const {
        SIMPORT_WithChip(line, [&](Chip& looked) { CHIP_PutFlash(looked, address, bytes); });
    }
    void setFaults(const std::vector<ChipFault>& faults) const {
        SIMPORT_WithChip(line, [&](Chip& looked) { CHIP_SetFaults(looked, faults); });
    }

    std::string allErrors() const { return Reports::joined(errors(), '|'); }
    std::string allHints() const {
        const std::vector<std::string> hints = screen.copyOf(screen.hints);
        return std::accumulate(hints.begin(), hints.end(), std::string());
    }

    std::string terminal; // what the worker has passed on
};

inline void runAuto() {
    if (DEVICE_GetFLASHIsEE() != 0) {
        TARGET_ProgramTarget();
    } else if (TARGET_EraseChip(false) == 0) {
        TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
    }
}

inline void runVerify() {
    TARGET_Verify(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
}

// That Auto and Verify bring the program into the chip, with nothing to be said against them.
inline void expectAutoAndVerify(const TargetWorld& world) {
    runAuto();
    runVerify();
    EXPECT_TRUE(world.hasLogged("Verifying finished"));
    EXPECT_TRUE(world.chipHoldsProgram());
    EXPECT_EQ(world.allErrors() + world.violations(), "");
}
