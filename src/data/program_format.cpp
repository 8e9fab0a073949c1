#include "data/program_format.h"

#include "platform/format.h"

#include <algorithm>
#include <cctype>

std::span<const ProgramFormat> PROGRAMFORMAT_All() {
    static const ProgramFormat rows[] = {
        {FILETYPE_INTEL, "Intel Hex file", ".hex", "*.h*", ':', startIntelHex, writeIntelHex,
         isIntelEnd},
        {FILETYPE_SRECORD, "Motorola S file", ".mot", "*.s*", 'S', startSRecords, writeSRecords,
         isSRecordEnd},
    };
    return rows;
}

const ProgramFormat* PROGRAMFORMAT_Find(const std::function<bool(const ProgramFormat&)>& matches) {
    const auto all = PROGRAMFORMAT_All();
    const auto found = std::ranges::find_if(all, matches);
    return found == all.end() ? nullptr : &*found;
}

const ProgramFormat* PROGRAMFORMAT_OfName(const std::string& path) {
    return PROGRAMFORMAT_Find(
        [&path](const ProgramFormat& format) { return endsWithIgnoringCase(path, format.suffix); });
}

std::string PROGRAMFORMAT_Suffixes() {
    std::string list;
    for (const ProgramFormat& format : PROGRAMFORMAT_All()) {
        std::string suffix = format.suffix;
        std::ranges::transform(suffix, suffix.begin(),
                               [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        list.insert(0, suffix + (list.empty() ? "" : " or "));
    }
    return list;
}
