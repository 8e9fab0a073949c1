// Every window and picture as tests/data/windows.txt describes it: what is altered or lost by
// mistake is a difference. With CALVORIN_WINDOWS=PATH it is written there, to be read like any
// change.
#include "desktop_world.h"
#include "dialog_world.h"
#include "ui/artwork.h"

#include <QFormLayout>
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
    return property.size() > 1 &&
           std::ranges::none_of(kEnds, [&](const char* end) { return property.ends_with(end); });
}

// Objects of the toolkit's kinds as they are made.
using Prototypes = std::map<std::string, std::shared_ptr<QObject>>;
template <class... Kinds>
Prototypes prototypes() {
    return {{Kinds::staticMetaObject.className(), std::make_shared<Kinds>()}...};
}

std::string toldOf(const QMetaProperty& property, const QVariant& value) {
    switch (property.isEnumType() ? int{QMetaType::Int} : value.typeId()) {
    case QMetaType::QIcon:
        return value.value<QIcon>().isNull() ? "" : "yes";
    case QMetaType::QFont:
        return value.value<QFont>().bold() ? "bold" : "";
    case QMetaType::Int:
        return std::to_string(value.toInt());
    default:
        if (value.metaType() == QMetaType::fromType<QMargins>()) {
            const auto margins = value.value<QMargins>();
            return std::to_string(margins.left()) + "," + std::to_string(margins.top());
        }
        return value.toString().replace('\n', "\\n").toStdString();
    }
}

class Description {
public:
    void addWindow(const QString& title, const QWidget& window) {
        text += "\n" + title.toStdString() + "\n";
        addWidget(window, 1);
    }

    // How many thousandths of it have exactly a colour; soft edges are left out.
    void addPicture(int number, const QImage& picture) {
        std::map<QRgb, int> shares;
        for (int at = 0; at < picture.width() * picture.height(); ++at) {
            ++shares[picture.pixel(at % picture.width(), at / picture.width())];
        }
        text += "\nPicture " + std::to_string(number) + (shares.size() > 20 ? " smooth" : "");
        for (const auto& [colour, count] : shares) {
            if (const auto share = int64_t{1000} * count / picture.sizeInBytes() * 4; share >= 12) {
                text += " " + QColor::fromRgba(colour).name(QColor::HexArgb).toStdString() + "=" +
                        std::to_string(share);
            }
        }
    }

    std::string text;

private:
    void addWidget(const QWidget& widget, int depth) {
        std::string more;
        const auto note = [&more](bool holds, const char* word) { more += holds ? word : ""; };
        note(widget.isHidden(), " hidden");
        note(widget.testAttribute(Qt::WA_SetWindowIcon), " picture");
        note(widget.testAttribute(Qt::WA_DeleteOnClose), " once");
        note(widget.minimumWidth() > 0, " not narrow");
        note(widget.minimumHeight() > 0, " not low");
        note(widget.maximumWidth() < QWIDGETSIZE_MAX, " not wide");
        const auto* label = qobject_cast<const QLabel*>(&widget);
        if (label != nullptr && label->buddy() != nullptr) {
            more += " of " + label->buddy()->objectName().toStdString();
        }
        addObject(widget, depth, more + " " + std::to_string(widget.backgroundRole()));
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
        const auto* box = qobject_cast<const QBoxLayout*>(&layout);
        for (int index = 0; box != nullptr && index < box->count(); ++index) {
            const bool isSpace = box->itemAt(index)->spacerItem() != nullptr;
            more += isSpace ? " |" : " " + std::to_string(box->stretch(index));
        }
        addObject(layout, depth, more);
        for (int index = 0; index < layout.count(); ++index) {
            if (const QLayout* inner = layout.itemAt(index)->layout()) {
                addLayout(*inner, depth + 1);
            }
        }
    }

    void addObject(const QObject& object, int depth, const std::string& more) {
        const QMetaObject& kind = *object.metaObject();
        const std::string name = object.objectName().toStdString();
        text += std::string(static_cast<size_t>(depth), ' ') + kind.className() +
                (name.empty() ? "" : " " + name) + more;
        const auto prototype = prototypes_.find(kind.className());
        const int count = prototype == prototypes_.end() ? 0 : kind.propertyCount();
        for (int index = 0; index < count; ++index) {
            const QMetaProperty property = kind.property(index);
            const QVariant value = property.read(&object);
            const bool differs = value != property.read(prototype->second.get());
            const std::string told = differs ? toldOf(property, value) : "";
            text += isTold(property.name()) && !told.empty()
                        ? std::string(" ") + property.name() + "=" + told
                        : "";
        }
        text += '\n';
    }

    const Prototypes prototypes_ =
        prototypes<QWidget, QFrame, QLabel, QPushButton, QToolButton, QCheckBox, QLineEdit,
                   QComboBox, QListWidget, QListView, QTableView, QTreeWidget, QPlainTextEdit,
                   QTextBrowser, QTabWidget, QDialog, QDialogButtonBox, QSplitter, QMenu, QToolBar,
                   QMdiSubWindow, QAction, QMdiArea, QMainWindow, QVBoxLayout, QHBoxLayout,
                   QGridLayout, QFormLayout>();
    std::set<const QAction*> told_;
};

void describePictures(Description& description) {
    for (int number = 0; number <= static_cast<int>(Art::cancel); ++number) {
        const QIcon icon = ART_Icon(static_cast<Art>(number));
        QImage picture(128, 148, QImage::Format_ARGB32);
        picture.fill(Qt::white);
        QPainter painter(&picture);
        icon.paint(&painter, 0, 20, 128, 128);
        description.addPicture(number, picture.copy(0, 20, 128, 128));
        const auto mode = static_cast<QIcon::Mode>(number % 2);
        description.addPicture(number, icon.pixmap({64, 64}, mode).toImage());
    }
    QImage logo(150, 256, QImage::Format_ARGB32);
    logo.fill(Qt::white);
    QPainter painter(&logo);
    ART_PaintLogo(painter, logo.rect(), QPalette(Qt::red, Qt::white));
    description.addPicture(99, logo);
}

} // namespace

TEST(Windows, AreAsDescribed) {
    const std::string kPorts = "[Settings PORTS]\nCOM1 = \"tcp://one:1\"\n";
    Description description;
    description.text = std::string("Qt ") + qVersion() + "\n";
    {
        UiWorld world(kPorts);
        forEachDialog([&description](QDialog& shown) {
            for (const char* ofTheDay : {"322", "323"}) {
                if (auto* label = shown.findChild<QLabel*>(ofTheDay)) {
                    label->clear();
                }
            }
            description.addWindow(shown.windowTitle(), shown);
        });
    }
    DesktopWorld world(kPorts);
    DesktopWorld::open(
        {View::log, View::device, View::terminal, View::hexDump, View::hexList, View::memoryMap});
    FRONTEND_Get().helpOnHelp();
    FRONTEND_Get().setTitle("without the version");
    description.addWindow("Frame", world.frame());
    description.addWindow("Help", *world.help());
    description.addWindow("Progress", control<QDialog>(world.frame(), "900"));
    describePictures(description);
    if (const char* path = std::getenv("CALVORIN_WINDOWS")) {
        writeFile(path, description.text);
    }
    const std::string described = readFile(builtFolder() / "windows.txt");
    if (const size_t end = described.find('\n');
        !description.text.starts_with(described.substr(0, end + 1))) {
        GTEST_SKIP() << "the windows are described as " << described.substr(0, end)
                     << " makes them";
    }
    EXPECT_EQ(description.text, described);
}
