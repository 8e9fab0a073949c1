// Every window as tests/data/windows.txt describes it: what is altered or lost by mistake shows as
// a difference. With CALVORIN_WINDOWS=PATH the description is written there, to be read like any
// change.
#include "desktop_world.h"
#include "dialog_world.h"
#include "platform/format.h"

#include <QFormLayout>
#include <QLayout>
#include <QMenu>
#include <QMetaProperty>
#include <QSplitter>
#include <QTextBrowser>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <set>

namespace {

// Not what depends on fonts, the screen, the machine's ports or other properties: its ends.
bool isTold(const std::string& property) {
    constexpr const char* kEnds[] = {
        "idth",        "eight",      "focus",        "ctive",       "Window",         "ount",
        "visible",     "objectName", "iconText",     "html",        "markdown",       "Available",
        "displayText", "plainText",  "currentText",  "currentData", "windowModality", "Position",
        "floating",    "windowIcon", "documentTitle"};
    return property.size() > 1 && std::ranges::none_of(kEnds, [&property](const char* end) {
               return property.ends_with(end);
           });
}

// Objects of the toolkit's kinds as they are made.
struct Prototypes {
    template <class... Kinds>
    static std::map<std::string, std::shared_ptr<QObject>> make() {
        return {{Kinds::staticMetaObject.className(), std::make_shared<Kinds>()}...};
    }
    std::map<std::string, std::shared_ptr<QObject>> kinds =
        make<QWidget, QFrame, QLabel, QPushButton, QToolButton, QCheckBox, QLineEdit, QComboBox,
             QListWidget, QListView, QTableView, QTreeWidget, QPlainTextEdit, QTextBrowser,
             QTabWidget, QDialog, QDialogButtonBox, QSplitter, QMenu, QToolBar, QMdiSubWindow,
             QAction, QMdiArea, QMainWindow, QVBoxLayout, QHBoxLayout, QGridLayout, QFormLayout>();
};

class Description {
public:
    void addWindow(const char* title, const QWidget& window) {
        text_ += std::string("\n") + title + "\n";
        addWidget(window, 1);
    }
    const std::string& text() const { return text_; }

private:
    void addWidget(const QWidget& widget, int depth) {
        addObject(widget, depth,
                  std::string(widget.isHidden() ? " hidden" : "") +
                      (widget.testAttribute(Qt::WA_SetWindowIcon) ? " picture" : "") +
                      (widget.testAttribute(Qt::WA_DeleteOnClose) ? " once" : "") +
                      (widget.minimumWidth() > 0 ? " not narrow" : "") +
                      (widget.minimumHeight() > 0 ? " not low" : "") +
                      (widget.maximumWidth() < QWIDGETSIZE_MAX ? " not wide" : "") + " " +
                      std::to_string(widget.backgroundRole()) + " " +
                      std::to_string(widget.foregroundRole()));
        if (const QLayout* layout = widget.layout()) {
            addLayout(*layout, depth + 1);
        }
        addActions(widget.actions(), depth + 1, widget.inherits("QMdiSubWindow"));
        for (const QObject* child : widget.children()) {
            const auto* part = qobject_cast<const QWidget*>(child);
            if (part != nullptr && !part->isWindow() && !isInner(widget, *part)) {
                addWidget(*part, depth + 1);
            }
        }
    }

    // A part that the toolkit makes.
    static bool isInner(const QWidget& whole, const QWidget& part) {
        const std::string kind = part.metaObject()->className();
        return (part.objectName().startsWith("qt_") && !whole.inherits("QTabWidget")) ||
               whole.inherits("QComboBox") || whole.inherits("QTabBar") || kind == "QSizeGrip" ||
               kind == "QTableCornerButton" || kind == "QLineEditIconButton";
    }

    void addActions(const QList<QAction*>& actions, int depth, bool ofToolkit = false) {
        for (const QAction* action : actions) {
            const bool isOwn = !ofToolkit || action->shortcut().toString() == "Ctrl+F4";
            if (isOwn && told_.insert(action).second) {
                addObject(*action, depth, "");
                if (action->menu() != nullptr) {
                    addActions(action->menu()->actions(), depth + 1);
                }
            }
        }
    }

