// A fault at each byte that the target sends, a Cancel at every moment: the verdict is never
// better than the chip, every failure is reported once, and the next command works again.

#include "notice/progress.h"
#include "target_world.h"

namespace {

enum class Spoil { none, lost, flipped };

// The virtual chip's line with one byte of the chip spoilt. The answers to identify frames, which
// come by the hundred, are left alone and not counted but for the first.
struct SpoiltLine {
    Spoil spoil = Spoil::none;
    size_t target = 0; // which byte, from 0
    std::atomic<size_t> passed{0};
    bool counting = true;
    bool identified = false;

    SerialPortPtr open(std::string& error) {
        SerialPortPtr inner = SERIALPORT_Open("sim://world", error);
        auto port = std::make_shared<SerialPort>(*inner);
        port->write = [this, inner](std::span<const uint8_t> bytes) {
            const bool identify = bytes.size() == 7 && bytes[0] == 0xEB && bytes[4] == 0x00;
            counting = !identify || !identified;
            identified = identified || identify;
            return inner->write(bytes);
        };
        port->read = [this, inner](std::span<uint8_t> buffer, Moment deadline,
                                   const Condition& stop) {
            size_t count = inner->read(buffer, deadline, stop);
            for (size_t i = 0; counting && i < count; ++i) {
                if (passed++ != target || spoil == Spoil::none)
                    continue;
                if (spoil == Spoil::flipped) {
                    buffer[i] ^= 0x10;
                    continue;
                }
                std::copy(buffer.begin() + static_cast<ptrdiff_t>(i) + 1,
                          buffer.begin() + static_cast<ptrdiff_t>(count),
                          buffer.begin() + static_cast<ptrdiff_t>(i));
                --count;
                count += inner->read(buffer.subspan(count), deadline, stop);
            }
            return count;
        };
        return port;
    }
};

// A device whose loader erases asks for its password when it is connected again half programmed.
WorldOptions optionsFor(const std::string& device, const std::string& port) {
    ChipOptions chip;
    chip.password = {1, 2, 3, 4, 5, 6, 7, 8};
    return {.device = device, .chip = device == "VT-A32" ? chip : ChipOptions{}, .port = port};
}

void runAutoAndVerify() {
    runAuto();
    if (RUN_GetExitCode() == 0)
        runVerify();
}

// What a run that has ended may have said: nothing when it succeeded, else one reason, and the
// summary of the connect behind it where the connect failed.
void expectOneReason(const TargetWorld& world, bool finished) {
    std::vector<std::string> errors = world.errors();
    if (!errors.empty() && errors.back() == "Could not download RAM image. Please check password" &&
        errors.size() > 1)
        errors.pop_back();
    EXPECT_EQ(errors.size(), finished ? 0U : 1U) << world.allErrors();
    EXPECT_EQ(RUN_GetExitCode(), finished ? 0 : 1);
}

// Runs Auto and Verify with one byte spoilt; the bytes that were counted.
size_t runSpoilt(const std::string& device, Spoil spoil, size_t target) {
    SpoiltLine line;
    line.spoil = spoil;
    line.target = target;
    SERIALPORT_AddKind(
        "spoilt://", [&line](const std::string&, std::string& error) { return line.open(error); });
    TargetWorld world(optionsFor(device, "spoilt://"));
    const Moment start = CLOCK_Now();
    runAutoAndVerify();
    const size_t counted = line.passed;
    EXPECT_LT(CLOCK_Now().us - start.us, 60'000'000);
    const bool finished = world.hasLogged("Verifying finished");
    if (world.hasLogged("Programming finished") || finished) {
        EXPECT_TRUE(world.chipHoldsProgram());
    }
    expectOneReason(world, finished);
    EXPECT_TRUE(finished || spoil != Spoil::none);

    line.spoil = Spoil::none;
    if (!finished) {
        RUN_SetExitCode(0); // a new run, as far as the queue is concerned
        const size_t before = world.errors().size();
        CLOCK_Sleep(1000); // what the target still says goes to the terminal
        runAutoAndVerify();
        EXPECT_EQ(world.errors().size(), before) << world.allErrors();
        EXPECT_TRUE(world.hasLogged("Verifying finished"));
        EXPECT_TRUE(world.chipHoldsProgram());
    }
    return counted;
}

void cancelAt(const std::string& device, int64_t ms, bool interrupt) {
    TargetWorld world(optionsFor(device, "sim://world"));
    const Moment moment = CLOCK_After(ms);
    auto canceller = CLOCK_StartThread([ms, interrupt] {
        CLOCK_Sleep(ms);
        if (interrupt)
            RUN_Interrupt();
        PROGRESS_Cancel();
    });
    runAutoAndVerify();
    const bool finished = world.hasLogged("Verifying finished") && RUN_GetExitCode() == 0;
    const Moment ended = CLOCK_Now();
    CLOCK_JoinThread(canceller);
    if (world.hasLogged("Programming finished")) {
        EXPECT_TRUE(world.chipHoldsProgram());
    }
    const bool cameTooLate = ended < moment;
    EXPECT_EQ(finished, cameTooLate);
    if (cameTooLate)
        return;
    expectOneReason(world, false);
    if (world.hasLogged("Downloading RAM-Image finished")) {
        EXPECT_EQ(world.errors().back(), "Action canceled");
    }
    EXPECT_LT(ended.us - moment.us, 2'500'000);
    if (interrupt)
        return;
    const size_t before = world.errors().size();
    RUN_SetExitCode(0);
    runAutoAndVerify();
    EXPECT_EQ(world.errors().size(), before) << world.allErrors();
    EXPECT_TRUE(world.chipHoldsProgram());
}

} // namespace

// VT-A60: the loader of TYPE_A, the boot ROM's erase, product information, CRC. VT-B128: the same
// for TYPE_B. VT-A32: the loader's erase, words, SUM.
TEST(Faults, BytesOfTheTarget) {
    for (const std::string device : {"VT-A60", "VT-B128", "VT-A32"}) {
        const size_t bytes = runSpoilt(device, Spoil::none, 0);
        EXPECT_GT(bytes, 100U);
        // The bytes of connect, erase and programming, then a sample of what is read.
        const size_t dense = device == "VT-A32" ? 4 : 1;
        for (size_t i = 0; i < bytes; i += i < 120 ? dense : 59) {
            SCOPED_TRACE(device + ", byte " + std::to_string(i) + " of " + std::to_string(bytes));
            runSpoilt(device, i / dense % 2 == 0 ? Spoil::lost : Spoil::flipped, i);
            if (testing::Test::HasFailure())
                return;
        }
    }
}

TEST(Faults, CancelAtEveryMoment) {
    for (const std::string device : {"VT-A60", "VT-B128", "VT-A32"}) {
        for (int64_t ms = 1; ms < 6000; ms += 97) {
            SCOPED_TRACE(device + ", after " + std::to_string(ms) + " ms");
            cancelAt(device, ms, ms % 2 == 0);
            if (testing::Test::HasFailure())
                return;
        }
    }
}
