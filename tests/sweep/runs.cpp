#include "device/device_parser.h"
#include "persist/ini.h"
#include "shell/command_handler.h"
#include "shell/command_ids.h"
#include "shell/shell.h"
#include "shell/summary.h"
#include "sim/virtual_clock.h"
#include "support/fresh_process.h"
#include "support/reports.h"
#include "support/temp_folder.h"
#include "sweep/sweep.h"

#include <atomic>
#include <mutex>
#include <numeric>
#include <optional>

namespace {

constexpr uint32_t kRate = 19200;
constexpr int kSettleMs = 300;

// The program folder and the devices, for all runs: small flashes and loaders, so that there are
// few bytes. With pacing a loader is polled some forty times a second and not a thousand.
struct Bench {
    TempFolder folder;
    Bench() {
        std::filesystem::create_directory(folder / "RamImage");
        writeFile(folder / "RamImage" / "a.hex", ":08004000112233445566778854\r\n"
                                                 ":04004800A1B2C3D4CA\r\n:00000001FF\r\n");
        writeFile(folder / "RamImage" / "b.s", "S30D2000000011223344556677886E\r\n"
                                               "S3092000000CA1B2C3D4E0\r\nS70520000000DA\r\n");
        writeFile(folder / "sweep.ini", "[Settings PORTS]\r\nCOM1 = \"sweep://\"\r\n");
        FILES_SetProgramPath(folder / "sweep");
        INI_Load();
        for (const auto& [name, text] : SWEEP_Devices()) {
            _AddDevice(
                DEVICE_ParseText("Device = \"" + std::string(name) + "\"\n" + text).record.value());
        }
    }
};

std::string flags(std::initializer_list<const char*> names) {
    std::string text;
    for (const std::string name : names) {
        text += name + " = 1\n";
    }
    return text;
}

const SweepCommand& commandNamed(const std::string& name) {
    return *std::ranges::find_if(SWEEP_Commands(), [&](auto& row) { return row.name == name; });
}

} // namespace

const std::vector<SweepDevice>& SWEEP_Devices() {
    static const std::string common =
        "Manufacturer = \"M\"\nSerialSupport = 1\nTimeoutEraseAll = 9000\n"
        "TimeoutEraseBlock = 4000\nTimeoutGetSUM = 3000\nSkipPasswordCheck = 1\n";
    static const std::string a = common + "Bank = 8000, 80, 8080, 80\nRam = 0040, 0800\n"
                                          "UARTRamcode = \"a.hex\", \"TYPE_A\"\n"
                                          "RAMCodeAdrLen = 2\nPWArea = 80E0,20\n";
    static const std::string b = common + "Bank = 0, 80, 80, 80\nRam = 20000000, 2000\n"
                                          "UARTRamcode = \"b.s\", \"TYPE_B\"\n";
    static const std::string info = "ProductInfo = C0,20,4,\"56544136\"\n";
    static const std::string rich =
        "FLASHPageLen = 64\n" +
        flags({"SprtEraseChip", "SprtErase", "SprtCRC", "SprtBlankCheck", "SprtProtectBlock"});
    static const std::string ee = "FLASHPageLen = 128\nFLASHIsEE = 1\n";
    static const std::vector<SweepDevice> devices = {
        {"A1", a + rich + info + flags({"SprtReadProtect", "SprtFlashMemStatus", "TimerInit"})},
        {"A2", a + flags({"SprtEraseChip", "SprtFlashEraseCMD", "SprtErase"})},
        {"AE", a + ee},
        {"B1", b + rich},
        {"B2", b + flags({"SprtErase", "SprtProtectChip"})},
        {"BE", b + ee + info + flags({"SprtEraseChip", "SprtCRC", "RewriteVersion"})}};
    return devices;
}

struct SweepWorld::Inside {
    Inside(SweepWorld& owner, const SweepCase& run) : world(owner), sweepCase(run) {}

    SweepWorld& world;
    const SweepCase sweepCase;
    std::optional<VirtualClock> clock;
    Reports screen{ANSWER_OK};
    SimLinePtr line;
    std::string faults; // of the port that is opened next
    std::mutex mutex;   // of `stage` and the world's stages
    uint8_t stage = kStageBoot;
    bool identified = false;
    std::atomic<bool> stopNow{false};
    std::atomic<bool> over{false};
    std::atomic<int64_t> stoppedUs{kNever.us};
    ClockThreadPtr stopper;

    // The line as the program sees it.
    SerialPortPtr open(std::string& error) {
        const SerialPortPtr port =
            SERIALPORT_Open(std::exchange(faults, "") + "sim://sweep", error);
        if (!port) {
            return nullptr;
        }
        auto seen = std::make_shared<SerialPort>(*port);
        seen->write = [this, port](std::span<const uint8_t> bytes) {
            enterStage(bytes);
            note(0, bytes.size());
            return port->write(bytes);
        };
        seen->read = [this, port](std::span<uint8_t> buffer, Moment deadline,
                                  const Condition& stop) {
            const size_t count = port->read(buffer, deadline, stop);
            note(1, count);
            return count;
        };
        return seen;
    }

