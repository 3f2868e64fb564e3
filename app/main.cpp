#include "app/VantrelApp.h"

int main(int argc, char** argv)
{
#if QT_VERSION_MAJOR < 6
    // Qt reads these attributes while the application object is being built; Qt 6 always scales, and draws
    // pictures from all of their pixels.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, true);
#endif
    QGuiApplication::setDesktopSettingsAware(true);

    VantrelApp app(argc, argv);
    return app.exec();
}
