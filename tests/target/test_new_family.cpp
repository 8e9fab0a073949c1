// A boot-ROM family that is not built in: what a new one needs is a record for the program, a
// record for the virtual chip and a word for descriptions, and nothing else knows of it.

#include "bootrom/boot_wire.h"
#include "bootrom/flash_commands.h"
#include "bootrom/handshake.h"
#include "serial/sio_line.h"
#include "sim/chip_state.h"
#include "target_world.h"

namespace {

constexpr int kToyType = 7;
constexpr uint8_t kMatch = 0xA5;

// The program's side.

Result<> matchToy(uint32_t baudrate) {
    Result<> matched = familyMatchByte(kMatch);
    if (matched) {
        SIO_ChangeBaudrate(baudrate);
    }
    return matched;
}

Result<> getSumToy() {
    SIO_WriteByte(0x01);
    return readBootSum(kSumMs);
}

// The count, the bytes of the image's text, answered with their sum's complement.
Result<LoaderTransfer> prepareToy(const std::string& text) {
    return LoaderTransfer([bytes = std::vector<uint8_t>(text.begin(), text.begin() + 20)](bool) {
        SIO_WriteByte(0x02);
        SIO_WriteByte(static_cast<uint8_t>(bytes.size()));
        SIO_Write(bytes);
        return bootAwait(bootChecksum(bytes), "Loader not taken");
    });
}

Result<> eraseToy() {
    SIO_WriteByte(0x03);
    uint8_t answer[1] = {};
    Result<> answered = _EraseWait(answer);
    return answered ? _BootCheck(answer[0] == 0x33, "Not erased") : answered;
}

const BootRomProtocol kToy = {.matchBaudrate = 19200,
                              .Match = matchToy,
                              .GetSum = getSumToy,
                              .PrepareImage = prepareToy,
                              .EraseChip = eraseToy};

// The chip's side.

void matchedToy(Chip& chip, Moment) {
    chip.rate = 0;
    SIM_WantCommand(chip);
}

void takeLoaderToy(Chip& chip, Moment at) {
    SIM_BootReply(chip, ChipStep::data, {SIM_TwosComplement(chip.boot.bytes)}, at);
    SIM_StartLoader(chip);
}

void countToy(Chip& chip, Moment) {
    SIM_Want(chip, chip.boot.bytes.front(), takeLoaderToy);
}

void commandToy(Chip& chip, Moment at) {
    const uint16_t sum = SIMFLASH_BootSum(chip.flash);
    switch (const uint8_t command = chip.boot.bytes.front()) {
    case 0x01:
        SIM_BootReply(chip, ChipStep::sum,
                      {static_cast<uint8_t>(sum >> 8), static_cast<uint8_t>(sum)}, at);
        SIM_WantCommand(chip);
        break;
    case 0x02:
        SIM_Want(chip, 1, countToy);
        break;
    case 0x03:
        SIM_BootReply(chip, ChipStep::cleared, {0x33}, SIM_EraseChip(chip, at));
        SIM_WantCommand(chip);
        break;
    default:
        SIM_UnknownCommand(chip, command);
    }
}

const BootFamily kToyChip = {
    .matchByte = kMatch, .matchRate = 19200, .matched = matchedToy, .command = commandToy};

} // namespace

TEST(NewFamily, WorksFromItsRecordsAlone) {
    addRamcodeType("TYPE_TOY", kToyType);
    addProtocol(kToyType, kToy);
    SIM_AddFamily(kToyType, kToyChip);
    WorldOptions options;
    options.device = "TOY";
    options.description = "Version = 100\nManufacturer = \"M\"\nDevice = \"TOY\"\nBank = 0,8000\n"
                          "UARTRamcode = \"vt-b.s\", \"TYPE_TOY\"\nTimeoutEraseAll = 5000\n"
                          "TimeoutGetSUM = 5000\nFLASHPageLen = 128\nSprtEraseChip = 1\n"
                          "SprtCRC = 1\n";
    options.chip.password = {1, 2, 3};
    TargetWorld world(options);
    expectAutoAndVerify(world);
    EXPECT_EQ(TARGET_FlashStatus(), 1);
    EXPECT_EQ(world.allErrors(),
              "Flash Memory Status is not supported by the boot ROM of this device");
    EXPECT_EQ(TARGET_EraseChip(true), 0);
    EXPECT_TRUE(world.chipIsBlank());
}
