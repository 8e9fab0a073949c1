#include "ui/view_windows.h"

#include "notice/log.h"
#include "persist/ini.h"
#include "shell/image_origin.h"
#include "shell/program_files.h"
#include "ui/placement.h"
#include "ui/view_specs.h"

#include <QCloseEvent>
#include <QMdiSubWindow>
#include <QMenu>
#include <QStyle>
#include <algorithm>
#include <array>
#include <optional>
#include <span>

namespace {

constexpr size_t kMaxColumns = 6;
constexpr char kRectKey[] = "Rect";
constexpr char kHeaderKey[] = "Header";

const ViewSpec& specOf(View view) {
    return VIEWSPECS_All()[static_cast<size_t>(view)];
}

void storePlace(const ViewSpec& spec, const QRect& place) {
    const int32_t rect[4] = {place.x(), place.y(), place.width(), place.height()};
    INI_WriteRect(spec.section, kRectKey, rect);
}

void storeColumns(const ViewSpec& spec, const ViewWidget& widget) {
    const std::vector<int> widths = widget.columnWidths();
    if (!widths.empty()) {
        INI_WriteIntArray(spec.section, kHeaderKey,
                          std::vector<int32_t>(widths.begin(), widths.end()));
    }
}

// None: the view stands at its standard place.
std::optional<QRect> storedPlacement(const ViewSpec& spec) {
    int32_t rect[4] = {0, 0, 0, 0};
    INI_ReadRect(spec.section, kRectKey, rect);
    const bool stored = std::any_of(rect, rect + 4, [](int32_t value) { return value != 0; });
    return stored ? std::optional(QRect(rect[0], rect[1], rect[2], rect[3])) : std::nullopt;
}

std::vector<int> storedWidths(const ViewSpec& spec) {
    std::array<int32_t, kMaxColumns> widths{};
    INI_ReadIntArray(spec.section, kHeaderKey, std::span(widths).first(spec.columns));
    return {widths.begin(), widths.begin() + static_cast<ptrdiff_t>(spec.columns)};
}

// Ctrl+F4 closes a view on every desktop, and Ctrl+W is a character for the target.
void setCloseKey(const QMenu& menu) {
    for (QAction* action : menu.actions()) {
        if (action->shortcuts() == QKeySequence::keyBindings(QKeySequence::Close)) {
            action->setShortcut(QKeySequence("Ctrl+F4"));
        }
    }
}

class ViewWindow : public QMdiSubWindow {
public:
    explicit ViewWindow(const ViewSpec& spec) : spec_(spec) {
        setWindowIcon(ART_Icon(spec.icon));
        setAttribute(Qt::WA_DeleteOnClose);
        setCloseKey(*systemMenu());
        widget_ = spec.create(this);
        setWidget(widget_);
        if (spec.columns > 0) {
            widget_->setColumnWidths(storedWidths(spec));
        }
        connect(this, &QMdiSubWindow::windowStateChanged, this,
                [this](Qt::WindowStates before, Qt::WindowStates now) {
                    if ((now & ~before).testFlag(Qt::WindowActive)) {
                        widget_->activated();
                    }
                });
    }

    ViewWidget& view() { return *widget_; }

    void store() const {
        if (isPlaced_ && isNormal()) {
            storePlace(spec_, geometry());
        }
        storeColumns(spec_, *widget_);
    }

    // Takes the stored place or else the standard one.
    void placeFirst();
    void followArea();

protected:
    void closeEvent(QCloseEvent* event) override; // the user closes it

    void moveEvent(QMoveEvent* event) override {
        QMdiSubWindow::moveEvent(event);
        noteShare();
    }

    void resizeEvent(QResizeEvent* event) override {
        QMdiSubWindow::resizeEvent(event);
        noteShare();
    }

private:
    bool isNormal() const { return !isMaximized() && !isMinimized(); }
    void noteShare();

