// The operations that the worker runs on the RAM loader: their codes and what they share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

enum OperationCode : int {
    OP_ERASE_CHIP = 1,
    OP_ERASE_BLOCKS = 2,
    OP_READ_BACK = 3,
    OP_PROGRAM = 4,
    OP_GET_CRC = 5,
    OP_VERIFY = 6,
    OP_BLANK_CHECK = 7,
    OP_PROTECT_CHIP = 8,
    OP_PROTECT_BLOCKS = 9,
    OP_GET_SUM = 10,
    OP_FILL_CHIP = 11,
    OP_BLANK_READ = 12,
    OP_FILL_BLOCKS = 13,
    OP_BLANK_READ_BLOCKS = 14,
    OP_PROGRAM_TARGET = 15,
};

// How an operation ended. A failed one has set the error code or called _Fail.
enum class Outcome { completed, failed, cancelled };

// Runs the operation of that code from its progress set-up to its outcome. Worker thread.
Outcome _RunOperationCode(int code);

// The message of a failure that has no target error code; taken once.
Outcome _Fail(std::string text);
std::string _TakeFailure();

// What the operations use.
struct Block {
    int index = 0;
    uint32_t start = 0;
    uint32_t length = 0;                                      // bytes
    uint64_t end() const { return uint64_t{start} + length; } // one past the last byte
};

bool _IsCancelled();
// The blocks of the selected device, the extra data area included.
std::vector<Block> _DeviceBlocks();
// The blocks that an operation is to treat: all, or the selected ones. False, with the reason set
// by _Fail, when one of them lies outside the device's address range, which runs from the first
// block to the last: passing over it would look like success.
bool _WantedBlocks(bool all, std::vector<Block>& wanted);
// The device's address range as the first and last blocks give it; false, set by _Fail, when there
// is none.
bool _DeviceRange(uint64_t& start, uint64_t& end);
// The next piece of the image at or after `from`, for one frame: held bytes, none beyond the range
// of the operation, at most `limit` and neighbours on the chip as well. Length 0: there is none.
struct Piece {
    uint32_t address = 0;
    uint32_t length = 0; // bytes
    uint64_t end() const { return uint64_t{address} + length; }
};
Piece _NextPiece(uint64_t from, uint32_t limit);
// Range and position of the progress display; beyond its width they saturate.
void _SetProgressRange(uint64_t total);
void _SetProgress(uint64_t position);

Outcome _OpEraseChip();
Outcome _OpEraseBlocks();
Outcome _OpProtectChip();
Outcome _OpProtectBlocks();
Outcome _OpReadBack();
Outcome _OpBlankRead();
Outcome _OpBlankReadBlocks();
Outcome _OpBlankCheck();
Outcome _OpVerify();
Outcome _OpProgram();
Outcome _OpProgramTarget();
Outcome _OpFillChip();
Outcome _OpFillBlocks();
Outcome _OpGetCrc();
Outcome _OpGetSum();
