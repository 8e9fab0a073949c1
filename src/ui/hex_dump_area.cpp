#include "ui/hex_dump_area.h"

#include "ui/look.h"

#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStandardItemModel>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

constexpr std::array<const char*, kColumns> kTitles = {"Adr.", "Data (HEX)", "Data (ASCII)"};
constexpr std::array<int, kColumns> kDefaultWidths = {70, 381, 130}; // pixels
constexpr std::array<int, kColumns> kTextLengths = {8, 47, 16};
constexpr int kMargin = 3; // pixels between a column's edge and its text

// The request that a key or an action of the scroll bar stands for.
template <size_t Count>
std::optional<ScrollRequest> requestFor(const std::array<std::pair<int, ScrollRequest>, Count>& map,
                                        int code) {
    const auto found = std::ranges::find(map, code, &std::pair<int, ScrollRequest>::first);
    return found == map.end() ? std::nullopt : std::optional(found->second);
}

constexpr std::array<std::pair<int, ScrollRequest>, 6> kKeys = {{
    {Qt::Key_Up, ScrollRequest::lineUp},
    {Qt::Key_Down, ScrollRequest::lineDown},
    {Qt::Key_PageUp, ScrollRequest::pageUp},
    {Qt::Key_PageDown, ScrollRequest::pageDown},
    {Qt::Key_Home, ScrollRequest::top},
    {Qt::Key_End, ScrollRequest::bottom},
}};

constexpr std::array<std::pair<int, ScrollRequest>, 6> kActions = {{
    {QAbstractSlider::SliderSingleStepSub, ScrollRequest::lineUp},
    {QAbstractSlider::SliderSingleStepAdd, ScrollRequest::lineDown},
    {QAbstractSlider::SliderPageStepSub, ScrollRequest::pageUp},
    {QAbstractSlider::SliderPageStepAdd, ScrollRequest::pageDown},
    {QAbstractSlider::SliderToMinimum, ScrollRequest::top},
    {QAbstractSlider::SliderToMaximum, ScrollRequest::bottom},
}};

// How far Shift with a key moves the caret, in addresses; the ends of the data clip it.
int64_t caretStep(int key, int page) {
    constexpr int64_t kLine = kBytesPerRow;
    constexpr int64_t kAll = int64_t{1} << 32;
    switch (key) {
    case Qt::Key_Left:
        return -1;
    case Qt::Key_Right:
        return 1;
    case Qt::Key_Up:
        return -kLine;
    case Qt::Key_Down:
        return kLine;
    case Qt::Key_PageUp:
        return -kLine * page;
    case Qt::Key_PageDown:
        return kLine * page;
    case Qt::Key_Home:
        return -kAll;
    case Qt::Key_End:
        return kAll;
    default:
        return 0;
    }
}

} // namespace

HexDumpArea::HexDumpArea(QWidget* parent)
    : QAbstractScrollArea(parent), header_(new QHeaderView(Qt::Horizontal, this)),
      columns_(new ColumnFit(header_, viewport())) {
    setFont(LOOK_FixedFont());
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName("Hex dump");
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setCursor(Qt::IBeamCursor);
    auto* model = new QStandardItemModel(0, kColumns, header_);
    model->setHorizontalHeaderLabels({kTitles[kAddress], kTitles[kHex], kTitles[kCharacters]});
    header_->setModel(model);
    header_->setFont(LOOK_FixedFont());
    header_->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header_->setHighlightSections(false);
    connect(header_, &QHeaderView::sectionResized, this, [this] {
        layOut();
        viewport()->update();
    });
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this,
            [this](int action) { followScrollBar(action); });
    adaptColumns();
    refresh();
}

void HexDumpArea::refresh() {
    range_ = HEXDUMPVIEW_GetRange();
    if (selection_ && !range_.contains(selection_->range())) {
        selection_.reset();
    }
    layOut();
    viewport()->update();
}

DumpScroll HexDumpArea::scroll() const {
    DumpScroll scroll;
    scroll.position = verticalScrollBar()->value();
    scroll.page = std::max(viewport()->height() / lineHeight(), 1);
    scroll.maximum = static_cast<int>(HEXDUMPVIEW_NumLines(range_) - 1);
    return scroll;
}

uint32_t HexDumpArea::topAddress() const {
    return range_.start + static_cast<uint32_t>(verticalScrollBar()->value()) * kBytesPerRow;
}

// Header and scroll bars after a change of size, columns or data.
void HexDumpArea::layOut() {
    const int height = header_->sizeHint().height();
    setViewportMargins(0, height, 0, 0);
    const QRect area = viewport()->geometry();
    header_->setGeometry(area.x(), area.y() - height, area.width(), height);
    const DumpScroll vertical = scroll();
    verticalScrollBar()->setPageStep(vertical.page);
    verticalScrollBar()->setRange(0, DUMPSCROLL_Last(vertical));
    horizontalScrollBar()->setPageStep(area.width());
    horizontalScrollBar()->setSingleStep(static_cast<int>(charWidth()));
    horizontalScrollBar()->setRange(0, std::max(header_->length() - area.width(), 0));
    header_->setOffset(horizontalScrollBar()->value());
}

void HexDumpArea::resizeEvent(QResizeEvent*) {
    layOut();
}

