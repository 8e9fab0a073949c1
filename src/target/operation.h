// The operations that the worker runs on the RAM loader: their codes and what they share.
#pragma once

#include "data/address_range.h"
#include "data/image_copy.h"
#include "device/device.h"
#include "link/failure.h"

#include <cstdint>
#include <memory>
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
    OP_COMPARE = 16,
};

// What the worker is to do, handed over as one value.
struct Operation {
    OperationCode code;
    AddressRange range = {};              // of those that go from address to address
    std::vector<DeviceBlock> blocks = {}; // of those that go block by block
    std::shared_ptr<ImageCopy> into = {}; // reads its ranges and fills in the rest
};

// Runs an operation from its progress set-up to its end: the checksum of those that get one, else
// 0. Worker thread.
Result<uint16_t> runOperation(const Operation& operation);

// The rows of the table. Each gives up between two exchanges once it is cancelled.
Result<> opEraseChip(const Operation& operation);
Result<> opEraseBlocks(const Operation& operation);
Result<> opProtectChip(const Operation& operation);
Result<> opProtectBlocks(const Operation& operation);
Result<> opReadBack(const Operation& operation);
Result<> opBlankRead(const Operation& operation);
Result<> opBlankReadBlocks(const Operation& operation);
Result<> opBlankCheck(const Operation& operation);
Result<> opVerify(const Operation& operation);
Result<> opCompare(const Operation& operation);
Result<> opProgram(const Operation& operation);
Result<> opProgramTarget(const Operation& operation);
Result<> opFillChip(const Operation& operation);
Result<> opFillBlocks(const Operation& operation);
Result<uint16_t> opGetCrc(const Operation& operation);
Result<uint16_t> opGetSum(const Operation& operation);

// What they share.

// A failure with TERR_CANCELLED when the user or an interruption has ended the operation.
Result<> goesOn();
// The address range of the device, from its first block to its last; a failure when there is none.
Result<AddressRange> deviceRange();
// A failure when one of the blocks lies outside the device's address range: passing over it would
// look like success.
Result<> checkBlocks(const std::vector<DeviceBlock>& blocks);
// "block 2 (4000 - 5FFF)": the block that holds the address of the image.
std::string blockText(const DeviceBlock& block);
std::string blockTextAt(uint32_t address);
// Goes through what the image holds in `range`, showing the bytes that are done: `treat` is given
// the pieces for one frame each, at most `limit` bytes that are neighbours on the chip as well.
Result<> forEachPiece(const AddressRange& range, uint32_t limit,
                      Result<> (*treat)(const AddressRange& piece));
// Range and position of the progress display; beyond its width they saturate. The step shown is the
// block in which `address` lies, or the block that is treated.
void setProgressRange(uint64_t total);
void setProgress(uint64_t position, uint64_t address);
void setBlockProgress(const DeviceBlock& block);