    void enterStage(std::span<const uint8_t> written) {
        const std::lock_guard lock(mutex);
        const bool frame = written.size() > 4 && written[0] == 0xEB && written[1] == 0xED;
        stage = frame ? written[4] : kStageBoot;
        if (stage == 0 && std::exchange(identified, true)) {
            stage = kStageAgain;
        }
    }

    void note(int direction, size_t count) {
        const std::lock_guard lock(mutex);
        std::vector<uint8_t>& passed = world.stages[direction];
        passed.insert(passed.end(), count, stage);
        if (sweepCase.isStop() && sweepCase.isOnLine() && passed.size() > sweepCase.where &&
            direction == (sweepCase.kind == "rx" ? 1 : 0)) {
            stopNow = true;
            CLOCK_Notify();
        }
    }

    // The user, or the signal thread, beside the program.
    void awaitStop() {
        const bool atMoment = sweepCase.kind == "ms";
        CLOCK_Wait(atMoment ? CLOCK_After(static_cast<int64_t>(sweepCase.where)) : kNever,
                   [this] { return stopNow || over; });
        const bool offered = PROGRESS_IsOpen() && PROGRESS_GetView().showCancel;
        if (over || (sweepCase.what == "cancel" && !offered)) {
            return;
        }
        if (sweepCase.what == "unplugged") {
            SIMPORT_Unplug(line);
            return;
        }
        stoppedUs = CLOCK_Now().us;
        sweepCase.what == "cancel" ? PROGRESS_Cancel() : SHELL_Interrupt();
    }

    void endStopper() {
        over = true;
        CLOCK_Notify();
        CLOCK_JoinThread(stopper);
    }

    // The program's image: two stretches of what the flash is to hold.
    void loadImage() const {
        HEXDATA_Reset();
        const std::vector<uint8_t> image = world.contents("program");
        HEXDATA_AddData(world.start + 0x10, std::span(image).subspan(0x10, 100));
        HEXDATA_AddData(world.start + world.size - 50, std::span(image).last(50));
        SUMMARY_Refresh();
    }

    static void startProgram() {
        RUN_Reset();
        RUN_SetUnattended(true);
        BOOT_SetState(BOOT_UNSYNCED);
        SESSION_Get() = {};
        SIO_Init(0, 0, 0, 8, 0, 0);
        SIO_SetConfig({1, kRate, 0});
        TARGET_Init(nullptr, [](uint8_t) {});
    }

    static void endProgram() {
        TARGET_Stop();
        TARGET_State().LinkState = LINK_IDLE;
        SIO_Exit();
    }

    void selectDevice() const {
        DEVPROPS_Set(DevProps{});
        DEVICE_FindByName(sweepCase.device);
        DEVPROPS_SelectBlock(0, true);
        DEVPROPS_SelectBlock(1, !sweepCase.command.ends_with("-blocks"));
        DEVPROPS_SetResetByPC(true);
        world.start = DEVICE_GetFlashStart();
        world.size = DEVICE_GetFlashEnd() + 1 - world.start;
        FrontEnd windows;
        const std::string image = FILES_ProgramFolder() + "RamImage/" + DEVICE_GetRamcodeFile();
        windows.chooseFile = [image](const FileRequest&) { return FileChoice{image}; };
        windows.editValue = [](ValueRequest&) { return kDialogOk; };
        FRONTEND_Set(windows);
    }

    void makeChip() {
        ChipOptions options;
        options.password.resize(DEVICE_GetRamcodeType() == RAMCODE_TYPE_B ? 12 : 8);
        std::iota(options.password.begin(), options.password.end(), uint8_t{1});
        options.packetSize = 64;
        options.pacing = true;
        PASSWORD_SetLimitsOfDevice();
        PASSWORD_SetBytes(options.password);
        PASSWORD_SetAdrCount(DEVICE_GetPWAreaStart());
        PASSWORD_SetAdrCompare(DEVICE_GetPWAreaStart() + 1);
        const ChipPtr chip = CHIP_Create(DEVICE_Selected(), options);
        CHIP_PutFlash(*chip, world.start, world.contents(world.command.flash));
        ChipFault fault;
        std::string error;
        if (sweepCase.kind == "chip" || sweepCase.kind == "at") {
            CHIP_ParseFault(sweepCase.what, fault, error);
            CHIP_SetFaults(*chip, {fault});
        }
        line = SIMPORT_Offer("sweep", chip);
    }
};

