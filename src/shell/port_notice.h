// What is wrong with the port while nobody asks for it: shown in the desktop as long as it lasts,
// in place of a box. User-interface thread.
#pragma once

#include <string>

struct Notice {
    std::string text; // with port and reason; empty: nothing is wrong
    std::string hint;
    bool operator==(const Notice&) const = default;
};

Notice PORTNOTICE_Get();
// Opens the port, quietly where that fails: the notice stays. Nothing while a command runs.
void PORTNOTICE_TryAgain();
// Called several times a second: opens the port as soon as its device is there again, tells the
// terminal of both, and gives the line the terminal's rate while no command uses it.
void PORTNOTICE_Watch();
