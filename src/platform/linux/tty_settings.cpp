#include "platform/linux/tty_settings.h"

#include "platform/serial_port.h"

#include <asm/termbits.h>
#include <cerrno>
#include <sys/ioctl.h>

namespace {

void makeRaw(termios2& settings) {
    settings.c_iflag = 0;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    // Without HUPCL closing the port leaves the lines as they are: the chip is not reset.
    settings.c_cflag &=
        ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARENB | PARODD | CMSPAR | HUPCL | CRTSCTS);
    settings.c_cflag |= CS8 | CREAD | CLOCAL;
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
}

int getSettings(int descriptor, termios2& settings) {
    return ioctl(descriptor, TCGETS2, &settings) == 0 ? 0 : errno;
}

int setSettings(int descriptor, const termios2& settings, bool drain) {
    return ioctl(descriptor, drain ? TCSETSW2 : TCSETS2, &settings) == 0 ? 0 : errno;
}

} // namespace

int ttyGetRate(int descriptor, uint32_t& rate) {
    termios2 settings{};
    const int error = getSettings(descriptor, settings);
    rate = settings.c_ospeed;
    return error;
}

int ttySetRaw(int descriptor) {
    termios2 settings{};
    if (const int error = getSettings(descriptor, settings); error != 0) {
        return error;
    }
    makeRaw(settings);
    return setSettings(descriptor, settings, false);
}

int ttySetRate(int descriptor, uint32_t rate, bool drain, uint32_t& actual) {
    termios2 before{};
    if (const int error = getSettings(descriptor, before); error != 0) {
        return error;
    }
    termios2 wanted = before;
    makeRaw(wanted);
    // An input rate of B0 in the flags means: as the output rate.
    wanted.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CIBAUD);
    wanted.c_cflag |= BOTHER;
    wanted.c_ospeed = rate;
    wanted.c_ispeed = rate;
    if (const int error = setSettings(descriptor, wanted, drain); error != 0) {
        return error;
    }
    if (const int error = ttyGetRate(descriptor, actual); error != 0) {
        return error;
    }
    if (SERIALPORT_IsRateClose(actual, rate)) {
        return 0;
    }
    setSettings(descriptor, before, false);
    return ERANGE;
}

int ttyDropInput(int descriptor) {
    return ioctl(descriptor, TCFLSH, TCIFLUSH) == 0 ? 0 : errno;
}