    void addLayout(const QLayout& layout, int depth) {
        std::string more = " of " + std::to_string(layout.count());
        if (const auto* box = qobject_cast<const QBoxLayout*>(&layout)) {
            for (int index = 0; index < box->count(); ++index) {
                more += box->itemAt(index)->spacerItem() != nullptr
                            ? " |"
                            : " " + std::to_string(box->stretch(index));
            }
        }
        addObject(layout, depth, more);
        for (int index = 0; index < layout.count(); ++index) {
            if (const QLayout* inner = layout.itemAt(index)->layout()) {
                addLayout(*inner, depth + 1);
            }
        }
    }

    void addObject(const QObject& object, int depth, const std::string& more) {
        const auto prototype = prototypes_.kinds.find(object.metaObject()->className());
        text_.append(static_cast<size_t>(depth), ' ');
        text_ += object.metaObject()->className();
        text_ +=
            (object.objectName().isEmpty() ? "" : " " + object.objectName().toStdString()) + more;
        if (const auto* label = qobject_cast<const QLabel*>(&object);
            label != nullptr && label->buddy() != nullptr) {
            text_ += " of " + label->buddy()->objectName().toStdString();
        }
        for (int index = 0;
             prototype != prototypes_.kinds.end() && index < object.metaObject()->propertyCount();
             ++index) {
            const QMetaProperty property = object.metaObject()->property(index);
            const QVariant value = property.read(&object);
            if (isTold(property.name()) && value != property.read(prototype->second.get())) {
                addValue(property, value);
            }
        }
        text_ += '\n';
    }

    void addValue(const QMetaProperty& property, const QVariant& value) {
        std::string told;
        if (property.isEnumType()) {
            told = std::to_string(value.toInt());
        } else if (value.typeId() == QMetaType::QIcon) {
            told = value.value<QIcon>().isNull() ? "" : "yes";
        } else if (value.typeId() == QMetaType::QFont) {
            told = value.value<QFont>().bold() ? "bold" : "";
        } else if (value.metaType() == QMetaType::fromType<QMargins>()) {
            const auto margins = value.value<QMargins>();
            told = formatText("%d,%d,%d,%d", margins.left(), margins.top(), margins.right(),
                              margins.bottom());
        } else if (value.typeId() == QMetaType::QKeySequence ||
                   value.typeId() == QMetaType::QString || value.typeId() == QMetaType::Int ||
                   value.typeId() == QMetaType::Bool || value.typeId() == QMetaType::Double) {
            told = value.toString().replace('\n', "\\n").toStdString();
        }
        if (!told.empty()) {
            text_ += std::string(" ") + property.name() + "=" + told;
        }
    }

    Prototypes prototypes_;
    std::set<const QAction*> told_;
    std::string text_;
};

} // namespace

TEST(Windows, AreAsDescribed) {
    const std::string kPorts = "[Settings PORTS]\nCOM1 = \"tcp://one:1\"\n";
    Description description;
    {
        UiWorld world(kPorts);
        selectVtB();
        SESSION_Get().loaded = true;
        const std::pair<const char*, Dialog> dialogs[] = {{"Target", DIALOG_Target},
                                                          {"Settings", DIALOG_Settings},
                                                          {"Communication", DIALOG_Communication},
                                                          {"Password", DIALOG_Password},
                                                          {"Vectors", DIALOG_InterruptVectors},
                                                          {"Options", DIALOG_Options}};
        for (const auto& [title, dialog] : dialogs) {
            drive(dialog, [&, title = title](const QDialog& shown) {
                description.addWindow(title, shown);
            });
        }
        ValueRequest request;
        request.label0 = "First:";
        request.label1 = "Second:";
        request.bytesLabel = "Bytes:";
        driveDialog([&] { return DIALOG_EditValue(nullptr, request); },
                    [&](const QDialog& shown) { description.addWindow("Value", shown); });
        driveDialog([] { DIALOG_About(nullptr); },
                    [&](const QDialog& shown) {
                        control<QLabel>(shown, "322").clear();
                        control<QLabel>(shown, "323").clear();
                        description.addWindow("About", shown);
                    });
    }
    DesktopWorld world(kPorts);
    DesktopWorld::open(
        {View::log, View::device, View::terminal, View::hexDump, View::hexList, View::memoryMap});
    FRONTEND_Get().helpOnHelp();
    FRONTEND_Get().setTitle("without the version");
    description.addWindow("Frame", world.frame());
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "HELP") {
            description.addWindow("Help", *window);
        }
    }
    description.addWindow("Progress", control<QDialog>(world.frame(), "900"));
    if (const char* path = std::getenv("CALVORIN_WINDOWS")) {
        writeFile(path, description.text());
    }
    EXPECT_EQ(description.text(), readFile(builtFolder() / "windows.txt"));
}
