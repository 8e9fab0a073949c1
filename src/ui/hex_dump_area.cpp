#include "ui/hex_dump_area.h"

#include "shell/edit_history.h"
#include "shell/edit_place.h"
#include "ui/look.h"

#include <QEvent>
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

constexpr std::array<std::pair<int, ScrollRequest>, 6> kActions = {{
    {QAbstractSlider::SliderSingleStepSub, ScrollRequest::lineUp},
    {QAbstractSlider::SliderSingleStepAdd, ScrollRequest::lineDown},
    {QAbstractSlider::SliderPageStepSub, ScrollRequest::pageUp},
    {QAbstractSlider::SliderPageStepAdd, ScrollRequest::pageDown},
    {QAbstractSlider::SliderToMinimum, ScrollRequest::top},
    {QAbstractSlider::SliderToMaximum, ScrollRequest::bottom},
}};

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

HexDumpArea::~HexDumpArea() {
    EDITPLACE_Set(std::nullopt);
}

void HexDumpArea::refresh() {
    range_ = HEXDUMPVIEW_GetRange();
    if (selection_ && !range_.contains(selection_->range())) {
        selection_.reset();
    }
    caret_ = {std::clamp(caret_.address, range_.start, range_.last()), caret_.characters};
    layOut();
    viewport()->update();
    tellPlace();
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

void HexDumpArea::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    viewport()->update();
}

void HexDumpArea::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    viewport()->update();
}

void HexDumpArea::scrollContentsBy(int, int) {
    header_->setOffset(horizontalScrollBar()->value());
    viewport()->update();
}

// The bar has proposed a position of its own by now; the dump's rule takes its place.
void HexDumpArea::followScrollBar(int action) {
    const auto found = std::ranges::find(kActions, action, &std::pair<int, ScrollRequest>::first);
    if (found != kActions.end()) {
        verticalScrollBar()->setSliderPosition(DUMPSCROLL_Move(scroll(), found->second));
    }
}

void HexDumpArea::move(ScrollRequest request) {
    verticalScrollBar()->setValue(DUMPSCROLL_Move(scroll(), request));
}

void HexDumpArea::select(const DumpSelection& selection) {
    setSelection(selection);
    reveal(selection.caret);
}

void HexDumpArea::reveal(uint32_t address) {
    const uint32_t line = HEXDUMPVIEW_LineOf(range_, address);
    verticalScrollBar()->setValue(DUMPSCROLL_Reveal(scroll(), static_cast<int>(line)));
    const QRectF cell = cells(caret_.characters ? kCharacters : kHex, AddressRange::of(address, 1),
                              range_.start + line * kBytesPerRow, 0);
    const double right = std::max(cell.right() + kMargin - viewport()->width(), 0.0);
    const double left = std::min(cell.left() - kMargin, 0.0);
    QScrollBar& sideways = *horizontalScrollBar();
    sideways.setValue(sideways.value() + static_cast<int>(std::ceil(right) + std::floor(left)));
}

void HexDumpArea::setSelection(const DumpSelection& selection) {
    selection_ = selection;
    moveCaret({selection.caret, selection.characters});
}

void HexDumpArea::deselect() {
    selection_.reset();
    moveCaret(caret_);
}

void HexDumpArea::placeCaret(uint32_t address) {
    selection_.reset();
    moveCaret({address, caret_.characters});
    reveal(address);
}

void HexDumpArea::moveCaret(const DumpCaret& caret) {
    HISTORY_EndTyping();
    caret_ = caret;
    viewport()->update();
    tellPlace();
}

void HexDumpArea::tellPlace() {
    if (HEXDATA_IsEmpty()) {
        EDITPLACE_Set(std::nullopt);
        setAccessibleDescription({});
        return;
    }
    const AddressRange selected = selection_ ? selection_->range() : AddressRange();
    const EditPlace place{selection_ ? selected.start : caret_.address, selected};
    EDITPLACE_Set(place);
    setAccessibleDescription(QString::fromStdString(EDITPLACE_Text(place)));
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
    if (event->button() == Qt::RightButton) { // the menu is about what is under it
        const auto pressed = hit(event->position().toPoint());
        if (pressed && !(selection_ && selection_->range().contains(pressed->caret))) {
            setSelection(*pressed);
        }
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (selection_ && event->modifiers().testFlag(Qt::ShiftModifier)) {
        extendTo(event->position().toPoint());
    } else if (const auto pressed = hit(event->position().toPoint())) {
        setSelection(*pressed);
    } else {
        deselect();
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
