// Columns at their default widths give way to a narrow window, as far as no text is cut, until the
// user gives one a width of his own.
#pragma once

#include <QHeaderView>
#include <QObject>
#include <span>
#include <vector>

// Pixels. `least` is what the column's texts need.
struct ColumnNeed {
    int wanted = 0;
    int least = 0;
};

// The wanted widths; where they are wider than what is available, all give up the same part of
// what they can spare.
std::vector<int> COLUMNFIT_Widths(std::span<const ColumnNeed> needs, int available);

// Sets the widths of a header's columns. The header owns it.
class ColumnFit : public QObject {
public:
    // `viewport` is as wide as there is room for the columns; it counts from when it is shown.
    ColumnFit(QHeaderView* header, QWidget* viewport);

    void setNeeds(std::vector<ColumnNeed> needs);
    // Widths that were stored; 0, or one that is missing, stands for the default.
    void setStored(std::span<const int> widths);
    // The widths as they are now.
    std::vector<int> toStore() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fit();
    void resize(std::span<const int> widths);

    QHeaderView* header_;
    QWidget* viewport_;
    std::vector<ColumnNeed> needs_;
    bool isDefault_ = true;
    bool resizing_ = false;
};
