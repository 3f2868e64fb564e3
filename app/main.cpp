#include "app/VantrelApp.h"

int main(int argc, char** argv)
{
#if QT_VERSION_MAJOR < 6
    // Qt reads this attribute while the application object is being built; Qt 6 always scales.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
#endif
    QGuiApplication::setDesktopSettingsAware(true);

    VantrelApp app(argc, argv);
    return app.exec();
}
