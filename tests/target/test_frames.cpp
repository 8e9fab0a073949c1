// Frames and replies, and what every operation puts on the line.

#include "data/hexdata.h"
#include "link/target_state.h"
#include "notice/progress.h"
#include "support/script_world.h"
#include "target/operation.h"
#include "target/reply.h"
#include "target/worker.h"

namespace {

std::string hex(uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text += HEXTEXT_FromBytes(std::vector<uint8_t>{static_cast<uint8_t>(value >> 8 * i)});
    }
    return text;
}

std::string read(uint32_t address, uint32_t count) {
    return frame("03" + hex(address, 4) + hex(count, 2));
}
std::string data(uint32_t address, const std::string& bytes) {
    return frame("03" + hex(address, 4) + hex(static_cast<uint32_t>(bytes.size() / 2), 2) + bytes);
}
std::string block(int command, uint32_t start, uint32_t size, const std::string& more = "") {
    return frame(hex(static_cast<uint32_t>(command), 1) + hex(start, 4) + hex(size, 4) + more);
}
std::string program(uint32_t address, const std::string& bytes) {
    return frame("02" + hex(address, 4) + hex(static_cast<uint32_t>(bytes.size() / 2), 2) + bytes);
}

const std::string kAck = frame("01");

// Steps of a conversation.
ScriptStep acked(const std::string& asked) {
    return {asked, kAck};
}
ScriptStep reads(uint32_t address, const std::string& bytes) {
    return {read(address, static_cast<uint32_t>(bytes.size() / 2)), data(address, bytes)};
}

const std::string kThree = "Bank = 1000,1000, 2000,100, 3000,200\nTimeoutEraseBlock = 5000";
const std::string kOne = "Bank = 1000,400\nTimeoutEraseBlock = 5000";

using Prepare = std::function<void()>;

AddressRange wanted; // of the operation under test

void range(uint32_t first, uint32_t last) {
    wanted = AddressRange::upTo(first, last);
}

Operation operation(OperationCode code) {
    const bool whole = code == OP_ERASE_CHIP || code == OP_PROTECT_CHIP;
    return {code, wanted, whole ? DEVICE_Blocks() : DEVICE_SelectedBlocks()};
}

void load(uint32_t address, size_t count, uint8_t value) {
    HEXDATA_AddData(address, std::vector<uint8_t>(count, value));
}

// A set-up that gives the operation a range, an image and its range, or only one selected block.
Prepare ranged(uint32_t first, uint32_t last) {
    return [=] { range(first, last); };
}
Prepare image(uint32_t address, uint32_t count, uint8_t value) {
    return [=] {
        load(address, count, value);
        range(address, address + (count - 1));
    };
}
Prepare onlyBlock(int selected) {
    return [=] {
        for (const DeviceBlock& block : DEVICE_Blocks()) {
            DEVPROPS_SelectBlock(block.index, block.index == selected);
        }
    };
}

// Readies the worker on a loader that is just there.
void begin(ScriptWorld& world, uint32_t pageLen, uint32_t packet) {
    HEXDATA_Reset();
    world.identifyReply = frame("00 00000000" + hex(packet, 2));
    TARGET_Init(nullptr, {});
    TARGET_State().PageLen = pageLen;
    TARGET_SetLinkState(LINK_RAMCODE);
    TARGET_BeginCommand("Test");
}
void end() {
    TARGET_Stop();
    TARGET_SetLinkState(LINK_IDLE);
}

// Runs one operation; it completes when no error is expected.
void check(const std::string& name, const std::string& device, OperationCode code,
           const Script& script, const std::string& error = "", const Prepare& prepare = {},
           uint32_t pageLen = 0, uint32_t packet = 128) {
    SCOPED_TRACE(name);
    ScriptWorld world(device, script);
    begin(world, pageLen, packet);
    if (prepare) {
        prepare();
    }
    EXPECT_EQ(TARGET_RunOperation(operation(code), "Testing...").has_value(), error.empty());
    EXPECT_EQ(world.errors(), error);
    EXPECT_EQ(TARGET_State().LinkState, error == "Timeout error" ? LINK_IDLE : LINK_RAMCODE);
    end();
}

} // namespace

