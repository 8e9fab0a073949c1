// Undo and redo of what changes the memory image. A step keeps only what it changed: the bytes that
// were there before, for a relocation its offset. The program's core knows no toolkit, so the
// history is its own. An unattended run keeps none. User-interface thread.
#pragma once

#include "data/image_copy.h"
#include "shell/image_origin.h"

#include <optional>
#include <string>
#include <vector>

// More than this is never kept: the oldest steps are forgotten first. In bytes.
inline constexpr size_t kMaxHistoryBytes = size_t{256} * 1024 * 1024;

// A change of the image under way: what it replaces is copied at its begin, and what of that was
// really changed becomes a step at its end.
class EditStep {
public:
    explicit EditStep(std::string name); // of all the image
    EditStep(std::string name, const AddressRange& range);
    ~EditStep();
    EditStep(const EditStep&) = delete;
    EditStep& operator=(const EditStep&) = delete;

    // It is typing, and continues the typing before it.
    void setTyped(uint32_t address) { typed_ = address; }

private:
    std::string name_;
    ImageCopy before_;
    ImageOrigin origin_;
    std::optional<uint32_t> typed_;
    bool kept_;
};

// The image was relocated; `before` is its origin until then.
void HISTORY_Relocated(int32_t offset, const ImageOrigin& before);

bool HISTORY_CanUndo();
bool HISTORY_CanRedo();
// What they would take back or do again, "Fill"; empty when there is nothing.
std::string HISTORY_UndoName();
std::string HISTORY_RedoName();
void HISTORY_Undo();
void HISTORY_Redo();

// Typing that follows is a step of its own.
void HISTORY_EndTyping();
// The image was saved and is that file now, which it was not or not unchanged before.
void HISTORY_Saved(const ImageOrigin& before);
// Another image was loaded: nothing can be taken back.
void HISTORY_Clear();
