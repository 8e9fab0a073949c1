// calvorin-icons: paints the program's icon as calvorin-SIZE.png into a folder, for the icon theme
// of the system. Not part of a usual build; run when the picture has changed.
#include "ui/artwork.h"

#include <QGuiApplication>
#include <QPixmap>

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const QString folder = argc == 2 ? QString(argv[1]) : QString(".");
    bool written = true;
    for (const int size : {32, 48, 64, 128, 256}) {
        const QPixmap picture = ART_Icon(Art::program).pixmap(QSize(size, size), 1.0);
        written &= picture.save(QString("%1/calvorin-%2.png").arg(folder).arg(size));
    }
    return written ? 0 : 1;
}
