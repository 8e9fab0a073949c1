#include "sim/sim_options.h"

#include <gtest/gtest.h>

TEST(SimOptions, BadOnesAreRefused) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, "--device is needed; --list lists the devices, --help the options"},
        {{"--device"}, "--device needs NAME"},
        {{"--tcp", "65536"}, "--tcp: '65536' is not allowed"},
        {{"--tcp", "-1"}, "--tcp: '-1' is not allowed"},
        {{"--password", "123"}, "--password: '123' is not allowed"},
        {{"--erase-us", "1s"}, "--erase-us: '1s' is not allowed"},
        {{"--fault", "nothing"}, "--fault: unknown fault 'nothing'"},
    };
    for (const auto& [arguments, expected] : cases) {
        SimOptions options;
        std::string error;
        EXPECT_FALSE(SIM_ParseOptions(arguments, options, error)) << expected;
        EXPECT_EQ(error, expected);
    }
}

TEST(SimOptions, GoodOnes) {
    SimOptions options;
    std::string error;
    ASSERT_TRUE(SIM_ParseOptions({"--device", "X", "--rate", "19200", "--no-resync", "--fault",
                                  "slow,value=5", "--fault", "die#2", "--password", "0aFF"},
                                 options, error))
        << error;
    EXPECT_TRUE(options.chip.pacing);
    EXPECT_EQ(options.rate, 19200U);
    EXPECT_FALSE(options.chip.resyncByMatch);
    EXPECT_EQ(options.chip.faults.size(), 2U);
    EXPECT_EQ(options.chip.password, (std::vector<uint8_t>{0x0A, 0xFF}));
}
