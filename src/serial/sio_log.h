// The communication log: every read and write of the serial port, one line a call, in a text file
// beside the program that is meant to be read by a person. A log that cannot be written is told
// once in the program's log, with the number of lost entries at its end, and is no failure. Polls
// that go like the one before are counted in one line, written after 10 s at the latest.
#pragma once

#include "platform/files.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

void SIO_EnableLogging();
// Logs to a file of its own from here on, whatever the settings say of logging; the failure to
// create it. To be called before logging is on.
FileResult SIO_StartTranscript(const std::string& path);
void SIO_DisableLogging(); // nothing while there is a transcript
void SIO_EndTranscript();
// Where a run ends with logging on: says what the log has lost, if anything, and counts anew.
void SIO_TellLostEntries();

// Any thread; nothing while logging is off.
// Writes what is known of polls and not written yet: where they end for the time being.
void SIO_FlushLog();
void _LogEvent(std::string_view text);
// `direction` is "WRITE" or "READ ".
void _LogData(std::span<const uint8_t> bytes, std::string_view direction);

// While one exists, the entries of its thread are one poll: written when they differ from those of
// the poll before, else counted. At most one at a time.
class SioLogPoll {
public:
    SioLogPoll();
    ~SioLogPoll();
    SioLogPoll(const SioLogPoll&) = delete;
    SioLogPoll& operator=(const SioLogPoll&) = delete;
};
