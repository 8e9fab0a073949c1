// The process state as at start-up: what a world calls before it sets itself up and again at its
// end, so that no test depends on another having run.
#pragma once

#include "bootrom/handshake.h"
#include "bootrom/password_choice.h"
#include "data/hexdata.h"
#include "device/device.h"
#include "device/devprops.h"
#include "link/chip_record.h"
#include "link/password.h"
#include "link/target_link.h"
#include "link/target_state.h"
#include "notice/error.h"
#include "notice/log.h"
#include "notice/progress.h"
#include "notice/run.h"
#include "notice/status.h"
#include "platform/event_queue.h"
#include "platform/files.h"
#include "serial/idle_rate.h"
#include "serial/sio.h"
#include "serial/terminal_buffer.h"
#include "serial/terminal_history.h"
#include "shell/cmdline.h"
#include "shell/comparison.h"
#include "shell/edit_history.h"
#include "shell/edit_place.h"
#include "shell/front_end.h"
#include "shell/program_on_change.h"
#include "shell/recent_choices.h"
#include "shell/session.h"
#include "shell/watch.h"
#include "target/worker.h"

// User-interface thread. A worker that still runs is ended, in the time of the clock in force.
inline void freshProcess() {
    EVENTS_Close();
    TARGET_Stop();
    SIO_Exit();
    SIO_Init(0, 0, 0, 8, 0, 0);
    IDLERATE_Set(0);
    FRONTEND_Set({});
    COMPARISON_End();
    RECENTCHOICES_Reset();
    CMDLINE_Reset();
    ONCHANGE_Reset();
    WATCH_Reset();
    SESSION_Get() = {};
    PROGRESS_Reset();
    STATUS_Init();
    TERMINAL_Clear();
    TERMHISTORY_Clear();
    LOG_Exit();
    LOG_SetObserver({});
    ERROR_Exit();
    TARGET_State().Cancel = 0;
    TARGET_State().LinkState = LINK_IDLE;
    BOOT_SetState(BOOT_UNSYNCED);
    BOOT_SetChipInRom(false);
    setBootSum(0);
    CHIPRECORD_Forget();
    forgetProgrammedPassword();
    PASSWORD_Reset();
    PASSWORD_SetLimits(0, 0, 0, 0);
    PASSWORD_SetDialog({});
    HEXDATA_Reset();
    HISTORY_Clear();
    EDITPLACE_Set({});
    DEVICE_Clear();
    DEVPROPS_Set(DevProps{});
    RUN_Reset();
    FILES_SetProgramPath({});
}

// First member of a world: before anything of it says whom the process reports to.
struct FreshStart {
    FreshStart() { freshProcess(); }
};
