// What a view window of the frame asks of the widget that fills it. The window remembers placement
// and column widths; the widget shows rows that are made below the user interface.
#pragma once

#include "data/address_range.h"

#include <QWidget>
#include <vector>

class ViewWidget : public QWidget {
public:
    using QWidget::QWidget;
    // Shows the present state of what the view is about.
    virtual void refresh() = 0;
    // Widths of the columns in pixels, for the settings: 0 for all while the user has changed none;
    // empty for a view without columns.
    virtual std::vector<int> columnWidths() const { return {}; }
    // The window has been activated, with the focus where it was last.
    virtual void activated() {}
    // As FrontEnd::showBytes.
    virtual void showBytes(const AddressRange&) {}
    // Takes stored widths; 0 stands for a column's default.
    virtual void setColumnWidths(const std::vector<int>&) {}
};

// The widgets of the views. The parent owns them.
ViewWidget* HEXLISTVIEW_Create(QWidget* parent);
ViewWidget* HEXDUMPVIEW_Create(QWidget* parent);
ViewWidget* DEVICEVIEW_Create(QWidget* parent);
ViewWidget* LOGVIEW_Create(QWidget* parent);
ViewWidget* TERMINALVIEW_Create(QWidget* parent);
ViewWidget* MEMORYMAPVIEW_Create(QWidget* parent);
