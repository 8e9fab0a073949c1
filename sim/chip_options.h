// How a virtual chip is set up: what it holds, how fast it is, and in which ways it misbehaves.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// One exchange of the chip with the program; a fault names the one that it spoils.
enum class ChipStep : uint8_t {
    any,
    // boot ROM, both families
    match,
    baudrate,
    sum,
    product,
    ram,       // echo of the RAM loader command
    password,  // TYPE_B: the password was taken
    header,    // TYPE_B: the block header was taken
    data,      // the closing reply of the download
    rewrite,   // echo of the rewrite command
    enable,    // TYPE_B: echo of the erase enable byte
    cleared,   // the result of an erase by the rewrite command
    rewritten, // TYPE_A: the sum behind a rewrite
    erase,     // TYPE_A: echo of the erase command
    erased,    // TYPE_A: the sum behind it
    status,
    readProtect,
    readProtected,
    protect,
    protectDone,
    // RAM loader, by frame command
    identify,
    eraseBlock,
    program,
    read,
    crc,
    blankCheck,
    protectBlock,
    frameSum,
    count_
};

enum class FaultKind : uint8_t {
    noReply,        // the reply is not sent
    wrongReply,     // its first byte (of a frame: the byte that starts it) is another
    badChecksum,    // its check byte, or else its last byte, is off by one
    shortReply,     // only the first `value` bytes are sent
    longReply,      // `value` bytes too many: in a frame as payload, else behind the reply
    garbage,        // `value` random bytes come first
    slow,           // it comes `value` milliseconds late
    nak,            // loader: not acknowledged
    errorReply,     // loader: an error reply with code `value` and `address`
    wrongProduct,   // product information: the first compared byte is another
    refusePassword, // the right password is refused
    stuckBits,      // the bits of `value` at `address` read as 1, whatever is programmed
    deadBits,       // the bits of `value` at `address` read as 0, also when erased
    lostWrite,      // the n-th program command is acknowledged and not done
    misplacedWrite, // the n-th program command goes to its address XOR `address`
    shiftedWrite,   // the n-th program command's bytes stand `value` places on, the last ones first
    shortErase,     // the n-th erase leaves the last `value` bytes (0: 1) of what it erases
    powerCut,       // the n-th flash operation is half done, then the chip is silent until a reset
    die,            // silent from the n-th reply of the step on, until a reset
    dieAtByte,      // silent from the n-th received byte on, until a reset
    resetAtByte,    // the n-th received byte comes while the chip resets itself: its RAM is lost
    lateMatch,      // the first n - 1 matching bytes after a reset are not answered
    count_
};

struct ChipFault {
    FaultKind kind = FaultKind::noReply;
    ChipStep step = ChipStep::any;
    uint32_t n = 0; // which time, counted from 1; 0 every time
    uint32_t address = 0;
    uint32_t value = 0;
};

// Reads "KIND[@STEP][#N][,address=HEX][,value=HEX]", e.g. "no-reply@program#3". False with a
// message in `error` when it is not understood.
bool CHIP_ParseFault(std::string_view text, ChipFault& fault, std::string& error);
// The names of all kinds and of all steps, blank-separated, for a help text.
std::string CHIP_FaultKindNames();
std::string CHIP_StepNames();

struct ChipOptions {
    // Password that the chip asks for; empty: what its flash holds at the places that the device
    // description names.
    std::vector<uint8_t> password;
    uint16_t packetSize = 128; // bytes, as the loader reports it
    bool pacing = false;       // bytes take their time on the line, in both directions
    bool checkRate = true;     // false: the line has no rate worth checking; bytes come as sent
    // Pauses that the host has to make and records are judged as strictly as the protocol
    // prescribes them; false: as far as this chip itself needs them.
    bool strict = true;
    bool startInBootRom = false; // after power-up; false: the application runs
    // Where no reset line exists: a matching byte outside a conversation, or after silence, enters
    // the boot ROM again.
    bool resyncByMatch = false;
    std::string applicationText; // what the application sends when it starts
    bool applicationEcho = false;
    uint32_t applicationEveryMs = 0; // 0: once; else it sends its text again and again
    uint32_t startupUs = 20000;      // from the release of reset to the first byte it can receive
    uint32_t eraseBlockUs = 20000;
    uint32_t eraseChipUs = 100000;
    uint32_t programUs = 1000;       // a program command
    uint32_t checksumUsPerKiB = 100; // sum, CRC and blank check
    uint32_t seed = 1;               // of everything random
    std::vector<ChipFault> faults;
    // Gets every line of the transcript as it is complete; empty: no transcript is made.
    std::function<void(const std::string&)> transcript;
};
