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
            return BOX_Ask(nullptr, "Te\r\nxt", "A caption far longer than the text below it",
                           one.type);
        };
        const auto accept = [&one](QDialog& dialog) {
            auto& box = dynamic_cast<QMessageBox&>(dialog);
            const int caption = box.fontMetrics().horizontalAdvance(box.windowTitle());
            EXPECT_GT(box.width(), caption + 100) << "with icon and buttons beside it";
            EXPECT_EQ(box.text(), "Te\nxt");
            EXPECT_EQ(box.icon(),
                      one.type == BOX_OK ? QMessageBox::Information : QMessageBox::Question);
            EXPECT_EQ(box.textInteractionFlags(), Qt::TextSelectableByMouse);
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
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
            EXPECT_EQ(box.icon(), QMessageBox::Critical);
            EXPECT_EQ(box.informativeText(), "Devices that there are: A");
        });
}

TEST(FileDialog, TakesTheTypedPathAndFollowsTheFilterWithTheExtension) {
    EXPECT_EQ(FILEDIALOG_WithExtension("/a.b/app.v1.hex", "*.mot"), "/a.b/app.mot");
    DesktopWorld world;
    std::filesystem::create_directories(world.folder / "start" / "selected");
    const std::string other = (world.folder / "other.hex").string();
    const auto choose = [&](bool save,
                            const std::function<void(QFileDialog&, QLineEdit&)>& script) {
        const FileRequest request{
            save,
            "Title",
            {{"Intel Hex file (*.hex)", "*.hex"}, {"Motorola S file (*.mot)", "*.mot"}},
            (world.folder / "start" / "app.old.txt").string()};
        const auto run = [&request] { return FILEDIALOG_Choose(request); };
        const auto choice = driveDialog(run, [&](QDialog& dialog) {
            script(dynamic_cast<QFileDialog&>(dialog), control<QLineEdit>(dialog, "fileNameEdit"));
            dialog.findChild<QDialogButtonBox*>()
                ->button(save ? QDialogButtonBox::Save : QDialogButtonBox::Open)
                ->click();
        });
        return choice ? std::pair(choice->path, choice->filter) : std::pair(std::string(), 9UL);
    };
    writeFile(world.folder / "start" / "app.mot", "is replaced without a question");
    const auto ofFilter = choose(true, [](QFileDialog& files, QLineEdit& name) {
        EXPECT_EQ(name.text(), "app.hex");
        EXPECT_GE(files.width(), 110 * files.fontMetrics().averageCharWidth());
        const QString second = files.nameFilters().at(1);
        files.selectNameFilter(second);
        emit files.filterSelected(second);
        EXPECT_EQ(name.text(), "app.mot");
        name.setText("app");
    });
    EXPECT_EQ(ofFilter, std::pair((world.folder / "start" / "app.mot").string(), 1UL));
    for (const bool save : {true, false}) { // and not the folder selected in the list
        const auto typed = choose(save, [&other](QFileDialog& files, QLineEdit& name) {
            auto& list = control<QListView>(files, "listView");
            const auto folder = [&list] { return list.model()->index(0, 0, list.rootIndex()); };
            ASSERT_TRUE(runUntil([&] { return folder().data().toString() == "selected"; }));
            list.selectionModel()->select(folder(), QItemSelectionModel::ClearAndSelect |
                                                        QItemSelectionModel::Rows);
            files.activateWindow();
            name.setFocus();
            ASSERT_TRUE(runUntil([&name] { return name.hasFocus(); }));
            name.setText(QString::fromStdString(other));
        });
        EXPECT_EQ(typed, std::pair(other, 0UL)) << save;
        writeFile(other, "");
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