TEST(Frames, OperationsOnBlocks) {
    const std::string relocated = "Bank = 10000,100\nRelocate = 0,10000,8000";
    const auto withXData = [] {
        DevProps props = DEVPROPS_Get();
        props.XDataStart = 0xF000;
        props.XDataLen = 0x100;
        DEVPROPS_Set(props);
    };
    const std::string outside = "Block 1 lies outside the address range of the device";
    check("erase chip", kThree, OP_ERASE_CHIP,
          {acked(block(1, 0x1000, 0x1000)), acked(block(1, 0x2000, 0x100)),
           acked(block(1, 0x3000, 0x200)), acked(block(1, 0xF000, 0x100))},
          "", withXData);
    check("erase one block", kThree, OP_ERASE_BLOCKS, {acked(block(1, 0x2000, 0x100))}, "",
          onlyBlock(1));
    check("protect", relocated, OP_PROTECT_CHIP, {acked(block(6, 0, 0x100))});
    check("erase error stops", kThree, OP_ERASE_CHIP,
          {{block(1, 0x1000, 0x1000), frame("F3 01 00000000 00")}}, "Error erasing sector");
    check("unknown error", relocated, OP_ERASE_CHIP,
          {{block(1, 0, 0x100), frame("F3 2A 10000000 05")}},
          "Unknown target error 42 at address 10010\nContents: 05");
    check("error without a number", kOne, OP_ERASE_CHIP,
          {{block(1, 0x1000, 0x400), frame("F3 00 10000000 05")}},
          "Unknown target error 0 at address 10\nContents: 05");
    check("crc over two blocks", kThree, OP_GET_CRC,
          {{block(4, 0x1000, 0xFFF, "01"), frame("04 1111")},
           {block(4, 0x3000, 0x1FF, "00"), frame("04 2222")}},
          "", [] { DEVPROPS_SelectBlock(1, false); });
    check("sum answered by something else", kOne, OP_GET_SUM,
          {acked(block(7, 0x1000, 0x3FF, "01"))}, "Timeout error");
    for (const std::string reply : {"03 00100000 0100 FF", "F3 01 00100000", "00 01020304 80"}) {
        check(reply, kOne, OP_ERASE_CHIP, {{block(1, 0x1000, 0x400), frame(reply)}},
              "Timeout error");
    }
    check("half a crc", kOne, OP_GET_CRC, {{block(4, 0x1000, 0x3FF, "01"), frame("04 34")}},
          "Timeout error");
    check("block below the first", "Bank = 2000,100, 1000,100, 3000,100", OP_ERASE_BLOCKS, {},
          outside);
    check("descending blocks", "Bank = 2000,100, 1000,100", OP_BLANK_READ_BLOCKS, {},
          "The blocks of the device are not in ascending order");
}

TEST(Frames, OperationsThatRead) {
    const std::string ff = repeat("FF", 256);
    const Prepare image257 = image(0, 257, 0x11);
    const std::string half = repeat("11", 128);
    const std::string relocated = "Bank = 10000,100\nRelocate = 0,10000,100";
    check("read back 257", kOne, OP_READ_BACK, {reads(0, ff + "12")}, "", ranged(0, 0x100));
    check("read back 512", kOne, OP_READ_BACK, {reads(0, ff), reads(256, ff)}, "",
          ranged(0, 0x1FF));
    check("read at the top", kOne, OP_BLANK_READ, {reads(0xFFFFFF80, half)},
          "Target not blank at address FFFFFF80\nContents: 11", ranged(0xFFFFFF80, 0xFFFFFFFF));
    check("blank at the top", kOne, OP_BLANK_READ, {reads(0xFFFFFF80, repeat("FF", 128))}, "",
          ranged(0xFFFFFF80, 0xFFFFFFFF));
    check("over the border of the relocated range", relocated, OP_READ_BACK,
          {reads(0xFFF0, repeat("00", 16)), reads(0, repeat("01", 16))}, "",
          ranged(0xFFF0, 0x1000F));
    check("empty range", kOne, OP_READ_BACK, {}, "The range 10 - F is empty", ranged(16, 15));
    check("a piece at a time", kOne, OP_READ_BACK,
          {{read(0, 257), data(0, ff)}, {read(256, 1), data(256, "12")}}, "", ranged(0, 0x100));
    check("longer reply", kOne, OP_BLANK_READ, {{read(0, 16), data(0, repeat("FF", 17))}},
          "Timeout error", ranged(0, 15));
    check("shorter reply", kOne, OP_VERIFY, {{read(0, 128), data(0, repeat("11", 127))}},
          "Timeout error", image257);
    for (const std::string fields : {"0000", "0200 FF", "0100 FFFF", ""}) {
        check("malformed " + fields, kOne, OP_BLANK_READ,
              {{read(0, 16), frame("03 00000000" + fields)}}, "Timeout error", ranged(0, 15));
    }
    check("reply about another address", kOne, OP_BLANK_READ,
          {{read(0, 16), data(1, repeat("FF", 16))}}, "Timeout error", ranged(0, 15));
    check("verify differs at the end", kOne, OP_VERIFY,
          {reads(0, half), reads(128, half), reads(256, "10")},
          "Error comparing contents of address 100\nContents: 10 (expected 11, found 10; 1 of 1 "
          "bytes in this answer differ)",
          image257);
    check("verify asks for 256 bytes at most", kOne, OP_VERIFY,
          {reads(0, repeat("22", 256)), reads(256, repeat("22", 44))}, "", image(0, 300, 0x22),
          1024);
    check("verify without a packet size", kOne, OP_VERIFY, {},
          "A packet size of 0 bytes is not supported", image257, 0, 0);
    check("blank read of blocks", kThree, OP_BLANK_READ_BLOCKS,
          {reads(0x2000, ff), reads(0x3000, ff), reads(0x3100, "FFFFFF7F" + repeat("00", 252))},
          "Target not blank at address 3103\nContents: 7F", [] { DEVPROPS_SelectBlock(0, false); });
}

