#include "shell/result.h"

#include "data/hexdata.h"
#include "data/sha256.h"
#include "device/device.h"
#include "device/devprops.h"
#include "device/image_checksum.h"
#include "notice/run.h"
#include "persist/hex_text.h"
#include "platform/files.h"
#include "platform/format.h"
#include "platform/port_list.h"
#include "platform/process.h"
#include "platform/version.h"
#include "serial/sio.h"
#include "shell/account.h"
#include "shell/cmdline.h"
#include "shell/console.h"
#include "shell/run_words.h"
#include "shell/verdict.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json; // the fields in the order of the document

constexpr int kSchema = 1;
constexpr char kFaultStage[] = "fault";

bool isWritten = false;

Json textOrNull(const std::string& text) {
    return text.empty() ? Json() : Json(text);
}

template <class T>
Json valueOrNull(const std::optional<T>& value) {
    return value ? Json(*value) : Json();
}

double rounded(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

const char* outcomeText(Outcome outcome) {
    constexpr const char* kTexts[] = {"passed", "failed", "skipped"};
    return kTexts[static_cast<int>(outcome)];
}

// Those of the line whose turn has not come were skipped.
Json commands(const AccountedTry& each) {
    std::vector<AccountedCommand> all = each.commands;
    const std::vector<std::string> names = CMDLINE_CommandNames();
    for (size_t i = all.size(); i < names.size(); ++i) {
        all.push_back({names[i]});
    }
    Json list = Json::array();
    for (const AccountedCommand& command : all) {
        list.push_back({{"name", command.name},
                        {"outcome", outcomeText(command.outcome)},
                        {"seconds", rounded(command.seconds)}});
    }
    return list;
}

Json port() {
    if (SIO_PortName().empty()) {
        return {};
    }
    const uint32_t number = SIO_GetPort();
    const std::string path = number == 0 ? SIO_GetDevice() : SIO_DeviceOfPort(number);
    const PresentPort present = PORTLIST_Find(path);
    return {{"name", SIO_PortName()},
            {"path", path},
            {"adapter",
             {{"maker", textOrNull(present.maker)},
              {"product", textOrNull(present.product)},
              {"serial_number", textOrNull(present.serialNumber)}}}};
}

Json files(const Account& account) {
    Json list = Json::array();
    for (const AccountedFile& file : account.files) {
        list.push_back({{"path", file.path},
                        {"bytes", valueOrNull(file.bytes)},
                        {"sha256", valueOrNull(file.sha256)}});
    }
    return list;
}

Json patches(const Account& account) {
    Json list = Json::array();
    for (const AccountedPatch& patch : account.patches) {
        Sha256 digest; // what a file holds may be a secret
        digest.add({reinterpret_cast<const char*>(patch.bytes.data()), patch.bytes.size()});
        list.push_back(
            {{"address", formatText("%X", patch.address)},
             {"bytes", patch.bytes.size()},
             {"data", patch.path.empty() ? Json(HEXTEXT_FromBytes(patch.bytes)) : Json()},
             {"path", textOrNull(patch.path)},
             {"sha256", digest.finish()}});
    }
    return list;
}

Json blocks() {
    Json list = Json::array();
    for (const DeviceBlock& block : DEVICE_SelectedBlocks()) {
        list.push_back(block.index);
    }
    return list;
}

Json checksum() {
    const bool crc = DEVICE_GetSprtCRC() != 0;
    const std::string chip = VERDICT_ChipChecksum();
    return {{"kind", crc ? "CRC" : "SUM"},
            {"image", formatText("%04X", DEVICE_CalcImageChecksum(crc))},
            {"chip", chip.starts_with('-') ? Json() : textOrNull(chip)}};
}

Json tries(const Account& account) {
    Json list = Json::array();
    for (const AccountedTry& each : account.tries) {
        list.push_back({{"verdict", each.stage.empty() ? "passed" : "failed"},
                        {"commands", commands(each)},
                        {"stage", textOrNull(each.stage)},
                        {"errors", each.errors},
                        {"hints", each.hints},
                        {"seconds", rounded(each.seconds)}});
    }
    return list;
}

// What the run worked on; without a device nothing can be told of blocks and checksum.
void addWork(Json& result, const Account& account) {
    const bool hasDevice = !DEVICE_GetName().empty();
    result["port"] = port();
    result["baudrate"] = SIO_PortName().empty() ? Json() : Json(SIO_GetBaudrate());
    result["device"] = textOrNull(DEVICE_GetName());
    result["files"] = files(account);
    result["patches"] = patches(account);
    result["blocks"] = hasDevice ? blocks() : Json::array();
    result["bytes"] = HEXDATA_GetNumBytes();
    result["checksum"] = hasDevice ? checksum() : Json();
}

Json head(int exitCode, const Json& commands, const Json& stage, const Json& errors,
          const Json& hints, const Json& notes) {
    return {{"schema", kSchema},
            {"version", kProductVersion},
            {"verdict", exitCode == 0 ? "passed" : "failed"},
            {"exit_code", exitCode},
            {"commands", commands},
            {"stage", stage},
            {"errors", errors},
            {"hints", hints},
            {"notes", notes}};
}

// Paths need not be UTF-8, JSON has to be.
std::string textOf(const Json& result) {
    return result.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

FileResult put(const std::string& path, const std::string& text) {
    if (path == "-") {
        PROCESS_WriteOut(text);
        return {};
    }
    return FILES_Replace(path, text);
}

} // namespace

std::string RESULT_Text() {
    const int exitCode = RUN_GetExitCode();
    const Account account = ACCOUNT_Get();
    const AccountedTry& last = account.tries.back();
    Json result = head(exitCode, commands(last), textOrNull(last.stage), last.errors, last.hints,
                       account.notes);
    addWork(result, account);
    result["tries"] = tries(account);
    result["seconds"] = rounded(account.seconds);
    return textOf(result);
}

void RESULT_Write() {
    const std::string& path = RUNWORDS_Get().resultPath;
    if (path.empty()) {
        return;
    }
    const FileResult result = put(path, RESULT_Text());
    isWritten = true;
    if (!result.ok()) {
        RUN_SetExitCode(1);
        CONSOLE_PrintError("The result cannot be written (" + path + ": " + result.reason + ")");
    }
}

void RESULT_BeginRound() {
    isWritten = false;
}

// All fields are there, but none that only the modules know: their locks may be held for good.
void RESULT_WriteFault(const char* reason) {
    const std::string& path = RUNWORDS_Get().resultPath;
    if (path.empty() || isWritten) {
        return;
    }
    const Json none = Json::array();
    const Json errors = Json::array({reason});
    Json result = head(1, none, kFaultStage, errors, none, none);
    for (const char* field : {"port", "baudrate", "device", "checksum"}) {
        result[field] = nullptr;
    }
    for (const char* field : {"files", "patches", "blocks"}) {
        result[field] = none;
    }
    result["bytes"] = 0;
    result["tries"] = Json::array({{{"verdict", "failed"},
                                    {"commands", none},
                                    {"stage", kFaultStage},
                                    {"errors", errors},
                                    {"hints", none},
                                    {"seconds", 0}}});
    result["seconds"] = 0;
    static_cast<void>(put(path, textOf(result)));
}
