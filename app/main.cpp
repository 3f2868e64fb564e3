#include "app/VantrelApp.h"

int main(int argc, char** argv)
{
    // Qt reads this attribute while the application object is being built.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, true);
    QGuiApplication::setDesktopSettingsAware(true);

    VantrelApp app(argc, argv);
    return app.exec();
}
