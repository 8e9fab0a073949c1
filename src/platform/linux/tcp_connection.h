// A TCP connection to a server that may be away, slow or gone.
#pragma once

#include <string>

// Connects within a few seconds, without delaying small packets and with a watch over a peer that
// vanishes. The descriptor (non-blocking, the caller closes it), or -1 with the reason in `error`.
int tcpConnect(const std::string& host, const std::string& port, std::string& error);
