// The entry of libFuzzer; CALVORIN_FUZZ names the target.
#include "fuzz/fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    static const FuzzTarget target = [] {
        const char* const wanted = std::getenv("CALVORIN_FUZZ");
        const auto found =
            std::ranges::find(FUZZ_Targets(), std::string(wanted ? wanted : ""), &FuzzTarget::name);
        if (found == FUZZ_Targets().end()) {
            std::fprintf(stderr, "CALVORIN_FUZZ has to name a target\n");
            std::exit(1);
        }
        return *found;
    }();
    if (const std::string wrong = target.run({bytes, size}); !wrong.empty()) {
        std::fprintf(stderr, "%s: %s\n", target.name, wrong.c_str());
        std::abort();
    }
    return 0;
}
