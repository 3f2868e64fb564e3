#include <QApplication>
#include <QMainWindow>
#include <QStatusBar>

// The floor of a start: an empty main window with a status bar.
int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QMainWindow window;
    window.setWindowTitle("Empty window");
    window.statusBar();
    window.show();
    return app.exec();
}
