// What to do about a failure: one table of hints, which the report, the desktop's box and the page
// "When it does not connect" share. The message of a failure stays as it is, its hint comes behind.
#pragma once

#include <span>
#include <string>
#include <string_view>

enum class Cause {
    none, // nothing is known that the message does not say
    noAnswer,
    otherAnswer,
    lateAnswer,
    fellSilent,
    wrongAnswer,
    passwordRefused,
    productDiffers,
    ramImage,
    loaderSilent,
    loaderLost,
    pageRefused,
    blockRefused,
    contentsDiffer,
    eraseRunsOn,
    portGone,
    portHeld,
    portShared,
    portDenied,
    portMissing,
    slowAdapter,
    unknownDevice,
};

// Why something failed, as far as whoever met it can tell.
struct Hint {
    Cause cause = Cause::none;
    std::string came = {}; // what was seen: the table's text names it where it has a {}
};

struct HintRow {
    Cause cause;
    const char* happened; // as the page lists it
    const char* text;
};

std::span<const HintRow> HINT_Rows();
// The text of the cause with what came; empty for none.
std::string HINT_Text(const Hint& hint);
// The table as the page holds it, one row a line, an ellipsis in place of what came.
std::string HINT_PageTable();
// "5A 86 .. ": bytes as a hint shows them, the first 16 at the most.
std::string HINT_Bytes(std::string_view bytes);
