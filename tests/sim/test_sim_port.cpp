#include "serial/sio.h"
#include "support/world.h"

namespace {

std::vector<uint8_t> readBytes(size_t count, uint32_t timeoutMs) {
    std::vector<uint8_t> bytes(count);
    bytes.resize(SIO_Read(bytes.data(), count, timeoutMs));
    return bytes;
}

// The lines as the program drives them to get into the boot ROM.
void resetIntoBootRom() {
    SIO_SetLines(SETDTR);
    CLOCK_Sleep(50);
    SIO_SetLines(SETRTS);
    CLOCK_Sleep(250);
    SIO_SetLines(CLRDTR);
    CLOCK_Sleep(250);
}

} // namespace

TEST(SimPort, ConversationUnderTheVirtualClock) {
    ChipOptions chip;
    chip.pacing = true;
    World world({.device = "VT-A32", .chip = chip});
    ASSERT_TRUE(SIO_IsOpen()) << SIO_GetOpenFailure();
    const size_t before = SIMPORT_Calls(world.line).size();
    const Moment start = CLOCK_Now();
    resetIntoBootRom();
    const std::vector<LineCall> calls = SIMPORT_Calls(world.line);
    using Kind = LineCall::Kind;
    EXPECT_EQ(std::vector(calls.begin() + static_cast<ptrdiff_t>(before), calls.end()),
              (std::vector<LineCall>{{Kind::setDtr, start, 1},
                                     {Kind::setRts, Moment{start.us + 50000}, 1},
                                     {Kind::setDtr, Moment{start.us + 300000}, 0}}));
    EXPECT_EQ(SIO_ChangeBaudrate(9600), 38400U);
    SIO_WriteByte(0x5A);
    const Moment sent = CLOCK_Now();
    EXPECT_EQ(readBytes(1, 30), std::vector<uint8_t>{0x5A});
    EXPECT_EQ(CLOCK_Now().us - sent.us, 2084); // ten bits there and ten back
    SIO_WriteByte(0x07);
    EXPECT_EQ(readBytes(1, 30), std::vector<uint8_t>{0x07});
    // What was written leaves at the old rate before the new one holds.
    EXPECT_EQ(SIO_ChangeBaudrate(38400), 9600U);
    SIO_WriteByte(0x90);
    EXPECT_EQ(readBytes(4, 100), (std::vector<uint8_t>{0x90, 0x80, 0x00}));
    EXPECT_EQ(world.violations(), "");
    EXPECT_EQ(SIMPORT_BytesToChip(world.line), 3U);
    EXPECT_EQ(SIMPORT_BytesFromChip(world.line), 5U);
}
