#include "shell/retry.h"

#include "data/hexdata.h"
#include "notice/log.h"
#include "notice/run.h"
#include "platform/clock.h"
#include "platform/format.h"
#include "shell/account.h"
#include "shell/run_words.h"
#include "shell/session.h"
#include "shell/summary.h"
#include "shell/verdict.h"

#include <optional>
#include <vector>

namespace {

constexpr int64_t kPauseMs = 1000; // a chip that was left in the middle of something settles

struct Area {
    uint32_t address;
    std::vector<uint8_t> bytes;
};

struct ImageBefore {
    std::vector<Area> areas;
    ImageOrigin origin;
    bool loaded = false;
};

std::optional<ImageBefore> imageBefore; // there once a command has begun
bool onTarget = false;                  // the command that ran last
int triesBegun = 1;

ImageBefore takeImage() {
    ImageBefore image{{}, SESSION_Get().image, SESSION_Get().loaded};
    for (const AddressRange& range : HEXDATA_GetAreas()) {
        uint32_t address = range.start;
        const uint8_t* data = nullptr;
        const uint32_t count = HEXDATA_GetData(address, data);
        image.areas.push_back({address, {data, data + count}});
    }
    return image;
}

void putImageBack() {
    HEXDATA_Clear();
    for (const Area& area : imageBefore->areas) {
        HEXDATA_AddData(area.address, area.bytes);
    }
    SESSION_Get().loaded = imageBefore->loaded;
    ORIGIN_Set(imageBefore->origin);
    SUMMARY_Refresh();
}

} // namespace

void RETRY_CommandStarts(const Command& command) {
    onTarget = command.worksOn == WorksOn::target;
    if (RUNWORDS_Get().retries > 0 && !imageBefore) {
        imageBefore = takeImage();
        triesBegun = 1;
    }
}

bool RETRY_IsDue() {
    return RUN_GetExitCode() != 0 && !RUN_IsInterrupted() && imageBefore && onTarget &&
           triesBegun <= RUNWORDS_Get().retries;
}

void RETRY_NextImage() {
    imageBefore.reset();
}

bool RETRY_Begin() {
    if (CLOCK_Wait(CLOCK_After(kPauseMs), RUN_IsInterrupted)) {
        return false;
    }
    ++triesBegun;
    LOG_Add(formatText("Try %d of %d", triesBegun, RUNWORDS_Get().retries + 1));
    putImageBack();
    RUN_ForgetFailure();
    ACCOUNT_NextTry();
    VERDICT_NextTry();
    return true;
}
