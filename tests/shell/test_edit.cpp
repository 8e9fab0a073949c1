// The dialogs of Relocate, Delete Range and Read Back, driven by a front end that types.
#include "persist/ini.h"
#include "platform/format.h"
#include "shell/edit_operations.h"
#include "shell_world.h"

#include <gtest/gtest.h>

namespace {

using Value = std::optional<int32_t>;

std::string fieldText(Value value, bool negative) {
    const uint32_t bits = static_cast<uint32_t>(value.value_or(0));
    return !value ? "none" : negative ? formatText("-%X", 0U - bits) : formatText("%X", bits);
}

// What the dialog shows each time while the user types these values and then cancels.
std::string shownBy(void (*dialog)(), std::vector<std::pair<Value, Value>> typed) {
    std::string shown;
    FrontEnd frontEnd;
    frontEnd.editValue = [&](ValueRequest& request) {
        shown += fieldText(request.value0, request.sign < 0) + "," +
                 fieldText(request.value1, false) + " ";
        if (typed.empty()) {
            return kDialogCancel;
        }
        std::tie(request.value0, request.value1) = typed.front();
        typed.erase(typed.begin());
        return kDialogOk;
    };
    FRONTEND_Set(frontEnd);
    dialog();
    return shown;
}

} // namespace

TEST(EditDialogs, AskUntilTheValuesAreGoodAndKeepThem) {
    ShellWorld world;
    INI_Load();
    ShellWorld::load(0x100, std::vector<uint8_t>(0x20));
    const struct {
        void (*dialog)();
        std::vector<std::pair<Value, Value>> typed;
        const char* shown;
        const char* errors;
        AddressRange left;
    } cases[] = {
        {EDIT_RelocateDialog, {{-0x10, {}}}, "0,none ", "", {0xF0, 0x110}},
        {EDIT_RelocateDialog, {{{}, {}}}, "-10,none -10,none ", "Empty value!", {0xF0, 0x110}},
        {EDIT_DeleteRangeDialog,
         {{{}, 0xFF}, {0x200, {}}, {0x200, 0x100}, {0, 0xF7}},
         "0,0 none,FF 200,none 200,100 ",
         "Empty Start Address!\nEmpty End Address!\nEnd Address < Start Address!",
         {0xF8, 0x110}},
        {EDIT_DeleteRangeDialog, {}, "200,F7 ", "", {0xF8, 0x110}}, // a 0 is not kept
        {EDIT_ReadBackDialog,
         {{2, 1}},
         "F8,10F 2,1 ",
         "End Address < Start Address!",
         {0xF8, 0x110}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(shownBy(c.dialog, c.typed), c.shown);
        EXPECT_EQ(world.screen.take(), c.errors);
        EXPECT_EQ(HEXDATA_GetAreas(), std::vector{c.left});
    }
    HEXDATA_Clear();
    EXPECT_EQ(shownBy(EDIT_ReadBackDialog, {}), "0,2FF ") << "the flash of the device";
}
