#include "packaging/reference.h"
#include "platform/version.h"

#include <string_view>

namespace {

// Words as roff shows them: no command at the beginning of a line, hyphens that can be copied.
std::string roff(std::string_view text) {
    std::string out;
    for (const char c : text) {
        out += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return out.starts_with('.') || out.starts_with('\'') ? "\\&" + out : out;
}

// Without the marks of Markdown: "see [ports.md](ports.md)" is "see ports.md".
std::string plain(const std::string& markdown) {
    std::string out;
    for (size_t at = 0; at < markdown.size(); ++at) {
        if (markdown.compare(at, 2, "](") == 0) {
            at = markdown.find(')', at);
        } else if (markdown[at] != '[' && markdown[at] != '`') {
            out += markdown[at];
        }
    }
    return out;
}

std::string entries(const std::vector<ReferenceRow>& rows) {
    std::string text;
    for (const ReferenceRow& row : rows) {
        const std::string gap = row.argument.empty() ? "" : row.isGlued ? "\\fI" : " \\fI";
        text += ".TP\n\\fB" + roff(row.name) + "\\fR" + gap + roff(row.argument) +
                (gap.empty() ? "" : "\\fR") + "\n" + roff(row.effect) +
                (row.note.empty() ? "" : " (" + roff(plain(row.note)) + ")") + ".\n";
    }
    return text;
}

std::string header(std::string_view name, std::string_view title, std::string_view what) {
    return ".\\\" Made from the table of options in the program.\n.TH " + std::string(title) +
           " 1 \"\" \"Calvorin " + kProductVersion + "\" \"User Commands\"\n.SH NAME\n" +
           roff(name) + " \\- " + roff(what) + "\n";
}

constexpr char kSynopsis[] = R"(.SH SYNOPSIS
.B calvorin
.RI [ FILE ]
.RI [\- OPTION ...]
.RI [\- COMMAND ...]
.RB [ \-Exit ]
.br
.B calvorin
.RB { \-\-help | \-\-version | \-\-paths | \-\-list\-ports | \-\-list\-devices | \-\-check\-device
.IR FILE }
.SH DESCRIPTION
Calvorin loads Intel HEX and Motorola S\-record files into one memory image, resets a chip into its
boot ROM, proves the password, downloads a loader and erases, programs, verifies, reads back and
protects the flash. With
.B \-Exit
on the line nothing is shown and nothing is asked; without it the desktop opens, where it is
installed.
.PP
An argument stands directly behind the name of its option or command, without a blank. The options
take effect before
.I FILE
is loaded; the commands then run in their order, and the first failure skips the rest.
)";

constexpr char kRest[] = R"(.SH EXIT STATUS
0 when no failure was reported in the whole run, 1 otherwise, also after Ctrl\-C, SIGTERM or SIGHUP.
.SH FILES
.B calvorin \-\-paths
tells where the program keeps its files. In the folder of the program, where that can be written; else:
.TP
.I ~/.config/calvorin/calvorin.ini
settings; the section [Settings PORTS] gives devices to COM1 to COM20
.TP
.I ~/.local/state/calvorin/Calvorin.tpu
default project: what a run leaves for the next one
.TP
.I ~/.local/state/calvorin/calvorin.log\fR, \fIcalvorin.err\fR, \fIcalvorin.sio
what the last run did, its errors, the bytes on the line
.TP
.I ~/.local/share/calvorin/Device/\fR, \fIRamImage/
device descriptions and RAM loaders of your own
.SH EXAMPLES
.nf
calvorin app.hex \-OptionsCOMPort1 \-OptionsTargetDeviceVT\-B128 \-TargetAuto \-TargetVerify \-Exit
calvorin app.hex \-OptionsCOMPort/dev/serial/by\-id/usb\-A \-TargetAuto \-Exit
calvorin app.hex \-FileSaveAsapp.mot \-Exit
.fi
.SH SEE ALSO
.BR calvorin\-sim (1),
the documents in /usr/share/doc/calvorin
)";

constexpr char kSimRest[] = R"(.SH EXIT STATUS
0; 3 when the host did what no chip should have to put up with; 1 when the start failed.
.SH SEE ALSO
.BR calvorin (1)
)";

} // namespace

std::string REFERENCE_ManPage() {
    return header("calvorin", "CALVORIN", "program the flash of microcontrollers") + kSynopsis +
           ".SH OPTIONS\n" + entries(REFERENCE_Options()) + ".SH COMMANDS\n" +
           entries(REFERENCE_Commands()) + ".SH WORDS\n" + entries(REFERENCE_Words()) + kRest;
}

std::string REFERENCE_SimManPage() {
    return header("calvorin-sim", "CALVORIN\\-SIM",
                  "virtual microcontroller with a serial boot ROM") +
           ".SH SYNOPSIS\n.B calvorin\\-sim \\-\\-device\n.I NAME\n.RI [ options ]\n.SH "
           "DESCRIPTION\n"
           "A chip to try things on: it answers on a pseudo\\-terminal, whose path is the first "
           "line "
           "that is printed, or on a TCP port.\n.SH OPTIONS\n" +
           entries(REFERENCE_SimOptions()) + kSimRest;
}
