#include "app/VantrelApp.h"

int main(int argc, char** argv)
{
#if QT_VERSION_MAJOR < 6
    // Qt 5 scales only if it is told so before the application object is built, and draws pictures from all
    // of their pixels only if it is told that, too. Qt 6 does both unasked.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
#endif
    QGuiApplication::setDesktopSettingsAware(true);

    VantrelApp app(argc, argv);
    return app.exec();
}
