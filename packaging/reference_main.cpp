// calvorin-reference: writes what is made of the table of options.
#include "packaging/reference.h"
#include "platform/files.h"
#include "platform/process.h"

#include <string>
#include <vector>

namespace {

constexpr struct {
    const char* file;
    std::string (*text)();
} kFiles[] = {
    {"calvorin.1", REFERENCE_ManPage},   {"calvorin-sim.1", REFERENCE_SimManPage},
    {"calvorin.bash", REFERENCE_Bash},   {"_calvorin", REFERENCE_Zsh},
    {"calvorin.fish", REFERENCE_Fish},   {"calvorin-sim.bash", REFERENCE_SimBash},
    {"_calvorin-sim", REFERENCE_SimZsh}, {"calvorin-sim.fish", REFERENCE_SimFish},
};

int failure(const std::string& text) {
    PROCESS_WriteError("calvorin-reference: " + text + "\n");
    return 1;
}

int writeFiles(const std::string& folder) {
    for (const auto& [file, text] : kFiles) {
        const FileResult written = FILES_Replace(folder + "/" + file, text());
        if (!written.ok()) {
            return failure(folder + "/" + file + ": " + written.reason);
        }
    }
    return 0;
}

// Writes the generated parts of a document anew, or only says whether they are as they are to be.
int treatDocument(const std::string& path, bool write) {
    std::string document;
    if (const FileResult read = FILES_ReadAll(path, document); !read.ok()) {
        return failure(path + ": " + read.reason);
    }
    const std::string wanted = REFERENCE_Document(document);
    if (wanted == document) {
        return 0;
    }
    if (!write) {
        return failure(path + " is not what the program says; run calvorin-reference --write " +
                       path);
    }
    const FileResult written = FILES_Replace(path, wanted);
    return written.ok() ? 0 : failure(path + ": " + written.reason);
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 2 && arguments[0] == "--files") {
        return writeFiles(arguments[1]);
    }
    if (arguments.size() == 2 && (arguments[0] == "--check" || arguments[0] == "--write")) {
        return treatDocument(arguments[1], arguments[0] == "--write");
    }
    return failure("--files FOLDER, --check DOCUMENT or --write DOCUMENT");
}
