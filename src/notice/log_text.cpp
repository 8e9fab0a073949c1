#include "notice/log_text.h"

#include "platform/clock.h"
#include "platform/format.h"

std::string LOG_BuildTime() {
    return __DATE__ " " __TIME__;
}

std::string LOG_Rule() {
    return "\r\n********************************************************\r\n\r\n";
}

std::string LOG_HeaderBlock() {
    const CivilTime now = CLOCK_LocalTime();
    return LOG_Rule() + "\t\tDD-MM-YYYY HH:MM:SS\r\n" + "\t\t-------------------\r\n" +
           formatText("\t\t%.02d-%.02d-%.04d %.02d:%.02d:%.02d", now.day, now.month, now.year,
                      now.hour, now.minute, now.second) +
           "\r\n" + LOG_Rule();
}

std::string LOG_Stamp(unsigned elapsedMs) {
    return formatText("%01u:%02u:%02u:%03u", elapsedMs / 3'600'000 % 10, elapsedMs / 60'000 % 60,
                      elapsedMs / 1000 % 60, elapsedMs % 1000);
}
