// The result that machines read, of runs that end in every way.
#include "e2e/bench_world.h"
#include "e2e/hex_files.h"
#include "support/result_schema.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::json;

constexpr char kPath[] = "result.json";

struct ResultRun {
    ProgramFolder bench;

    Strings arguments(Strings more) const {
        more.insert(more.end(), {"--isolated", "--result", bench.folder / kPath});
        return withFile(bench, srecords(0, randomBytes(700, 1)), onDevice("VT-B128", more));
    }
    // Each result is held against its schema.
    Json result() const { return validResult(readFile(bench.folder / kPath)); }
    std::string outcomes() const {
        std::string text;
        const Json all = result();
        for (const Json& command : all["commands"]) {
            text += command["name"].get<std::string>() + " " +
                    command["outcome"].get<std::string>() + ", ";
        }
        return text;
    }
    // The program in the middle of an Auto of a chip that takes its time; what it said.
    std::string whileItPrograms(const std::function<void(Process&, VirtualTarget&)>& happens) {
        VirtualTarget target(bench.folder, "VT-B128", {"--erase-chip-us", "30000000"});
        Process run(bench.command(arguments({"-TargetAuto", "-TargetVerify"})),
                    bench.folder / "run");
        EXPECT_TRUE(waitFor([&] { return run.err().find("Erasing Chip") != std::string::npos; }))
            << run.err();
        happens(run, target);
        EXPECT_EQ(run.wait(), 1);
        EXPECT_EQ(result()["verdict"], "failed");
        EXPECT_EQ(result()["stage"], "TargetAuto") << result();
        EXPECT_EQ(outcomes(), "TargetAuto failed, TargetVerify skipped, ");
        return run.err();
    }
};

} // namespace

TEST(Result, OfAPassedRun) {
    const ResultRun run;
    VirtualTarget target(run.bench.folder, "VT-B128");
    const RunResult ended =
        run.bench.run(run.arguments({"-TargetAuto", "-TargetVerify", "-TargetGetCRC"}));
    ASSERT_EQ(ended.exitCode, 0) << ended.err;
    const Json result = run.result();
    EXPECT_EQ(result["verdict"], "passed");
    EXPECT_EQ(run.outcomes(), "TargetAuto passed, TargetVerify passed, TargetGetCRC passed, ");
    EXPECT_EQ(result["port"]["path"], (run.bench.folder / "port").string());
    EXPECT_EQ(result["bytes"], 700);
    EXPECT_EQ(result["checksum"]["image"], result["checksum"]["chip"]);
    EXPECT_EQ(result["tries"][0]["seconds"], result["seconds"]);
    EXPECT_LT(result["seconds"], 60);
    EXPECT_EQ(result["blocks"], (Json{0, 1, 2, 3}));
    const std::string peer = run.bench.folder / "sum";
    const std::string file = result["files"][0]["path"];
    ASSERT_EQ(std::system(("sha256sum '" + file + "' >'" + peer + "'").c_str()), 0);
    EXPECT_EQ(result["files"][0]["sha256"], readFile(peer).substr(0, 64));
}

