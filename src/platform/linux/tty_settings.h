// Rate and raw mode of a terminal device. A source of its own, because the kernel's terminal record
// with free rates and the C library's cannot be used in one source. Results are 0 or an errno.
#pragma once

#include <cstdint>

// The rate in force; also tells whether the descriptor is a working terminal device.
int ttyGetRate(int descriptor, uint32_t& rate);

// Raw 8N1 without flow control at the rate in force; reads return what is there, at least one byte.
int ttySetRaw(int descriptor);

// The same at `rate`. With `drain` the change waits until the transmitter is empty. ERANGE with the
// old rate back in force when the device takes another rate than the one asked for, which is then
// in `actual`. Input that is waiting stays.
int ttySetRate(int descriptor, uint32_t rate, bool drain, uint32_t& actual);

// Forgets what was received and not yet read.
int ttyDropInput(int descriptor);
