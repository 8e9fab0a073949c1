// The least that a desktop program of the toolkit can be: what scripts/bench_start.py compares the
// start of ours with.
#include <QApplication>
#include <QMainWindow>

int main(int argc, char* argv[]) {
    const QApplication application(argc, argv);
    QMainWindow window;
    window.resize(1280, 720);
    window.show();
    return QApplication::exec();
}
