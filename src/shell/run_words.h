// What the words of the command line that a run takes have asked for, beside those of notice/run.h.
// Set before anything starts; user-interface thread.
#pragma once

#include <string>

struct RunWords {
    std::string resultPath;     // "-": standard output; empty: no result is written
    std::string logPath;        // empty: the usual place
    std::string transcriptPath; // empty: none but the one that the settings ask for
    int retries = 0;
    bool watch = false;     // round after round, until the user ends it
    bool patchAdds = false; // a patch may add to the image
};

RunWords& RUNWORDS_Get();
