// A virtual chip on a bench: bytes in and out as hex text, time moved by hand.
#pragma once

#include "device/device_parser.h"
#include "platform/files.h"
#include "sim/chip.h"
#include "support/hex_bytes.h"
#include "support/paths.h"

inline DeviceRecord deviceNamed(const std::string& name) {
    std::string text;
    EXPECT_TRUE(FILES_ReadAll(builtFolder() / "Device" / (name + ".dev"), text).ok());
    const DeviceParseResult result = DEVICE_ParseText(text);
    EXPECT_TRUE(result.record) << name << ": " << faultTexts(result);
    return result.record.value_or(DeviceRecord{});
}

struct Bench {
    explicit Bench(const std::string& device, const ChipOptions& options = {})
        : description(deviceNamed(device)), chip(CHIP_Create(description, options)) {
        CHIP_SetHostRate(*chip, 38400);
    }

    void reset(bool bootRom) {
        CHIP_SetLines(*chip, true, bootRom, now);
        now.us += 300000;
        CHIP_SetLines(*chip, false, bootRom, now);
        now.us += 250000;
    }
    // What the chip sends within ten seconds.
    std::string exchange(const std::string& hex) {
        CHIP_Receive(*chip, bytesOfHex(hex), now);
        now.us += 10000000;
        std::vector<uint8_t> got;
        while (const auto output = CHIP_TakeOutput(*chip, now)) {
            got.push_back(output->value);
        }
        return HEXTEXT_FromBytes(got);
    }
    // From the reset to a running loader, on a blank chip.
    void startLoader() {
        reset(true);
        const DeviceRecord& record = description;
        if (record.RamcodeType == RAMCODE_TYPE_B) {
            exchange("86");
            exchange("10" + repeat("FF", 12) + "0C");
            exchange("20000000 0004 DC");
            exchange("01020304 F6");
            return;
        }
        CHIP_SetHostRate(*chip, 9600);
        exchange("5A");
        exchange("07");
        CHIP_SetHostRate(*chip, 38400);
        exchange("60");
        const bool wide = record.RAMCodeAdrLen == 0 || record.RAMCodeAdrLen > 2;
        char address[16];
        std::snprintf(address, sizeof address, wide ? "%06X" : "%04X", record.PWAreaStart);
        exchange(std::string(address) + address + repeat("FF", 255));
        exchange("3A 02 0040 00 0102 BB");
        if (record.TimerInit != 0) {
            exchange("3A 02 0042 00 1A00 A2");
        }
        exchange("3A 00 0000 01 FF");
    }
    std::string violations() const {
        std::string text;
        for (const ChipViolation& violation : CHIP_GetViolations(*chip)) {
            text += violation.text + "\n";
        }
        return text;
    }

    DeviceRecord description;
    ChipPtr chip;
    Moment now{1000000};
};
