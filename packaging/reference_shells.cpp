#include "packaging/reference.h"
#include "serial/sio.h"

#include <string_view>

namespace {

// What may stand behind a name, as a shell finds it out.
enum class Values { none, free, ports, devices, files, fixed };

struct Completion {
    ReferenceRow row;
    Values kind = Values::none;
    std::string fixed = {}; // parted by blanks
};

std::string commonRates() {
    std::string rates;
    for (const uint32_t rate : kBaudrates) {
        rates += (rates.empty() ? "" : " ") + std::to_string(rate);
    }
    return rates;
}

Completion completionOf(const ReferenceRow& row) {
    const std::string& argument = row.argument;
    const bool isEither = argument == "<ENABLE>";
    const bool isRate = argument == "<BAUDRATE>";
    const Values kind = argument.empty()             ? Values::none
                        : argument == "<PORT>"       ? Values::ports
                        : argument == "<DEVICENAME>" ? Values::devices
                        : argument == "<FILE.EXT>"   ? Values::files
                        : isEither || isRate         ? Values::fixed
                                                     : Values::free;
    return {row, kind, isEither ? "0 1" : isRate ? commonRates() : ""};
}

std::vector<Completion> completions() {
    std::vector<Completion> all;
    for (const auto& rows : {REFERENCE_Options(), REFERENCE_Commands(), REFERENCE_Words()}) {
        for (const ReferenceRow& row : rows) {
            if (row.name != "-?") { // a pattern to shells, and --help is its like
                all.push_back(completionOf(row));
            }
        }
    }
    return all;
}

std::string replaced(std::string text, std::string_view mark, const std::string& by) {
    for (size_t at = text.find(mark); at != std::string::npos;
         at = text.find(mark, at + by.size())) {
        text.replace(at, mark.size(), by);
    }
    return text;
}

std::string inQuotes(const std::string& text) {
    return "'" + replaced(text, "'", "'\\''") + "'";
}

// The branches of a shell for those names behind which something can be listed: `form` holds NAME
// and, of the values that are looked up, the shell's words for them.
struct ValueForms {
    const char* branch;
    const char* ports;
    const char* devices;
    const char* files;
    const char* fixed;
};

std::string branches(const ValueForms& forms) {
    std::string text;
    for (const Completion& each : completions()) {
        const char* values = each.kind == Values::ports     ? forms.ports
                             : each.kind == Values::devices ? forms.devices
                             : each.kind == Values::files   ? forms.files
                             : each.kind == Values::fixed   ? forms.fixed
                                                            : nullptr;
        if (values != nullptr && each.row.isGlued) {
            const std::string filled = replaced(values, "FIXED", each.fixed);
            text += replaced(replaced(forms.branch, "VALUES", filled), "NAME", each.row.name);
        }
    }
    return text;
}

// One line a name, with its help in quotes.
std::string names(bool withArgument, const char* between, const std::string& indent,
                  bool escapesColons) {
    std::string text;
    for (const Completion& each : completions()) {
        if ((each.kind != Values::none && each.row.isGlued) == withArgument) {
            const std::string help =
                escapesColons ? replaced(each.row.effect, ":", "\\:") : each.row.effect;
            text += indent + inQuotes(each.row.name + between + help) + "\n";
        }
    }
    return text;
}

std::string bareNames(bool withArgument) {
    std::string text;
    for (const Completion& each : completions()) {
        if ((each.kind != Values::none && each.row.isGlued) == withArgument) {
            text += (text.empty() ? "" : " ") + each.row.name;
        }
    }
    return text;
}

// The words behind which a file stands as an argument of its own, as a pattern.
std::string wordsWithFile() {
    std::string text;
    for (const ReferenceRow& row : REFERENCE_Words()) {
        if (row.argument == "FILE") {
            text += (text.empty() ? "" : "|") + row.name;
        }
    }
    return text;
}

constexpr char kBash[] = R"(# bash completion for calvorin, made from the program's table of options
_calvorin_values() { # NAME VALUE...
    local name=$1 value
    shift
    for value in "$@"; do
        [[ $name$value == "$cur"* ]] && COMPREPLY+=("$name$value ")
    done
}

_calvorin_files() { # NAME
    local file
    while IFS= read -r file; do
        [[ -d $file ]] && file+=/ || file+=' '
        COMPREPLY+=("$1$file")
    done < <(compgen -f -- "${cur#"$1"}")
}

_calvorin() {
    local cur=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} name
    COMPREPLY=()
    compopt -o nospace 2>/dev/null
    case $previous in
        FILES_BEHIND)
            _calvorin_files ''
            return
            ;;
    esac
    case $cur in