SweepWorld::SweepWorld(const SweepCase& sweepCase, bool virtualTime)
    : command(commandNamed(sweepCase.command)), inside_(new Inside(*this, sweepCase)) {
    static const Bench bench;
    Inside& in = *inside_;
    if (virtualTime) {
        in.clock.emplace(sweepCase.seed());
    }
    EVENTS_Open();
    in.selectDevice();
    in.makeChip();
    const LineFault fault = sweepCase.lineFault();
    if (sweepCase.isOnLine() && !sweepCase.isStop()) {
        in.faults = "faulty://" + sweepCase.kind + "-" + fault.port + "=" +
                    std::to_string(sweepCase.where) + fault.behind + "@";
    }
    SERIALPORT_AddKind("sweep://",
                       [&in](const std::string&, std::string& error) { return in.open(error); });
    in.loadImage();
    in.startProgram();
    if (sweepCase.comesFromBeside()) {
        in.stopper = CLOCK_StartThread([&in] { in.awaitStop(); });
    }
}

SweepWorld::~SweepWorld() {
    inside_->endStopper();
    EVENTS_Close();
    inside_->endProgram();
    SIMPORT_Withdraw("sweep");
    FRONTEND_Set({});
    HEXDATA_Reset();
    PASSWORD_Reset();
    RUN_Reset();
}

Outcome SweepWorld::run() {
    Inside& in = *inside_;
    if (in.sweepCase.kind == "at" && TARGET_State().LinkState == LINK_IDLE) {
        MAINFRAME_Command(CMD_TARGET_GET_CRC);
        CLOCK_Wait(CLOCK_AfterUs(static_cast<int64_t>(in.sweepCase.where)), [] { return false; });
    }
    in.screen.takeAll(in.screen.errors);
    in.screen.takeAll(in.screen.questions);
    const Moment begin = CLOCK_Now();
    for (const int id : command.ids) {
        if (RUN_GetExitCode() == 0) {
            MAINFRAME_Command(id);
        }
    }
    const Moment end = CLOCK_Now();
    Outcome outcome;
    outcome.us = end.us - begin.us;
    if (in.stoppedUs <= end.us) {
        outcome.usAfterStop = end.us - in.stoppedUs;
    }
    outcome.errors = in.screen.takeAll(in.screen.errors);
    for (const std::string& box : in.screen.takeAll(in.screen.questions)) {
        if (box.ends_with("failed") && outcome.errors.empty()) {
            outcome.errors.push_back(box);
        }
    }
    outcome.success = RUN_GetExitCode() == 0 && outcome.errors.empty();
    return outcome;
}

void SweepWorld::mend() {
    Inside& in = *inside_;
    in.endStopper();
    in.stoppedUs = kNever.us;
    CLOCK_Sleep(kSettleMs + in.sweepCase.lineFault().lateMs);
    SIMPORT_Plug(in.line);
    chip([this](Chip& looked) {
        CHIP_SetFaults(looked, {});
        return CHIP_PutFlash(looked, start, contents(command.flash));
    });
    if (in.sweepCase.what == "ctrlc" || in.sweepCase.what == "cut") {
        in.endProgram();
        in.startProgram();
    }
    in.loadImage();
    RUN_Reset(); // as for a new run
    RUN_SetUnattended(true);
}

std::vector<uint8_t> SweepWorld::flash(uint32_t address, uint32_t count) const {
    std::vector<uint8_t> bytes;
    SIMPORT_WithChip(inside_->line,
                     [&](Chip& looked) { bytes = CHIP_GetFlash(looked, address, count); });
    return bytes;
}

std::vector<uint8_t> SweepWorld::contents(const std::string& name) const {
    std::vector<uint8_t> bytes(size, 0xFF);
    for (uint32_t i = 0; i < size; ++i) {
        const bool inProgram = (i >= 0x10 && i < 0x10 + 100) || i >= size - 50;
        if (name == "program" && inProgram) {
            bytes[i] = static_cast<uint8_t>(i * 5 + 7);
        } else if (name == "old" || (name == "half" && i >= size / 2)) {
            bytes[i] = static_cast<uint8_t>(i * 3 + (i >> 8));
        }
    }
    return bytes;
}

bool SweepWorld::chip(const std::function<bool(Chip&)>& look) const {
    bool result = false;
    SIMPORT_WithChip(inside_->line, [&](Chip& looked) { result = look(looked); });
    return result;
}

std::string SweepWorld::violations() const {
    std::string text;
    chip([&text](Chip& looked) {
        for (const ChipViolation& violation : CHIP_GetViolations(looked)) {
            text += violation.text + "; ";
        }
        return true;
    });
    return text;
}

bool SweepWorld::hasLogged(const std::string& text) const {
    const auto log = inside_->screen.copyOf(inside_->screen.log);
    return std::ranges::find(log, text) != log.end();
}
