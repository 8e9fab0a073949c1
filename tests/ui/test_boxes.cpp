#include "desktop_world.h"

#include <QFileDialog>
#include <QMessageBox>

TEST(Boxes, AnswerEitherThread) {
    DesktopWorld world;
    NOTIFIERS_Register();
    Texts asked;
    const std::thread::id here = std::this_thread::get_id();
    BOX_SetResponder([&](const BoxRequest& request) -> std::optional<int> {
        EXPECT_EQ(std::this_thread::get_id(), here);
        asked.push_back(request.caption + ": " + request.text + request.hint);
        return request.boxType == BOX_YES_NO ? ANSWER_YES : ANSWER_OK;
    });
    EXPECT_EQ(ERROR_Ask(nullptr, "Here?", "A", BOX_YES_NO), ANSWER_YES);
    std::atomic<int> answer{-1};
    std::thread worker([&answer] {
        ERROR_Out(nullptr, "There", 1, {Cause::unknownDevice, "A"});
        answer = ERROR_Ask(nullptr, "There?", "B", BOX_YES_NO);
    });
    EXPECT_TRUE(runUntil([&answer] { return answer != -1; }));
    worker.join();
    EXPECT_EQ(answer, ANSWER_YES);
    EXPECT_EQ(asked, (Texts{"A: Here?", "Error: ThereDevices that there are: A", "B: There?"}));
}

TEST(Boxes, HaveTheButtonsAndDefaultsOfTheirTypeAndTheHintBelow) {
    DesktopWorld world;
    NOTIFIERS_Register();
    const struct {
        unsigned type;
        const char* defaultButton;
        int accepted, escaped;
    } cases[] = {{BOX_OK, "OK", ANSWER_OK, ANSWER_OK},
                 {BOX_OK_CANCEL, "OK", ANSWER_OK, ANSWER_CANCEL},
                 {BOX_YES_NO, "Yes", ANSWER_YES, ANSWER_NO},
                 {BOX_YES_NO | BOX_DEFAULT_SECOND, "No", ANSWER_NO, ANSWER_NO}};
    for (const auto& one : cases) {
        const auto ask = [&one] {
            return BOX_Ask(nullptr, "Text", "A caption far longer than the text below it",
                           one.type);
        };
        const auto accept = [&one](QDialog& dialog) {
            auto& box = dynamic_cast<QMessageBox&>(dialog);
            const int caption = box.fontMetrics().horizontalAdvance(box.windowTitle());
            EXPECT_GT(box.width(), caption + 100) << "with icon and buttons beside it";
            EXPECT_EQ(box.defaultButton()->text().remove('&'), one.defaultButton);
            box.defaultButton()->click();
        };
        EXPECT_EQ(driveDialog(ask, accept), one.accepted);
        EXPECT_EQ(driveDialog(ask, [](QDialog& box) { pressKey(box, Qt::Key_Escape); }),
                  one.escaped);
    }
    driveDialog(
        [] {
            ERROR_Out(nullptr, "Text", 1, {Cause::unknownDevice, "A"});
        },
        [](QDialog& dialog) {
            const auto& box = dynamic_cast<QMessageBox&>(dialog);
            EXPECT_EQ(box.text(), "Text");
            EXPECT_EQ(box.informativeText(), "Devices that there are: A");
        });
}

TEST(FileDialog, FollowsTheFilterWithTheExtension) {
    EXPECT_EQ(FILEDIALOG_WithExtension("/a.b/app.v1.hex", "*.mot"), "/a.b/app.mot");
    DesktopWorld world;
    const std::string path = world.programFile();
    const FileRequest request{
        true,
        "Save file",
        {{"Intel Hex file (*.hex)", "*.hex"}, {"Motorola S file (*.mot)", "*.mot"}},
        (world.folder / "app.old.txt").string()};
    writeFile(world.folder / "app.mot", "is replaced without a question");
    const auto choose = [&request] { return FILEDIALOG_Choose(request); };
    const auto choice = driveDialog(choose, [](QDialog& dialog) {
        auto& name = control<QLineEdit>(dialog, "fileNameEdit");
        EXPECT_EQ(name.text(), "app.hex");
        auto& files = dynamic_cast<QFileDialog&>(dialog);
        const QString second = files.nameFilters().at(1);
        files.selectNameFilter(second);
        emit files.filterSelected(second);
        EXPECT_EQ(name.text(), "app.mot");
        name.setText("app");
        files.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Save)->click();
    });
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->path, (world.folder / "app.mot").string());
    EXPECT_EQ(choice->filter, 1U);
}

TEST(FileDialog, TakesTheTypedPathAndNotTheFolderSelectedInTheList) {
    DesktopWorld world;
    std::filesystem::create_directories(world.folder / "start" / "selected");
    const std::string path = (world.folder / "other.hex").string();
    const std::string start = (world.folder / "start" / "app.hex").string();
    for (const bool save : {true, false}) {
        const FileRequest request{save, "Title", {{"All (*.hex)", "*.hex"}}, start};
        const auto choose = [&request] { return FILEDIALOG_Choose(request); };
        const auto choice = driveDialog(choose, [&path, save](QDialog& dialog) {
            auto& list = control<QListView>(dialog, "listView");
            const auto folder = [&list] { return list.model()->index(0, 0, list.rootIndex()); };
            ASSERT_TRUE(runUntil([&] { return folder().data().toString() == "selected"; }));
            list.selectionModel()->select(folder(), QItemSelectionModel::ClearAndSelect |
                                                        QItemSelectionModel::Rows);
            auto& name = control<QLineEdit>(dialog, "fileNameEdit");
            dialog.activateWindow();
            name.setFocus();
            ASSERT_TRUE(runUntil([&name] { return name.hasFocus(); }));
            name.setText(QString::fromStdString(path));
            dialog.findChild<QDialogButtonBox*>()
                ->button(save ? QDialogButtonBox::Save : QDialogButtonBox::Open)
                ->click();
        });
        ASSERT_TRUE(choice) << (save ? "save" : "open");
        EXPECT_EQ(choice->path, path);
        writeFile(path, "");
    }
}

// What it shows of a running operation is tested with one.
TEST(Progress, OpensEmptyAndStaysWithoutCancel) {
    DesktopWorld world;
    PROGRESS_Open("Programming", nullptr);
    PROGRESS_SetText("Writing");
    PROGRESS_SetMax(1000);
    auto& dialog = control<QDialog>(world.frame(), "900");
    auto& line = control<QLabel>(dialog, "901");
    EXPECT_TRUE(runUntil([&line] { return line.text() == "Writing"; }));
    click(dialog, "2"); // without a handler it only goes
    EXPECT_FALSE(dialog.isVisible());

    PROGRESS_Open("Verifying", nullptr);
    EXPECT_TRUE(line.text().isEmpty()) << "of the operation before";
    PROGRESS_ShowCancel(false);
    EXPECT_TRUE(runUntil([&dialog] { return control<QWidget>(dialog, "2").isHidden(); }));
    dialog.close();
    EXPECT_TRUE(dialog.isVisible()) << "without Cancel there is no way out";
    PROGRESS_Close();
}
