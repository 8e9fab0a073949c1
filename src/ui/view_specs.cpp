#include "ui/view_specs.h"

namespace {

const std::array<ViewSpec, kViews> kViewSpecs = {{
    {View::hexList,
     "Settings HEXLISTVIEW",
     "Hex List",
     {0, 300, 792, 120},
     6,
     true,
     Art::hexList,
     HEXLISTVIEW_Create},
    {View::hexDump,
     "Settings HEXDUMPVIEW",
     "Hex Dump",
     {191, 0, 601, 300},
     3,
     true,
     Art::hexDump,
     HEXDUMPVIEW_Create},
    {View::log, "Settings LOG", "Log", {450, 420, 342, 114}, 0, false, Art::log, LOGVIEW_Create},
    {View::device,
     "Settings DEVICEVIEW",
     "Device",
     {0, 0, 191, 300},
     2,
     false,
     Art::device,
     DEVICEVIEW_Create},
    {View::terminal,
     "Settings TERMINAL",
     "Terminal I/O",
     {0, 420, 449, 114},
     0,
     false,
     Art::terminal,
     TERMINALVIEW_Create},
    {View::memoryMap, // over the dump
     "Settings MEMORYMAP",
     "Memory Map",
     {191, 0, 601, 420},
     5,
     false,
     Art::memoryMap,
     MEMORYMAPVIEW_Create},
}};

} // namespace

const std::array<ViewSpec, kViews>& VIEWSPECS_All() {
    return kViewSpecs;
}