    const ViewSpec& spec_;
    ViewWidget* widget_ = nullptr;
    QRectF share_;          // of the area
    bool isPlaced_ = false; // by the user, not at its standard place
    bool follows_ = false;  // its place is being set
};

QMdiArea* area = nullptr;

// Before it is laid out the area tells no size of its own.
bool isLaidOut() {
    return area != nullptr && area->isVisible();
}

// A place that the user, or an arrangement that he chose, gives.
void ViewWindow::noteShare() {
    if (!follows_ && isLaidOut() && isNormal()) {
        share_ = PLACEMENT_Share(geometry(), area->viewport()->size());
        isPlaced_ = true;
    }
}

void ViewWindow::placeFirst() {
    const std::optional<QRect> stored = storedPlacement(spec_);
    isPlaced_ = stored.has_value();
    share_ = isPlaced_ ? QRectF() : PLACEMENT_Share(spec_.placement, kViewSpecArea);
    follows_ = true;
    if (stored) {
        setGeometry(isLaidOut() ? PLACEMENT_BroughtBack(*stored, area->viewport()->rect())
                                : *stored);
    } else {
        setGeometry(PLACEMENT_OfShare(share_, area->viewport()->size()));
    }
    follows_ = false;
}

void ViewWindow::followArea() {
    if (share_.isNull()) { // stored when the area was as large as it is now
        share_ = PLACEMENT_Share(geometry(), area->viewport()->size());
    } else if (isNormal()) {
        follows_ = true;
        setGeometry(PLACEMENT_OfShare(share_, area->viewport()->size()));
        follows_ = false;
    }
}
std::array<ViewWindow*, kViews> windows{};
std::function<void()> whenDataViewsClosed;

ViewWindow*& windowOf(View view) {
    return windows[static_cast<size_t>(view)];
}

void reportClosed(const ViewSpec& spec) {
    if (spec.showsData && !VIEWS_IsOpen(View::hexList) && !VIEWS_IsOpen(View::hexDump)) {
        whenDataViewsClosed();
    }
}

// The last view of the data takes the data with it.
bool mayClose(const ViewSpec& spec) {
    const bool isLast = !VIEWS_IsOpen(View::hexList) || !VIEWS_IsOpen(View::hexDump);
    return !spec.showsData || !isLast || PROGRAM_MayLoseChanges();
}

void ViewWindow::closeEvent(QCloseEvent* event) {
    if (!mayClose(spec_)) {
        event->ignore();
        return;
    }
    store();
    windowOf(spec_.view) = nullptr;
    QMdiSubWindow::closeEvent(event);
    reportClosed(spec_);
}

QString presentTitle(const ViewSpec& spec) {
    const std::string image = ORIGIN_Text();
    return spec.showsData && !image.empty() ? QString::fromStdString(image) : QString(spec.title);
}

// Takes the window away without the consequences that a closed data view has.
void removeWindow(View view) {
    ViewWindow* window = windowOf(view);
    windowOf(view) = nullptr;
    window->hide();
    area->removeSubWindow(window);
    delete window;
}

QMdiSubWindow* createWindow(const ViewSpec& spec) {
    auto* window = new ViewWindow(spec);
    windowOf(spec.view) = window;
    area->addSubWindow(window);
    window->placeFirst();
    window->view().setFocus(); // else the first child gets it, which may be a label
    window->show();
    if (spec.view == View::log) {
        LOG_RestartClock();
        LOG_Add("Logging started...");
    }
    return window;
}

// From the back to the front.
std::vector<QMdiSubWindow*> shownWindows() {
    std::vector<QMdiSubWindow*> shown;
    for (QMdiSubWindow* window : area->subWindowList(QMdiArea::StackingOrder)) {
        if (window->isVisible() && !window->isMinimized()) {
            shown.push_back(window);
        }
    }
    return shown;
}

void arrange(std::span<QMdiSubWindow* const> shown, std::span<const QRect> places) {
    for (size_t index = 0; index < shown.size(); ++index) {
        shown[index]->showNormal();
        shown[index]->setGeometry(places[index]);
    }
}

} // namespace

void VIEWS_Init(QMdiArea* newArea, std::function<void()> dataViewsClosed) {
    area = newArea;
    whenDataViewsClosed = std::move(dataViewsClosed);
}

void VIEWS_Exit() {
    area = nullptr;
    windows = {};
}

void VIEWS_Open(View view) {
    const ViewSpec& spec = specOf(view);
    QMdiSubWindow* window = windowOf(view);
    if (window == nullptr) {
        window = createWindow(spec);
    }
    window->setWindowTitle(presentTitle(spec));
    if (window->isMinimized()) {
        window->showNormal();
    }
    area->setActiveSubWindow(window);
}

void VIEWS_RefreshTitles() {
    for (const ViewSpec& spec : VIEWSPECS_All()) {
        if (ViewWindow* window = windowOf(spec.view)) {
            window->setWindowTitle(presentTitle(spec));
        }
    }
}

void VIEWS_Close(View view) {
    if (windowOf(view) == nullptr) {
        return;
    }
    windowOf(view)->store();
    removeWindow(view);
    reportClosed(specOf(view));
}

bool VIEWS_IsOpen(View view) {
    return windowOf(view) != nullptr;
}

void VIEWS_Refresh(View view) {
    if (ViewWindow* window = windowOf(view)) {
        window->view().refresh();
    }
}

void VIEWS_ShowBytes(const AddressRange& range) {
    if (ViewWindow* window = windowOf(View::hexDump)) {
        window->view().showBytes(range);
    }
}

void VIEWS_StoreAll() {
    for (const ViewWindow* window : windows) {
        if (window != nullptr) {
            window->store();
        }
    }
}

void VIEWS_BringBack() {
    for (ViewWindow* window : windows) {
        if (window != nullptr && !window->isMaximized() && !window->isMinimized()) {
            const QRect place = window->geometry();
            const QRect back = PLACEMENT_BroughtBack(place, area->viewport()->rect());
            if (back != place) {
                window->setGeometry(back);
            }
        }
    }
}

void VIEWS_FollowArea() {
    for (ViewWindow* window : windows) {
        if (window != nullptr && isLaidOut()) {
            window->followArea();
        }
    }
}

// The window in front comes last, so that every title bar is seen.
void VIEWS_Cascade() {
    const std::vector<QMdiSubWindow*> shown = shownWindows();
    const int step = area->style()->pixelMetric(QStyle::PM_TitleBarHeight);
    arrange(shown,
            PLACEMENT_Cascade(static_cast<int>(shown.size()), area->viewport()->size(), step));
}

// The window in front gets the first tile.
void VIEWS_Tile(bool wide) {
    std::vector<QMdiSubWindow*> shown = shownWindows();
    std::ranges::reverse(shown);
    arrange(shown, PLACEMENT_Tiles(static_cast<int>(shown.size()), area->viewport()->size(), wide));
}

void VIEWS_RestoreDefault() {
    for (const ViewSpec& spec : VIEWSPECS_All()) {
        const bool wasOpen = VIEWS_IsOpen(spec.view);
        const QString title = wasOpen ? windowOf(spec.view)->windowTitle() : QString();
        if (wasOpen) {
            removeWindow(spec.view);
        }
        INI_DeleteKey(spec.section, kRectKey);
        INI_DeleteKey(spec.section, kHeaderKey);
        if (wasOpen) {
            createWindow(spec)->setWindowTitle(title);
        }
    }
}
