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
    for (int i = 0; i < bytes; ++i)
        text += HEXTEXT_FromBytes(std::vector<uint8_t>{static_cast<uint8_t>(value >> 8 * i)});
    return text;
}

std::string repeat(const std::string& text, size_t count) {
    std::string all;
    for (size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

// A good frame around a payload of hex digits.
std::string frame(const std::string& payload) {
    const auto bytes = bytesOfHex(payload);
    return "EBED" + hex(static_cast<uint32_t>(bytes.size()), 2) + HEXTEXT_FromBytes(bytes) +
           hex(_FrameSum(bytes, {}), 1) + "EC";
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
const std::string kThree = "Bank = 1000,1000, 2000,100, 3000,200\nTimeoutEraseBlock = 5000";
const std::string kOne = "Bank = 1000,400\nTimeoutEraseBlock = 5000";

struct OpCase {
    std::string name;
    std::string device;
    int code;
    Script script;
    std::string errors; // empty: completed
    std::function<void()> prepare = [] {};
    uint32_t pageLen = 0;
    uint32_t packet = 128;
};

void range(uint32_t first, uint32_t last) {
    TARGET_State().RangeStart = first;
    TARGET_State().RangeEnd = last;
}

void load(uint32_t address, size_t count, uint8_t value) {
    HEXDATA_AddData(address, std::vector<uint8_t>(count, value));
}

// Runs one operation on a loader that is just there.
void check(const OpCase& c) {
    SCOPED_TRACE(c.name);
    ScriptWorld world(c.device, c.script);
    HEXDATA_Reset();
    world.identifyReply = frame("00 00000000" + hex(c.packet, 2));
    TARGET_Init(nullptr, {});
    TARGET_State().PageLen = c.pageLen;
    TARGET_SetLinkState(LINK_RAMCODE);
    TARGET_BeginCommand("Test");
    c.prepare();
    EXPECT_EQ(TARGET_RunOperation(c.code, "Testing..."), c.errors.empty());
    EXPECT_EQ(world.deviation(), "");
    EXPECT_EQ(world.errors(), c.errors);
    const bool linkFailed = c.errors == "Timeout error";
    EXPECT_EQ(TARGET_State().LinkState, linkFailed ? LINK_IDLE : LINK_RAMCODE);
    TARGET_Stop();
    TARGET_SetLinkState(LINK_IDLE);
}

} // namespace

TEST(Frames, RepliesAreTakenApart) {
    struct Case {
        std::string payload;
        ReplyKind kind;
        uint16_t value = 0;
        uint32_t address = 0;
        size_t data = 0;
    };
    const std::vector<Case> cases = {
        {"", ReplyKind::malformed},
        {"00 01020304 8000", ReplyKind::identify, 0x80},
        {"00 01020304 80", ReplyKind::malformed},
        {"03 78563412 0200 AABB", ReplyKind::data, 0, 0x12345678, 2},
        {"03 78563412 0300 AABB", ReplyKind::malformed},
        {"03 78563412 0100 AABB", ReplyKind::malformed},
        {"03 7856", ReplyKind::malformed},
        {"04 3412", ReplyKind::crc, 0x1234},
        {"04 34", ReplyKind::malformed},
        {"07 3412", ReplyKind::sum, 0x1234},
        {"F1", ReplyKind::nak},
        {"F3 02 34120000 5A", ReplyKind::error, 0, 0x1234},
        {"F3 02 34120000", ReplyKind::malformed},
        {"01", ReplyKind::acknowledge},
        {"FF 0000", ReplyKind::acknowledge},
    };
    for (const Case& c : cases) {
        const auto payload = bytesOfHex(c.payload);
        const Reply reply = _ParseReply(payload);
        EXPECT_EQ(static_cast<int>(reply.kind), static_cast<int>(c.kind)) << c.payload;
        EXPECT_EQ(reply.value, c.value) << c.payload;
        EXPECT_EQ(reply.address, c.address) << c.payload;
        EXPECT_EQ(reply.data.size(), c.data) << c.payload;
    }
    EXPECT_EQ(frame(""), "EBED000000EC");
    EXPECT_EQ(frame("00"), "EBED01000001EC");
}

TEST(Frames, OperationsOnBlocks) {
    const Script first = {{block(1, 0x1000, 0x1000), kAck}};
    const std::string relocated = "Bank = 10000,100\nRelocate = 0,10000,8000";
    const auto onlyBlock1 = [] {
        DEVPROPS_SelectBlock(0, false);
        DEVPROPS_SelectBlock(2, false);
    };
    const auto withXData = [] {
        DevProps props = DEVPROPS_Get();
        props.XDataStart = 0xF000;
        props.XDataLen = 0x100;
        DEVPROPS_Set(props);
    };
    const std::string outside = "Block 1 lies outside the address range of the device";
    const std::vector<OpCase> cases = {
        {"erase chip",
         kThree,
         OP_ERASE_CHIP,
         {{block(1, 0x1000, 0x1000), kAck},
          {block(1, 0x2000, 0x100), kAck},
          {block(1, 0x3000, 0x200), kAck},
          {block(1, 0xF000, 0x100), kAck}},
         "",
         withXData},
        {"erase one block",
         kThree,
         OP_ERASE_BLOCKS,
         {{block(1, 0x2000, 0x100), kAck}},
         "",
         onlyBlock1},
        {"protect", relocated, OP_PROTECT_CHIP, {{block(6, 0, 0x100), kAck}}, ""},
        {"erase error stops",
         kThree,
         OP_ERASE_CHIP,
         {{block(1, 0x1000, 0x1000), frame("F3 01 00000000 00")}},
         "Error erasing sector"},
        {"not acknowledged",
         kThree,
         OP_PROTECT_BLOCKS,
         {{block(6, 0x1000, 0x1000), frame("F1")}},
         "Not acknowledged"},
        {"blank check",
         kThree,
         OP_BLANK_CHECK,
         {{block(5, 0x2000, 0x100), frame("F3 04 10200000 7F")}},
         "Target not blank at address 2010\nContents: 7F",
         onlyBlock1},
        {"unknown error",
         relocated,
         OP_ERASE_CHIP,
         {{block(1, 0, 0x100), frame("F3 2A 10000000 05")}},
         "Unknown target error 42 at address 10010\nContents: 05"},
        {"error without a number",
         kOne,
         OP_ERASE_CHIP,
         {{block(1, 0x1000, 0x400), frame("F3 00 10000000 05")}},
         "Unknown target error 0 at address 10\nContents: 05"},
        {"crc over two blocks",
         kThree,
         OP_GET_CRC,
         {{block(4, 0x1000, 0xFFF, "01"), frame("04 1111")},
          {block(4, 0x3000, 0x1FF, "00"), frame("04 2222")}},
         "",
         [] { DEVPROPS_SelectBlock(1, false); }},
        {"sum answered by something else",
         kOne,
         OP_GET_SUM,
         {{block(7, 0x1000, 0x3FF, "01"), kAck}},
         "Timeout error"},
        {"erase answered by data",
         kOne,
         OP_ERASE_CHIP,
         {{block(1, 0x1000, 0x400), data(0x1000, "FF")}},
         "Timeout error"},
        {"block below the first",
         "Bank = 2000,100, 1000,100, 3000,100",
         OP_ERASE_BLOCKS,
         {},
         outside},
        {"descending blocks",
         "Bank = 2000,100, 1000,100",
         OP_BLANK_READ_BLOCKS,
         {},
         "The blocks of the device are not in ascending order"},
    };
    for (const OpCase& c : cases)
        check(c);
}

TEST(Frames, OperationsThatRead) {
    const std::string ff = repeat("FF", 256);
    const auto image257 = [] {
        load(0, 257, 0x11);
        range(0, 0x100);
    };
    const std::string half = repeat("11", 128);
    const std::string relocated = "Bank = 10000,100\nRelocate = 0,10000,100";
    const std::vector<OpCase> cases = {
        {"read back 257",
         kOne,
         OP_READ_BACK,
         {{read(0, 257), data(0, ff + "12")}},
         "",
         [] { range(0, 0x100); }},
        {"read back 512",
         kOne,
         OP_READ_BACK,
         {{read(0, 256), data(0, ff)}, {read(256, 256), data(256, ff)}},
         "",
         [] { range(0, 0x1FF); }},
        {"read at the top",
         kOne,
         OP_BLANK_READ,
         {{read(0xFFFFFF80, 128), data(0xFFFFFF80, half)}},
         "Target not blank at address FFFFFF80\nContents: 11",
         [] { range(0xFFFFFF80, 0xFFFFFFFF); }},
        {"blank at the top",
         kOne,
         OP_BLANK_READ,
         {{read(0xFFFFFF80, 128), data(0xFFFFFF80, repeat("FF", 128))}},
         "",
         [] { range(0xFFFFFF80, 0xFFFFFFFF); }},
        {"over the border of the relocated range",
         relocated,
         OP_READ_BACK,
         {{read(0xFFF0, 16), data(0xFFF0, repeat("00", 16))},
          {read(0, 16), data(0, repeat("01", 16))}},
         "",
         [] { range(0xFFF0, 0x1000F); }},
        {"empty range", kOne, OP_READ_BACK, {}, "The range 10 - F is empty", [] { range(16, 15); }},
        {"shorter reply",
         kOne,
         OP_BLANK_READ,
         {{read(0, 16), data(0, repeat("FF", 15))}},
         "Timeout error",
         [] { range(0, 15); }},
        {"empty reply",
         kOne,
         OP_BLANK_READ,
         {{read(0, 16), data(0, "")}},
         "Timeout error",
         [] { range(0, 15); }},
        {"reply about another address",
         kOne,
         OP_BLANK_READ,
         {{read(0, 16), data(1, repeat("FF", 16))}},
         "Timeout error",
         [] { range(0, 15); }},
        {"verify",
         kOne,
         OP_VERIFY,
         {{read(0, 128), data(0, half)},
          {read(128, 128), data(128, half)},
          {read(256, 1), data(256, "11")}},
         "",
         image257},
        {"verify differs at the end",
         kOne,
         OP_VERIFY,
         {{read(0, 128), data(0, half)},
          {read(128, 128), data(128, half)},
          {read(256, 1), data(256, "10")}},
         "Error comparing contents of address 100\nContents: 10",
         image257},
        {"verify with packets that no reply holds",
         kOne,
         OP_VERIFY,
         {{read(0, 993), data(0, repeat("22", 993))}, {read(993, 7), data(993, repeat("22", 7))}},
         "",
         [] {
             load(0, 1000, 0x22);
             range(0, 999);
         },
         1024},
        {"verify without a packet size",
         kOne,
         OP_VERIFY,
         {},
         "A packet size of 0 bytes is not supported",
         image257,
         0,
         0},
        {"blank read of blocks",
         kThree,
         OP_BLANK_READ_BLOCKS,
         {{read(0x2000, 256), data(0x2000, ff)},
          {read(0x3000, 256), data(0x3000, ff)},
          {read(0x3100, 256), data(0x3100, "FFFFFF7F" + repeat("00", 252))}},
         "Target not blank at address 3103\nContents: 7F",
         [] { DEVPROPS_SelectBlock(0, false); }},
    };
    for (const OpCase& c : cases)
        check(c);
}

TEST(Frames, OperationsThatWrite) {
    const auto words = [] {
        load(0x2001, 300, 0x55);
        range(0x2001, 0x212C);
    };
    const auto page = [] {
        load(0x1000, 5, 0x55);
        range(0x1000, 0x1004);
    };
    const std::string five = repeat("55", 5) + repeat("FF", 123);
    const std::string small = "Bank = 1000,60\nTimeoutEraseBlock = 5000";
    const std::vector<OpCase> cases = {
        {"one page", kOne, OP_PROGRAM, {{program(0x1000, five), kAck}}, "", page, 128},
        {"words",
         kOne,
         OP_PROGRAM,
         {{program(0x2000, "FF" + repeat("55", 123)), kAck},
          {program(0x207C, repeat("55", 124)), kAck},
          {program(0x20F8, repeat("55", 53) + "FFFFFF"), kAck}},
         "",
         words},
        {"write error",
         kOne,
         OP_PROGRAM,
         {{program(0x1000, five), frame("F3 02 34120000 5A")}},
         "Error writing on address 1234\nContents: 5A",
         page,
         128},
        {"over the border of the relocated range",
         "Bank = FF80,100\nRelocate = 0,10000,8000",
         OP_PROGRAM,
         {{program(0xFF80, repeat("FF", 120) + repeat("66", 8)), kAck},
          {program(0, repeat("66", 8) + repeat("FF", 120)), kAck}},
         "",
         [] {
             load(0xFFF8, 16, 0x66);
             range(0xFFF8, 0x10007);
         },
         128},
        {"last byte of the address space",
         kOne,
         OP_PROGRAM,
         {{program(0xFFFFFF80, repeat("FF", 127) + "77"), kAck}},
         "",
         [] {
             load(0xFFFFFFFF, 1, 0x77);
             range(0xFFFFFFFF, 0xFFFFFFFF);
         },
         128},
        {"fill shortened to the block",
         small,
         OP_FILL_CHIP,
         {{program(0x1000, repeat("FF", 64)), kAck}, {program(0x1040, repeat("FF", 64)), kAck}},
         "",
         [] {},
         64},
        {"fill selected blocks",
         kThree,
         OP_FILL_BLOCKS,
         {{program(0x2000, repeat("FF", 256)), kAck}},
         "",
         [] {
             DEVPROPS_SelectBlock(0, false);
             DEVPROPS_SelectBlock(2, false);
         },
         256},
        {"whole device by pages",
         kOne,
         OP_PROGRAM_TARGET,
         {{program(0x1000, "FF" + repeat("33", 511)), kAck},
          {program(0x1200, "33" + repeat("FF", 511)), kAck}},
         "",
         [] { load(0x1001, 512, 0x33); },
         512},
        {"fill without pages",
         kOne,
         OP_FILL_CHIP,
         {},
         "The operation needs a device description with a page length"},
        {"page too long",
         kOne,
         OP_PROGRAM,
         {},
         "A page length of 2048 bytes is not supported. Maximum 1024 bytes",
         page,
         2048},
        {"page of an odd length",
         kOne,
         OP_PROGRAM,
         {},
         "A page length of 96 bytes is not a power of two",
         page,
         96},
        {"packet too long",
         kOne,
         OP_PROGRAM,
         {},
         "A packet size of 1028 bytes is not supported. Maximum 1024 bytes",
         page,
         0,
         1028},
        {"packet too short",
         kOne,
         OP_PROGRAM,
         {},
         "A packet size of 7 bytes is not supported. Minimum 8 bytes",
         page,
         0,
         7},
    };
    for (const OpCase& c : cases)
        check(c);
}

TEST(Frames, BadFramesAreTimeouts) {
    const std::string good = frame("01");
    const std::string host = block(1, 0x1000, 0x400);
    const std::vector<std::string> replies = {"",
                                              "EC" + good.substr(2),
                                              "EBEC" + good.substr(4),
                                              good.substr(0, good.size() - 2) + "ED",
                                              good.substr(0, good.size() - 2),
                                              "EBED01000103EC",
                                              "EBED000000EC",
                                              frame(repeat("01", 1001))};
    for (const std::string& reply : replies)
        check({reply, kOne, OP_ERASE_CHIP, {{host, reply}}, "Timeout error"});
    check({"longest", kOne, OP_ERASE_CHIP, {{host, frame(repeat("01", 1000))}}, ""});
}

// What a failed operation has left in the page buffer must not be written by the next one.
TEST(Frames, FailedOperationLeavesNothingBehind) {
    ScriptWorld world(kOne, {{program(0x1000, repeat("11", 128)), frame("F1")},
                             {program(0x1000, repeat("22", 128)), kAck}});
    HEXDATA_Reset();
    world.identifyReply = frame("00 00000000 8000");
    TARGET_Init(nullptr, {});
    TARGET_State().PageLen = 128;
    TARGET_SetLinkState(LINK_RAMCODE);
    for (const uint8_t value : std::vector<uint8_t>{0x11, 0x22}) {
        HEXDATA_Clear();
        load(0x1000, 128, value);
        range(0x1000, 0x107F);
        TARGET_BeginCommand("Test");
        EXPECT_EQ(TARGET_RunOperation(OP_PROGRAM, "Testing..."), value == 0x22);
    }
    EXPECT_EQ(world.deviation(), "");
    TARGET_Stop();
    TARGET_SetLinkState(LINK_IDLE);
}
