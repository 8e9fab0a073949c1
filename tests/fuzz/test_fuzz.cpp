// Replays the corpora: inputs that were once found interesting, or wrong.
#include "fuzz/fuzz.h"
#include "support/paths.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

TEST(Fuzz, CorporaPass) {
    for (const FuzzTarget& target : FUZZ_Targets()) {
        int inputs = 0;
        for (const auto& entry :
             std::filesystem::directory_iterator(builtFolder() / "corpus" / target.name)) {
            const std::string bytes = readFile(entry.path());
            EXPECT_EQ(target.run({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}),
                      "")
                << entry.path();
            ++inputs;
        }
        EXPECT_GT(inputs, 0) << target.name;
    }
}