TEST(Frames, OperationsThatWrite) {
    const Prepare page = image(0x1000, 5, 0x55);
    const std::string five = repeat("55", 5) + repeat("FF", 123);
    const std::string small = "Bank = 1000,60\nTimeoutEraseBlock = 5000";
    check("one page", kOne, OP_PROGRAM, {acked(program(0x1000, five))}, "", page, 128);
    check("words", kOne, OP_PROGRAM,
          {acked(program(0x2000, "FF" + repeat("55", 123))),
           acked(program(0x207C, repeat("55", 124))),
           acked(program(0x20F8, repeat("55", 53) + "FFFFFF"))},
          "", image(0x2001, 300, 0x55));
    check("over the border of the relocated range",
          "Bank = FF80,80, 10000,80\nRelocate = 0,10000,8000", OP_PROGRAM,
          {acked(program(0xFF80, repeat("FF", 120) + repeat("66", 8))),
           acked(program(0, repeat("66", 8) + repeat("FF", 120)))},
          "", image(0xFFF8, 16, 0x66), 128);
    check("last byte of the address space", kOne, OP_PROGRAM,
          {acked(program(0xFFFFFF80, repeat("FF", 127) + "77"))}, "", image(0xFFFFFFFF, 1, 0x77),
          128);
    check("fill shortened to the block", small, OP_FILL_CHIP,
          {acked(program(0x1000, repeat("FF", 64))), acked(program(0x1040, repeat("FF", 64)))}, "",
          {}, 64);
    check("fill that would take a neighbour along", "Bank = 1000,1000, 2000,100", OP_FILL_BLOCKS,
          {}, "Block 1 does not begin and end on pages of 512 bytes", {}, 512);
    check("fill selected blocks", kThree, OP_FILL_BLOCKS,
          {acked(program(0x2000, repeat("FF", 256)))}, "", onlyBlock(1), 256);
    check(
        "whole device by pages", kOne, OP_PROGRAM_TARGET,
        {acked(program(0x1000, "FF" + repeat("33", 511))),
         acked(program(0x1200, "33" + repeat("FF", 511)))},
        "", [] { load(0x1001, 512, 0x33); }, 512);
    check("fill without pages", kOne, OP_FILL_CHIP, {},
          "The operation needs a device description with a page length");
    check("page too long", kOne, OP_PROGRAM, {},
          "A page length of 2048 bytes is not supported. Maximum 1024 bytes", page, 2048);
    check("page of an odd length", kOne, OP_PROGRAM, {},
          "A page length of 96 bytes is not a power of two", page, 96);
    check("packet too long", kOne, OP_PROGRAM, {},
          "A packet size of 1028 bytes is not supported. Maximum 1024 bytes", page, 0, 1028);
    check("packet too short", kOne, OP_PROGRAM, {},
          "A packet size of 7 bytes is not supported. Minimum 8 bytes", page, 0, 7);
}

TEST(Frames, BadFramesAreTimeouts) {
    const std::string good = frame("01");
    const std::string host = block(1, 0x1000, 0x400);
    const std::string replies[] = {"",
                                   "EC" + good.substr(2),
                                   "EBEC" + good.substr(4),
                                   good.substr(0, good.size() - 2) + "ED",
                                   good.substr(0, good.size() - 2),
                                   "EBED01000103EC",
                                   "EBED000000EC",
                                   frame(repeat("01", 1001))};
    for (const std::string& reply : replies) {
        check(reply, kOne, OP_ERASE_CHIP, {{host, reply}}, "Timeout error");
    }
    check("longest", kOne, OP_ERASE_CHIP, {{host, frame(repeat("01", 1000))}});
}

// What a failed operation has left in the page buffer must not be written by the next one.
TEST(Frames, FailedOperationLeavesNothingBehind) {
    ScriptWorld world(kOne, {{program(0x1000, repeat("11", 128)), frame("F1")},
                             acked(program(0x1000, repeat("22", 128)))});
    begin(world, 128, 128);
    for (const uint8_t value : std::vector<uint8_t>{0x11, 0x22}) {
        HEXDATA_Clear();
        image(0x1000, 128, value)();
        TARGET_BeginCommand("Test");
        EXPECT_EQ(TARGET_RunOperation(operation(OP_PROGRAM), "Testing...").has_value(),
                  value == 0x22);
    }
    end();
}
