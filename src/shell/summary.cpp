#include "shell/summary.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/image_checksum.h"
#include "device/image_fit.h"
#include "link/chip_record.h"
#include "link/password.h"
#include "notice/status.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/comparison.h"
#include "shell/front_end.h"
#include "shell/recent_choices.h"

void SUMMARY_Refresh() {
    DEVICE_CalcImageChecksum(DEVICE_GetSprtCRC() != 0);
    HEXDATA_SetFits(DEVICE_ImageFits());
    COMPARISON_Follow();
    FRONTEND_Get().refreshView(View::hexDump);
    FRONTEND_Get().refreshView(View::hexList);
    FRONTEND_Get().refreshView(View::memoryMap);
}

void CONFIGURATION_Changed() {
    PASSWORD_SetLimitsOfDevice();
    CHIPRECORD_SetChip(DEVICE_GetName() + " on " + SIO_PortName());
    SUMMARY_Refresh();
    FRONTEND_Get().refreshView(View::device);
    RECENTCHOICES_Note(RecentChoice::device, DEVICE_GetName());
    RECENTCHOICES_Note(RecentChoice::port, SIO_PortName());
    STATUS_SetText(formatText("MCU: %s", DEVICE_GetName().c_str()), STATUS_DEVICE);
    const std::string port = SIO_GetDevice().empty()
                                 ? formatText("COM%d", static_cast<int>(SIO_GetPort()))
                                 : SIO_GetDevice().substr(SIO_GetDevice().rfind('/') + 1);
    STATUS_SetText(formatText("%s, %d Baud", port.c_str(), static_cast<int>(SIO_GetBaudrate())),
                   STATUS_SERIAL);
}
