// The program's own pictures, painted at the size in which they are shown. User-interface thread.
#pragma once

#include <QIcon>
#include <QPainter>
#include <QPalette>

enum class Art {
    program,
    hexList,
    hexDump,
    log,
    device,
    terminal,
    memoryMap,
    help,
    // of the tool bar
    open,
    toAuto,
    toChip,
    verify,
    fromChip,
    erase,
    cancel,
};

QIcon ART_Icon(Art art);
// The emblem and the name under it, centred in `area`, in the colours of the palette.
void ART_PaintLogo(QPainter& painter, const QRect& area, const QPalette& palette);
