// What the views of the frame are: a row each, in the order of their enumeration.
#pragma once

#include "shell/front_end.h"
#include "ui/artwork.h"
#include "ui/view_widget.h"

#include <QRect>
#include <array>

struct ViewSpec {
    View view;
    const char* section;
    const char* title;
    QRect placement; // standard, in an area of kViewSpecArea
    size_t columns;
    bool showsData;
    Art icon;
    ViewWidget* (*create)(QWidget*);
};

inline constexpr QSize kViewSpecArea(792, 534); // pixels
inline constexpr size_t kViews = 6;

const std::array<ViewSpec, kViews>& VIEWSPECS_All();
