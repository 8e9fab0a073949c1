// The recipes of docs/bench.md, run as they stand there on virtual chips.
#include "e2e/bench_world.h"
#include "e2e/hex_files.h"

#include <gtest/gtest.h>

namespace {

// Two good boards and one that takes no password.
struct Boards {
    Boards() {
        writeFile(bench_.folder / "app.mot", srecords(0, randomBytes(700, 1)));
        writeFile(bench_.folder / "key.bin", "\x01\x02\x03");
        writeFile(bench_.folder / "last_number", "41\n");
        addBoard("good1", {});
        addBoard("good2", {});
        addBoard("bad", {"--fault", "wrong-reply@header"});
    }
    ~Boards() {
        for (const auto& chip : chips_) {
            chip->signal(SIGTERM);
        }
    }

    // Runs a line of the shell in the folder of the bench.
    int shell(const std::string& line) {
        const std::string examples = builtFolder() / "examples";
        Process run({"/bin/bash", "-c",
                     "cd '" + bench_.folder.path().string() + "' && export PATH='" + examples +
                         "':'" + builtFolder().string() +
                         "':$PATH FILE=app.mot DEVICE=VT-B128 && " + line},
                    bench_.folder / "shell");
        const int code = run.wait();
        said_ = run.out() + run.err();
        return code;
    }
    const std::string& said() const { return said_; }

private:
    void addBoard(const std::string& name, const Strings& options) {
        const std::string port = bench_.folder / (name + ".port");
        Strings command{builtFolder() / "calvorin-sim", "--device", "VT-B128", "--link", port};
        command.insert(command.end(), options.begin(), options.end());
        chips_.push_back(std::make_unique<Process>(command, bench_.folder / name));
        waitFor([&port] { return std::filesystem::exists(port); });
        boards_ += name + " " + port + "\n";
        writeFile(bench_.folder / "boards.txt", boards_);
    }

    ProgramFolder bench_;
    std::vector<std::unique_ptr<Process>> chips_;
    std::string boards_;
    std::string said_;
};

constexpr char kReadGood[] = "read_results.py results/good1.json results/good2.json";
constexpr char kReadAll[] = "read_results.py results/{good1,good2,bad}.json";

} // namespace

TEST(Examples, OneStation) {
    Boards boards;
    EXPECT_EQ(boards.shell("{ (station.sh good1 $PWD/good1.port; echo exit code $?) >good & }; "
                           "station.sh bad $PWD/bad.port; code=$?; wait; cat good; exit $code"),
              1);
    for (const char* part : {"try 3", "BAD   bad\nGOOD  good1\nexit code 0\n"}) {
        EXPECT_NE(boards.said().find(part), std::string::npos) << boards.said();
    }
}

TEST(Examples, BoardsSideBySide) {
    const std::string make = "make -s -f '" + (builtFolder() / "examples").string() +
                             "/boards.mk' -j8 -k FILE=app.mot DEVICE=VT-B128";
    std::vector<std::string> lines = {make, "boards_parallel.sh", "HOSTS=: boards_parallel.sh"};
    const bool hasParallel = Boards().shell("parallel --version") == 0;
    lines.resize(hasParallel ? lines.size() : 1);
    forAll(lines, [](const std::string& line) {
        Boards boards;
        EXPECT_NE(boards.shell(line), 0) << line;
        EXPECT_EQ(boards.shell(kReadGood), 0) << line << "\n" << boards.said();
        EXPECT_EQ(boards.shell(kReadAll), 1) << line << "\n" << boards.said();
        EXPECT_NE(boards.said().find("bad.json  failed"), std::string::npos) << boards.said();
    });
    if (!hasParallel) {
        GTEST_SKIP() << "GNU parallel is not installed";
    }
}

TEST(Examples, NumbersOfTheirOwn) {
    Boards boards;
    EXPECT_EQ(boards.shell("{ serial_number.sh $PWD/good1.port 10 200 key.bin & }; "
                           "serial_number.sh $PWD/good2.port 10 && wait $! && "
                           "grep -c '\"data\":\"2A000000\"' results/board42.json && "
                           "grep -c '\"data\":\"2B000000\"' results/board43.json && "
                           "cat results/*.json | grep -c key.bin"),
              0)
        << boards.said();
}

TEST(Examples, CiJob) {
    Boards boards;
    EXPECT_EQ(boards.shell("OUT=ci ci_job.sh app.mot VT-B128"), 0) << boards.said();
    EXPECT_EQ(boards.shell("OUT=none ci_job.sh nothing.mot VT-B128"), 1) << boards.said();
}