BRANCHES        -*)
            for name in GLUED; do
                [[ $name == "$cur"* ]] && COMPREPLY+=("$name")
            done
            for name in PLAIN; do
                [[ $name == "$cur"* ]] && COMPREPLY+=("$name ")
            done
            ;;
        *) _calvorin_files '' ;;
    esac
}
complete -F _calvorin calvorin
)";

constexpr ValueForms kBashForms = {
    "        NAME*) VALUES ;;\n",
    "_calvorin_values NAME $(\"$1\" --list-ports 2>/dev/null | awk '{ print $NF == \"-\" ? $1 : "
    "$NF }')",
    "_calvorin_values NAME $(\"$1\" --list-devices 2>/dev/null | awk '{ print $1 }')",
    "_calvorin_files NAME",
    "_calvorin_values NAME FIXED",
};

constexpr char kZsh[] = R"(#compdef calvorin
# zsh completion for calvorin, made from the program's table of options
local -a glued plain lines
glued=(
GLUED)
plain=(
PLAIN)
case ${words[CURRENT-1]} in
    --check-device)
        _files -g '*.dev(-.)'
        return
        ;;
    FILES_BEHIND)
        _files
        return
        ;;
esac
case $PREFIX in
BRANCHES    -*)
        _describe -o option glued -S ''
        _describe -o option plain
        ;;
    *) _files ;;
esac
)";

constexpr ValueForms kZshForms = {
    "    NAME*)\n        compset -P NAME\n        VALUES\n        ;;\n",
    "lines=(${(f)\"$($words[1] --list-ports 2>/dev/null)\"})\n"
    "        compadd -l -d lines -- ${lines%% *}\n"
    "        compadd -- ${${(M)lines:#*/dev/serial/*}##* }",
    "lines=(${(f)\"$($words[1] --list-devices 2>/dev/null)\"})\n"
    "        compadd -l -d lines -- ${lines%% *}",
    "_files",
    "compadd -- FIXED",
};

constexpr char kFish[] = R"(# fish completion for calvorin, made from the program's table of options
function __calvorin_complete
    set -l token (commandline -ct)
    set -l program (commandline -opc)[1]
    switch $token
BRANCHES        case '*'
            string replace -r '^(\S+) ' '$1\t' -- NAMES
    end
end
complete -c calvorin -k -a '(__calvorin_complete)'
)";

constexpr ValueForms kFishForms = {
    "        case 'NAME*'\n            VALUES\n",
    "$program --list-ports 2>/dev/null | awk '{ where = $NF == \"-\" ? $1 : $NF; print \"NAME\" "
    "where \"\\t\" $0 }'",
    "$program --list-devices 2>/dev/null | awk '{ name = $1; $1 = \"\"; print \"NAME\" name "
    "\"\\t\" "
    "$0 }'",
    "for file in (__fish_complete_path (string replace -- NAME '' $token))\n"
    "                echo NAME$file\n            end",
    "printf '%s\\n' NAME(string split ' ' 'FIXED')",
};

} // namespace

std::string REFERENCE_Bash() {
    std::string text = replaced(kBash, "BRANCHES", branches(kBashForms));
    text = replaced(text, "GLUED", bareNames(true));
    text = replaced(text, "FILES_BEHIND", wordsWithFile());
    return replaced(text, "PLAIN", bareNames(false));
}

std::string REFERENCE_Zsh() {
    std::string text = replaced(kZsh, "BRANCHES", branches(kZshForms));
    text = replaced(text, "GLUED", names(true, ":", "    ", true));
    text = replaced(text, "FILES_BEHIND", wordsWithFile());
    return replaced(text, "PLAIN", names(false, ":", "    ", true));
}

std::string REFERENCE_Fish() {
    const std::string all =
        names(true, " ", "                ", false) + names(false, " ", "                ", false);
    const std::string text = replaced(kFish, "BRANCHES", branches(kFishForms));
    return replaced(text, "NAMES", "\\\n" + replaced(all.substr(0, all.size() - 1), "\n", " \\\n"));
}
