#include "packaging/reference.h"

namespace {

constexpr char kHead[] = "| Option | Argument | Effect | Note |\n|---|---|---|---|\n";

std::string table(const std::vector<ReferenceRow>& rows) {
    std::string text = kHead;
    for (const ReferenceRow& row : rows) {
        text += "| `" + row.name + "` | " +
                (row.argument.empty() ? "" : "`" + row.argument + "` ") + "| " + row.effect +
                " | " + row.note + (row.note.empty() ? "|\n" : " |\n");
    }
    return text;
}

std::string wordTable(bool alone) {
    std::string text = "| Word | Meaning |\n|---|---|\n";
    for (const ReferenceRow& row : REFERENCE_Words()) {
        if (row.standsAlone == alone) {
            text += "| `" + row.name + (row.argument.empty() ? "" : " " + row.argument) + "` | " +
                    row.effect + " |\n";
        }
    }
    return text;
}

void replacePart(std::string& document, const std::string& name, const std::string& text) {
    const std::string begin = "<!-- begin " + name + " -->\n";
    const size_t from = document.find(begin);
    const size_t to = document.find("<!-- end " + name + " -->");
    if (from != std::string::npos && to != std::string::npos && from < to) {
        document.replace(from + begin.size(), to - from - begin.size(), text);
    } else {
        document += "missing part: " + name + "\n"; // which no check lets pass
    }
}

} // namespace

std::string REFERENCE_Document(const std::string& document) {
    std::string text = document;
    replacePart(text, "options", table(REFERENCE_Options()));
    replacePart(text, "commands", table(REFERENCE_Commands()));
    replacePart(text, "words of a run", wordTable(false));
    replacePart(text, "words alone", wordTable(true));
    return text;
}
