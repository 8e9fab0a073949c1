#include "ui/column_fit.h"

#include <QEvent>
#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

std::vector<int> COLUMNFIT_Widths(std::span<const ColumnNeed> needs, int available) {
    int64_t wanted = 0;
    int64_t spare = 0;
    for (const ColumnNeed& need : needs) {
        wanted += need.wanted;
        spare += need.wanted - need.least;
    }
    const int64_t missing = std::clamp<int64_t>(wanted - available, 0, spare);
    std::vector<int> widths;
    for (const ColumnNeed& need : needs) {
        const int64_t own = need.wanted - need.least;
        // Rounded up, so that the sum is not too wide.
        const int64_t given = own == 0 ? 0 : (own * missing + spare - 1) / spare;
        widths.push_back(need.wanted - static_cast<int>(given));
    }
    return widths;
}

ColumnFit::ColumnFit(QHeaderView* header, QWidget* viewport)
    : QObject(header), header_(header), viewport_(viewport) {
    viewport->installEventFilter(this);
    connect(header, &QHeaderView::sectionResized, this, [this] {
        if (!resizing_) {
            isDefault_ = false;
        }
    });
}

void ColumnFit::setNeeds(std::vector<ColumnNeed> needs) {
    needs_ = std::move(needs);
    if (isDefault_) {
        fit();
    }
}

void ColumnFit::setStored(std::span<const int> widths) {
    isDefault_ = std::ranges::all_of(widths, [](int width) { return width <= 0; });
    if (isDefault_) {
        fit();
        return;
    }
    std::vector<int> all = COLUMNFIT_Widths(needs_, std::numeric_limits<int>::max());
    for (size_t index = 0; index < std::min(all.size(), widths.size()); ++index) {
        all[index] = widths[index] > 0 ? widths[index] : all[index];
    }
    resize(all);
}

std::vector<int> ColumnFit::toStore() const {
    std::vector<int> widths;
    widths.reserve(needs_.size());
    for (int index = 0; index < std::ssize(needs_); ++index) {
        widths.push_back(header_->sectionSize(index));
    }
    return widths;
}

bool ColumnFit::eventFilter(QObject* watched, QEvent* event) {
    const bool placed = event->type() == QEvent::Resize || event->type() == QEvent::Show;
    if (isDefault_ && placed) {
        fit();
    }
    return QObject::eventFilter(watched, event);
}

void ColumnFit::fit() {
    // A window that is not laid out yet has an arbitrary width.
    const int available =
        viewport_->isVisible() ? viewport_->width() : std::numeric_limits<int>::max();
    resize(COLUMNFIT_Widths(needs_, available));
}

void ColumnFit::resize(std::span<const int> widths) {
    const bool before = std::exchange(resizing_, true);
    for (size_t index = 0; index < widths.size(); ++index) {
        header_->resizeSection(static_cast<int>(index), widths[index]);
    }
    resizing_ = before;
}