TEST(Result, OfARefusedLine) {
    const ResultRun run;
    const struct {
        Strings arguments;
        const char* outcomes;
        const char* error;
    } cases[] = {
        {{"-TargetAuto", "-TargetVerfy"},
         "TargetAuto skipped, ",
         "\"TargetVerfy\" is not a valid command ! (argument \"-TargetVerfy\", did you mean "
         "-TargetVerify?)"},
        {{"-OptionsTargetDeviceVT-A96", "-TargetReadProtect"},
         "TargetReadProtect skipped, ",
         "TargetReadProtect cannot be taken back and needs --yes (argument "
         "\"-TargetReadProtect\")"},
        {{"-TargetGetCRC", "--retries", "101"},
         "TargetGetCRC skipped, ",
         "101 cannot be N of --retries (argument \"--retries\")"},
        {{"-FilePatchFFFFFFFE=000102"},
         "FilePatch skipped, ",
         "A patch of 3 bytes at FFFFFFFE would end behind FFFFFFFF (argument "
         "\"-FilePatchFFFFFFFE=000102\")"},
        {{"-FilePatch10=0"},
         "FilePatch skipped, ",
         "Odd length is illegal (argument \"-FilePatch10=0\")"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(run.bench.run(run.arguments(c.arguments)).exitCode, 1) << c.error;
        EXPECT_EQ(run.result()["stage"], "command line");
        EXPECT_EQ(run.outcomes(), c.outcomes);
        EXPECT_EQ(run.result()["errors"][0], c.error);
    }
    const RunResult unwritten = run.bench.run({"--isolated", "--result", "/none/x", "-Exit"});
    EXPECT_EQ(unwritten.exitCode, 1);
    EXPECT_NE(unwritten.err.find("The result cannot be written (/none/x: "), std::string::npos);
}

TEST(Result, OfAnInterruptedRunAndOfALostPort) {
    using Event = std::function<void(Process&, VirtualTarget&)>;
    const std::pair<Event, Strings> cases[] = {
        {[](Process& run, VirtualTarget&) { run.signal(SIGINT); }, {"Interrupted"}},
        {[](Process&, VirtualTarget& target) { target.kill(); },
         {"COM1 lost", "Error: Erasing Chip failed (COM1 is "}},
    };
    for (const auto& [happens, texts] : cases) {
        const std::string err = ResultRun().whileItPrograms(happens);
        for (const std::string& text : texts) {
            EXPECT_NE(err.find(text), std::string::npos) << text << "\n" << err;
        }
    }
}

TEST(Result, IsThatOfEachRoundWhileTheFileIsWatched) {
    const ResultRun world;
    VirtualTarget target(world.bench.folder, "VT-B128");
    const std::filesystem::path file = world.bench.folder / "app.mot";
    const auto text = [](uint32_t own) {
        return srecords(0, randomBytes(900, own)) + "S9030000FC\n";
    };
    const Strings arguments =
        world.arguments({"-TargetAuto", "-TargetStartApplication", "--watch"});
    writeFile(file, text(1));
    Process run(world.bench.command(arguments), world.bench.folder / "run");
    const auto verdicts = [&run] {
        std::string all;
        for (const std::string& line : ProgramFolder::lines(run.err())) {
            all += line.starts_with("Passed: ") ? "+" : line.starts_with("Failed: ") ? "-" : "";
        }
        return all;
    };
    const auto comes = [&](const char* expected) {
        return waitFor([&] { return verdicts() == expected; });
    };
    ASSERT_TRUE(comes("+")) << run.err();
    EXPECT_EQ(world.outcomes(), "TargetAuto passed, TargetStartApplication passed, ");
    writeFile(file, text(2).replace(20, 1, "x")); // whole, but no record
    ASSERT_TRUE(comes("+-")) << run.err();
    EXPECT_EQ(world.result()["stage"], "file");
    EXPECT_EQ(world.outcomes(), "TargetAuto skipped, TargetStartApplication skipped, ");
    writeFile(world.bench.folder / "new", text(3));
    std::filesystem::rename(world.bench.folder / "new", file);
    ASSERT_TRUE(comes("+-+")) << run.err();
    EXPECT_EQ(world.result()["files"].size(), 1U);
    run.signal(SIGINT);
    EXPECT_EQ(run.wait(), 0) << run.err();
    EXPECT_EQ(verdicts(), "+-+");
    EXPECT_EQ(run.err().find('\a'), std::string::npos) << "no bell where no terminal is";
    EXPECT_EQ(target.stop(), 0) << target.summary();
    const Bytes last = randomBytes(900, 3);
    EXPECT_EQ(target.flash().substr(0, 900), std::string(last.begin(), last.end()));
}
