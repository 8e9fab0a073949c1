// Each fault of the chip that has a message: that message alone, exit code 1, no claim of success.

#include "target_world.h"

namespace {

struct Case {
    const char* device;
    const char* fault;
    std::string errors;
    void (*command)() = [] { TARGET_GetCrc(true); };
};

void eraseChip() {
    TARGET_EraseChip(true);
}

void program() {
    TARGET_Program(HEXDATA_GetFirstAddr(), HEXDATA_GetLastAddr());
}

void expectMessage(const Case& c) {
    WorldOptions options{.device = c.device, .chip = {}, .baudrate = 115200};
    std::string wrong;
    EXPECT_TRUE(CHIP_ParseFault(c.fault, options.chip.faults.emplace_back(), wrong)) << wrong;
    TargetWorld world(options);
    PASSWORD_SetBytes(std::vector<uint8_t>(12, 0xFF));
    HEXDATA_Clear();
    HEXDATA_AddData(DEVICE_GetFlashStart() + 0x100, std::vector<uint8_t>(300, 0x5A));
    c.command();
    EXPECT_EQ(world.allErrors(), c.errors);
    EXPECT_EQ(RUN_GetExitCode(), 1);
    const std::string asked = Reports::joined(world.questions(), '|');
    EXPECT_EQ(asked.find("successfully"), std::string::npos) << asked;
    EXPECT_FALSE(world.log().back().ends_with("finished")) << world.log().back();
}

} // namespace

TEST(Messages, ConnectEndsInTheErrorAndItsSummary) {
    const Case cases[] = {
        {"VT-A32", "no-reply@match", "Matching data failed"},
        {"VT-A32", "wrong-reply@match", "Matching data failed"},
        {"VT-A32", "wrong-reply@baudrate", "Setting baudrate failed"},
        {"VT-A32", "no-reply@baudrate", ""},
        {"VT-A32", "wrong-reply@sum", "SUM command failed"},
        {"VT-A32", "wrong-reply@ram", "Echoback RAM loader command failed"},
        {"VT-A32", "no-reply@data", ""},
        {"VT-B128", "wrong-reply@match", "Matching data failed"},
        {"VT-B128", "wrong-reply@sum", "Get SUM Command failed"},
        {"VT-B128", "bad-checksum@sum", "Checksum of checksum failed"},
        {"VT-B128", "wrong-reply@ram", "Echoback RAM loader command failed"},
        {"VT-B128", "wrong-reply@header", "Password checksum failed"},
        {"VT-B128", "wrong-reply@data", "Data checksum failed"},
    };
    for (Case c : cases) {
        SCOPED_TRACE(std::string(c.device) + " " + c.fault);
        c.errors += c.errors.empty() ? "" : "|";
        c.errors += "Could not download RAM image. Please check password";
        expectMessage(c);
    }
}

TEST(Messages, CommandsEndInTheirError) {
    const Case cases[] = {
        {"VT-A60", "wrong-reply@rewrite", "Echoback flash memory rewrite command failed",
         eraseChip},
        {"VT-A60", "wrong-reply@cleared", "Clearing flash memory failed", eraseChip},
        {"VT-A96", "wrong-reply@erase", "Echoback flash memory erase command failed", eraseChip},
        {"VT-A96", "wrong-reply@erased", "", eraseChip},
        {"VT-B256", "wrong-reply@enable", "Echoback erase enable command failed", eraseChip},
        {"VT-B128", "wrong-reply@cleared", "Erase operation result failure", eraseChip},
        {"VT-B256", "wrong-product",
         "The chip is no VT-B256 (product info: expected 56542D42323536, found 57542D42323536)"},
        {"VT-A32", "no-reply@sum", "The chip does not send its checksum"},
        {"VT-B128", "no-reply@identify", "Timeout error"},
        {"VT-B128", "no-reply@crc", "Timeout error"},
        {"VT-B128", "bad-checksum@crc", "Timeout error"},
        {"VT-B128", "nak@crc", "Not acknowledged"},
        {"VT-B128", "error-reply@erase-block,value=1", "Error erasing sector", TARGET_EraseBlocks},
        {"VT-B128", "error-reply@program,address=1234,value=2",
         "Error writing on address 1234\nContents: FF", program},
        {"VT-B128", "stuck-bits,address=104,value=FF",
         "Error comparing contents of address 100\nContents: FF (expected 5A, found FF; 128 of 128 "
         "bytes in this answer differ)",
         runVerify},
        {"VT-B128", "dead-bits,address=104,value=1",
         "Target not blank at address 104\nContents: FE", [] { TARGET_BlankCheckChip(); }},
        {"VT-B128", "die@program#2", "Timeout error", program},
        {"VT-B128", "error-reply@program,value=63",
         "Unknown target error 99 at address 0\nContents: FF", program},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.device) + " " + c.fault);
        expectMessage(c);
    }
}