void HexDumpArea::changeEvent(QEvent* event) {
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        adaptColumns();
        layOut();
    }
}

void HexDumpArea::scrollContentsBy(int, int) {
    header_->setOffset(horizontalScrollBar()->value());
    viewport()->update();
}

// The bar has proposed a position of its own by now; the dump's rule takes its place.
void HexDumpArea::followScrollBar(int action) {
    if (const auto request = requestFor(kActions, action)) {
        verticalScrollBar()->setSliderPosition(DUMPSCROLL_Move(scroll(), *request));
    }
}

void HexDumpArea::move(ScrollRequest request) {
    verticalScrollBar()->setValue(DUMPSCROLL_Move(scroll(), request));
}

void HexDumpArea::keyPressEvent(QKeyEvent* event) {
    const bool shift = event->modifiers().testFlag(Qt::ShiftModifier);
    if (shift && extendSelection(event->key())) {
        return;
    }
    if (const auto request = requestFor(kKeys, event->key())) {
        move(*request);
    } else if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        QAbstractScrollArea::keyPressEvent(event); // sideways
    } else {
        event->ignore();
    }
}

bool HexDumpArea::extendSelection(int key) {
    const int64_t step = caretStep(key, scroll().page);
    if (step == 0) {
        return false;
    }
    DumpSelection next = selection_.value_or(DumpSelection{topAddress(), topAddress()});
    if (selection_) {
        const int64_t target = int64_t{next.caret} + step;
        next.caret =
            static_cast<uint32_t>(std::clamp<int64_t>(target, range_.start, range_.last()));
    }
    select(next);
    return true;
}

void HexDumpArea::select(const DumpSelection& selection) {
    setSelection(selection);
    const auto line = static_cast<int>(HEXDUMPVIEW_LineOf(range_, selection.caret));
    verticalScrollBar()->setValue(DUMPSCROLL_Reveal(scroll(), line));
}

void HexDumpArea::setSelection(const DumpSelection& selection) {
    selection_ = selection;
    viewport()->update();
}

void HexDumpArea::selectAll() {
    setSelection({range_.start, range_.last()});
}

void HexDumpArea::showAtTop(uint32_t address) {
    verticalScrollBar()->setValue(static_cast<int>(HEXDUMPVIEW_LineOf(range_, address)));
}

QString HexDumpArea::selectedText() const {
    if (!selection_) {
        return {};
    }
    const auto copy = selection_->characters ? HEXDUMPVIEW_CopyCharacters : HEXDUMPVIEW_CopyHex;
    return QString::fromLatin1(copy(selection_->range()));
}

void HexDumpArea::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (selection_ && event->modifiers().testFlag(Qt::ShiftModifier)) {
        extendTo(event->position().toPoint());
    } else if (const auto pressed = hit(event->position().toPoint())) {
        setSelection(*pressed);
    } else {
        selection_.reset();
        viewport()->update();
    }
}

void HexDumpArea::mouseMoveEvent(QMouseEvent* event) {
    if (selection_ && event->buttons().testFlag(Qt::LeftButton)) {
        extendTo(event->position().toPoint());
    }
}

void HexDumpArea::extendTo(QPoint point) {
    DumpSelection extended = *selection_;
    extended.caret = addressAt(point, extended.characters);
    select(extended);
}

// What a press at a point selects: the one address there, none beside the data.
std::optional<DumpSelection> HexDumpArea::hit(QPoint point) const {
    const int column = header_->logicalIndexAt(point.x());
    const auto line = uint64_t(verticalScrollBar()->value()) + uint64_t(point.y() / lineHeight());
    if ((column != kHex && column != kCharacters) || line >= HEXDUMPVIEW_NumLines(range_)) {
        return std::nullopt;
    }
    const bool characters = column == kCharacters;
    const uint32_t address = addressAt(point, characters);
    return DumpSelection{address, address, characters};
}

// The address nearest to a point that need not lie inside.
uint32_t HexDumpArea::addressAt(QPoint point, bool characters) const {
    const double step = charWidth() * (characters ? 1 : 3);
    const int left = textLeft(characters ? kCharacters : kHex);
    const int cell = std::clamp(static_cast<int>((point.x() - left) / step), 0,
                                static_cast<int>(kBytesPerRow) - 1);
    const int row = point.y() < 0 ? -1 : point.y() / lineHeight();
    const int64_t line = std::max<int64_t>(int64_t{verticalScrollBar()->value()} + row, 0);
    const int64_t address = int64_t{range_.start} + line * kBytesPerRow + cell;
    return static_cast<uint32_t>(std::min<int64_t>(address, range_.last()));
}

// What the columns need for a whole line.
void HexDumpArea::adaptColumns() {
    std::vector<ColumnNeed> needs;
    for (int column = 0; column < kColumns; ++column) {
        const auto index = static_cast<size_t>(column);
        const int text = static_cast<int>(std::ceil(charWidth() * kTextLengths[index]));
        const int least = std::max(text + 2 * kMargin, header_->sectionSizeHint(column));
        needs.push_back({std::max(kDefaultWidths[index], least), least});
    }
    columns_->setNeeds(std::move(needs));
}

int HexDumpArea::lineHeight() const {
    return std::max(fontMetrics().height(), 1);
}

int HexDumpArea::textLeft(int column) const {
    return header_->sectionViewportPosition(column) + kMargin;
}
