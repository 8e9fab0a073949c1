#include "shell/summary.h"

#include "data/hexdata.h"
#include "device/device.h"
#include "device/image_checksum.h"
#include "device/image_fit.h"
#include "link/password.h"
#include "notice/status.h"
#include "platform/format.h"
#include "serial/sio.h"
#include "shell/front_end.h"

void SUMMARY_Refresh() {
    DEVICE_CalcImageChecksum(DEVICE_GetSprtCRC() != 0);
    HEXDATA_SetFits(DEVICE_ImageFits());
    FRONTEND_Get().refreshView(View::hexDump);
    FRONTEND_Get().refreshView(View::hexList);
}

void CONFIGURATION_Changed() {
    PASSWORD_SetLimitsOfDevice();
    SUMMARY_Refresh();
    FRONTEND_Get().refreshView(View::device);
    STATUS_SetText(formatText("MCU: %s", DEVICE_GetName().c_str()), STATUS_DEVICE);
    STATUS_SetText(formatText("COM%d, %d Baud", static_cast<int>(SIO_GetPort()),
                              static_cast<int>(SIO_GetBaudrate())),
                   STATUS_SERIAL);
}
