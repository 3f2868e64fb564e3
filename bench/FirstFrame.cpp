#include <QCoreApplication>
#include <QEvent>
#include <QGenericPlugin>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <cstdio>

/**
 * Writes the title of a program's first window to the standard output once the window's content is on the
 * screen.
 */
class FirstFrame : public QObject
{
    Q_OBJECT

public:
    FirstFrame() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Expose) {
            QCoreApplication::instance()->removeEventFilter(this);
            QTimer::singleShot(0, this, [watched] { report(qobject_cast<QWindow*>(watched)); });
        }
        return false;
    }

private:
    static void report(QWindow* window)
    {
        // The X server answers this request only after it has handled all earlier ones.
        window->screen()->grabWindow(window->winId(), 0, 0, 1, 1);
        static_cast<void>(std::puts(qPrintable(window->title())));
        static_cast<void>(std::fflush(stdout));
    }
};

/** Lets Qt load FirstFrame into any program: QT_QPA_GENERIC_PLUGINS=FirstFrame. */
class FirstFramePlugin : public QGenericPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QGenericPluginFactoryInterface_iid FILE "FirstFrame.json")

public:
    QObject* create(const QString& /*key*/, const QString& /*platformName*/) override
    {
        return new FirstFrame;
    }
};

#include "FirstFrame.moc"
