#include "shell/edit_history.h"

#include "data/hexdata.h"
#include "notice/run.h"
#include "shell/front_end.h"
#include "shell/session.h"
#include "shell/summary.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace {

// Two differences closer than this are kept as one: a range costs as much as these bytes.
constexpr uint32_t kJoinedGap = sizeof(AddressRange) * 2;

// The other side of a step: what undoing or doing it again exchanges with what is there.
struct Step {
    std::string name;
    ImageCopy bytes;
    int32_t offset = 0; // of a relocation, which exchanges no bytes
    ImageOrigin origin;
    std::optional<uint32_t> typed; // the address of the last byte typed

    size_t footprint() const { return sizeof(Step) + bytes.footprint(); }
};

std::deque<Step> undoable;  // the next one to be undone at the end
std::vector<Step> redoable; // the next one to be done again at the end
size_t keptBytes = 0;

void forgetUndone() {
    for (const Step& step : redoable) {
        keptBytes -= step.footprint();
    }
    redoable.clear();
}

void forgetOldest() {
    while (keptBytes > kMaxHistoryBytes && !undoable.empty()) {
        keptBytes -= undoable.front().footprint();
        undoable.pop_front();
    }
}

bool isSameSource(const ImageOrigin& left, const ImageOrigin& right) {
    return left.kind == right.kind && left.path == right.path && left.merged == right.merged;
}

// The origin of one side becomes the session's and the other way round. What is known of a file on
// disk stays what is known last.
void exchangeOrigin(ImageOrigin& other) {
    ImageOrigin& now = SESSION_Get().image;
    if (now.path == other.path) {
        other.time = now.time;
        other.fileType = now.fileType;
    }
    std::swap(now, other);
    SESSION_Get().loaded = now.kind != ImageKind::none || SESSION_Get().loaded;
}

// Ranges of two neighbouring steps of typing, one of which may lie in the other.
ImageCopy joinTyped(const ImageCopy& first, const ImageCopy& second) {
    if (second.ranges.empty() || first.ranges.back().contains(second.ranges.front())) {
        return first; // what was there before the first digit
    }
    ImageCopy joined = first;
    for (const AddressRange& range : second.ranges) {
        if (joined.ranges.back().end == range.start) {
            joined.ranges.back().end = range.end;
        } else {
            joined.ranges.push_back(range);
        }
    }
    for (const AddressRange& area : second.areas) {
        joined.areas.push_back(area);
    }
    joined.bytes.insert(joined.bytes.end(), second.bytes.begin(), second.bytes.end());
    return joined;
}

// Whether a step of typing at `address` goes on where the last one has stopped.
bool continuesTyping(uint32_t address) {
    if (undoable.empty() || !redoable.empty() || !undoable.back().typed ||
        undoable.back().bytes.ranges.empty()) {
        return false;
    }
    const uint32_t last = *undoable.back().typed;
    return address == last || (address == last + 1 && last != UINT32_MAX);
}

void keep(Step step) {
    if (step.typed && continuesTyping(*step.typed)) {
        Step& last = undoable.back();
        keptBytes -= last.footprint();
        last.bytes = joinTyped(last.bytes, step.bytes);
        last.typed = step.typed;
        keptBytes += last.footprint();
        if (HEXDATA_Differences(last.bytes, kJoinedGap).empty()) { // typed back to what it was
            keptBytes -= last.footprint();
            exchangeOrigin(last.origin);
            undoable.pop_back();
        }
    } else {
        forgetUndone();
        keptBytes += step.footprint();
        undoable.push_back(std::move(step));
    }
    forgetOldest();
}

void exchange(Step& step, bool undoing) {
    step.typed.reset();
    keptBytes -= step.footprint();
    if (step.offset != 0) {
        const auto bits = static_cast<uint32_t>(step.offset);
        // What was moved there without a tear can be moved back.
        static_cast<void>(HEXDATA_Relocate(static_cast<int32_t>(undoing ? 0U - bits : bits)));
    } else {
        HEXDATA_Exchange(step.bytes);
    }
    keptBytes += step.footprint();
    exchangeOrigin(step.origin);
}

void showImage(const Step& step) {
    ORIGIN_ShowTitle();
    SUMMARY_Refresh();
    if (!step.bytes.ranges.empty()) {
        FRONTEND_Get().showBytes({step.bytes.ranges.front().start, 0});
    }
}

} // namespace

EditStep::EditStep(std::string name) : EditStep(std::move(name), IMAGECOPY_Everything()) {
}

EditStep::EditStep(std::string name, const AddressRange& range)
    : name_(std::move(name)), origin_(SESSION_Get().image), kept_(!RUN_IsUnattended()) {
    if (kept_) {
        before_ = HEXDATA_TakeCopy({range});
    }
}

EditStep::~EditStep() {
    if (!kept_) {
        return;
    }
    const std::vector<AddressRange> changed = HEXDATA_Differences(before_, kJoinedGap);
    if (!changed.empty()) {
        keep({name_, IMAGECOPY_Reduce(before_, changed), 0, origin_, typed_});
    } else if (typed_ && continuesTyping(*typed_)) {
        undoable.back().typed = typed_; // the byte was that already
    }
}

void HISTORY_Relocated(int32_t offset, const ImageOrigin& before) {
    if (offset != 0 && !RUN_IsUnattended()) {
        keep({"Relocate", {}, offset, before, std::nullopt});
    }
}

bool HISTORY_CanUndo() {
    return !undoable.empty();
}

bool HISTORY_CanRedo() {
    return !redoable.empty();
}

std::string HISTORY_UndoName() {
    return undoable.empty() ? "" : undoable.back().name;
}

std::string HISTORY_RedoName() {
    return redoable.empty() ? "" : redoable.back().name;
}

void HISTORY_Undo() {
    if (!undoable.empty()) {
        redoable.push_back(std::move(undoable.back()));
        undoable.pop_back();
        exchange(redoable.back(), true);
        showImage(redoable.back());
        forgetOldest();
    }
}

void HISTORY_Redo() {
    if (!redoable.empty()) {
        undoable.push_back(std::move(redoable.back()));
        redoable.pop_back();
        exchange(undoable.back(), false);
        showImage(undoable.back());
    }
}

void HISTORY_EndTyping() {
    if (!undoable.empty()) {
        undoable.back().typed.reset();
    }
}

void HISTORY_Saved(const ImageOrigin& before) {
    HISTORY_EndTyping();
    const auto update = [&before](Step& step) {
        if (isSameSource(step.origin, before)) {
            step.origin = SESSION_Get().image;
        }
        step.origin.changed = true; // the file holds another state now
    };
    std::ranges::for_each(undoable, update);
    std::ranges::for_each(redoable, update);
}

void HISTORY_Clear() {
    undoable.clear();
    redoable.clear();
    keptBytes = 0;
}
