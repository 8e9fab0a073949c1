// Sends what is more than a key over the terminal's line: the bytes of a file, or bytes given as
// hex digits. They go in portions, a little slower than the line, so that the chip and a Cancel
// keep up. One at a time; user-interface thread.
#pragma once

#include <string>
#include <string_view>

inline constexpr int kTermSendTurnMs = 50;

// Begins to send. False when there is nothing that could be sent, reported.
bool TERMSEND_File(const std::string& path);
// The same for hex digits in pairs, blanks between them do not count; what is wrong with them comes
// back in `error` with the place, and is not reported.
bool TERMSEND_Hex(std::string_view text, std::string& error);
// Sends the next portion; called every kTermSendTurnMs while it runs. What cannot be sent ends it
// and is reported.
void TERMSEND_Turn();
bool TERMSEND_IsRunning();
void TERMSEND_Cancel();
// "app.bin: 120 of 4096 bytes sent".
std::string TERMSEND_Progress();
