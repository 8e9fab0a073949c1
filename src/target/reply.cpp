#include "target/reply.h"

#include "device/device.h"
#include "link/target_state.h"
#include "notice/run.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "serial/sio_line.h"

#include <algorithm>

namespace {

uint32_t number(std::span<const uint8_t> bytes) {
    uint32_t value = 0;
    for (size_t i = bytes.size(); i > 0; --i) {
        value = value << 8 | bytes[i - 1];
    }
    return value;
}

Reply parseData(std::span<const uint8_t> fields) {
    Reply reply;
    if (fields.size() >= 6 && number(fields.subspan(4, 2)) == fields.size() - 6) {
        reply.kind = ReplyKind::data;
        reply.address = number(fields.first(4));
        reply.data.assign(fields.begin() + 6, fields.end());
    }
    return reply;
}

Reply parseValue(ReplyKind kind, std::span<const uint8_t> fields, size_t offset) {
    Reply reply;
    if (fields.size() >= offset + 2) {
        reply.kind = kind;
        reply.value = static_cast<uint16_t>(number(fields.subspan(offset, 2)));
    }
    return reply;
}

Reply parseError(std::span<const uint8_t> fields) {
    Reply reply;
    if (fields.size() >= 6) {
        reply.kind = ReplyKind::error;
        reply.code = fields[0];
        reply.address = number(fields.subspan(1, 4));
        reply.contents = fields[5];
    }
    return reply;
}

// An interrupted run does not wait for the chip, and a lost port brings nothing more.
bool exchangeEnds() {
    return RUN_IsInterrupted() || SIO_IsLost();
}

bool linkIsTaken() {
    return TARGET_State().LinkState != LINK_RAMCODE;
}

// The port then goes to somebody else, the next run of the program included, who must not find the
// answer to what was asked here.
bool portIsLeft() {
    return linkIsTaken() || TARGET_State().Stop != 0;
}

// Marks the port as used by the worker. Whoever takes the link away waits for the end of an
// exchange: a reply that nobody takes would be read as the boot ROM's answer.
class ExchangeMark {
public:
    ExchangeMark() { TARGET_State().Exchanging = 1; }
    ~ExchangeMark() {
        TARGET_State().Exchanging = 0;
        if (linkIsTaken()) {
            CLOCK_Notify();
        }
    }
    ExchangeMark(const ExchangeMark&) = delete;
    ExchangeMark& operator=(const ExchangeMark&) = delete;
};

} // namespace

Reply parseReply(std::span<const uint8_t> payload) {
    if (payload.empty()) {
        return {};
    }
    const auto fields = payload.subspan(1);
    Reply reply;
    switch (payload[0]) {
    case 0x00:
        return parseValue(ReplyKind::identify, fields, 4);
    case 0x03:
        return parseData(fields);
    case 0x04:
        return parseValue(ReplyKind::crc, fields, 0);
    case 0x07:
        return parseValue(ReplyKind::sum, fields, 0);
    case 0xF1:
        reply.kind = ReplyKind::nak;
        return reply;
    case 0xF3:
        return parseError(fields);
    default:
        reply.kind = ReplyKind::acknowledge;
        return reply;
    }
}

Result<Reply> TARGET_HandleReply(std::span<const uint8_t> payload, ReplyKind wanted) {
    Reply reply = parseReply(payload);
    reply.address = DEVICE_RelocateAddr(reply.address);
    if (reply.kind == ReplyKind::nak) {
        return Failure{TERR_NAK};
    }
    if (reply.kind == ReplyKind::error) {
        const bool known = reply.code >= TERR_ERASE && reply.code <= TERR_TIMEOUT;
        return Failure{known ? reply.code : TERR_UNKNOWN + reply.code, reply.address,
                       reply.contents};
    }
    if (reply.kind != wanted) {
        return Failure{TERR_TIMEOUT};
    }
    return reply;
}

Result<Reply> exchange(const LoaderCommand& command, const Fields& fields,
                       std::span<const uint8_t> data, size_t replyData) {
    std::vector<uint8_t> head = {command.code};
    head.insert(head.end(), fields.bytes().begin(), fields.bytes().end());
    const Failure noAnswer = {
        .code = TERR_TIMEOUT,
        .hint = {Cause::loaderLost,
                 formatText("command %02X, %u ms", command.code, command.wait())}};
    std::vector<uint8_t> payload;
    {
        const ExchangeMark mark;
        if (portIsLeft()) {
            return Failure{TERR_TIMEOUT};
        }
        TARGET_SendFrame(head, data);
        const Moment deadline =
            SIO_AnswerDeadline(command.wait(), command.replyBytes + replyData + kFrameBytes);
        if (TARGET_ReceiveFrame(payload, deadline, {exchangeEnds, portIsLeft}) < 0) {
            return noAnswer;
        }
    }
    Result<Reply> reply = TARGET_HandleReply(payload, command.reply);
    return !reply && reply.error().code == TERR_TIMEOUT ? withHint(reply, noAnswer.hint) : reply;
}

Result<Reply> readSome(const LoaderCommand& command, uint32_t address, uint32_t count) {
    const uint32_t chipAddress = TARGET_ToChipAddress(address);
    Result<Reply> reply = exchange(command, Fields().u32(chipAddress).u16(count), {}, count);
    if (reply && (reply->data.empty() || reply->data.size() > count ||
                  reply->address != DEVICE_RelocateAddr(chipAddress))) {
        return Failure{TERR_TIMEOUT};
    }
    return reply;
}

Result<Reply> readTarget(const LoaderCommand& command, uint32_t address, uint32_t count) {
    Result<Reply> reply = readSome(command, address, count);
    if (reply && reply->data.size() != count) {
        return Failure{TERR_TIMEOUT};
    }
    return reply;
}

uint32_t TARGET_ToChipAddress(uint32_t address) {
    const uint32_t offset = address - DEVICE_GetRelocateTo();
    return address >= DEVICE_GetRelocateTo() && offset < DEVICE_GetRelocateLen()
               ? DEVICE_GetRelocateFrom() + offset
               : address;
}

uint32_t mappedRun(uint32_t address, uint32_t count) {
    const uint64_t start = DEVICE_GetRelocateTo();
    const uint64_t end = start + DEVICE_GetRelocateLen();
    uint64_t run = count;
    for (const uint64_t border : {start, end}) {
        if (start != end && address < border) {
            run = std::min(run, border - address);
        }
    }
    return static_cast<uint32_t>(run);
}
