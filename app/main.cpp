#include "app/VantrelApp.h"

int main(int argc, char** argv)
{
#if QT_VERSION_MAJOR < 6
    // Without the first attribute, Qt 5 does not scale the windows; without the second, it does not draw
    // pictures with all their pixels. The first one has to be set before the application object exists. Qt 6
    // always does both.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
#endif
    QGuiApplication::setDesktopSettingsAware(true);

    VantrelApp app(argc, argv);
    return app.exec();
}
