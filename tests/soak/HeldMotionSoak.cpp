#include "soak/Soak.h"
#include "support/Desk.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>

namespace {

constexpr const char* MotionButtons[] = {"upBtn",    "downBtn",   "leftBtn",
                                         "rightBtn", "zoomInBtn", "zoomOutBtn"};

/** One axis of a camera: it moves until it is told to stop. */
struct Axis
{
    void take(bool isStop)
    {
        isMoving = !isStop;
        isStop ? ++stops : ++starts;
    }

    bool isMoving = false;
    int starts = 0;
    int stops = 0;
};

/** A user who does anything at all while holding buttons. */
class Hands
{
public:
    explicit Hands(quint32 seed)
        : random(seed)
    {
    }

    void doAnything()
    {
        switch (random.bounded(14)) {
        case 0:
        case 1:
        case 2:
        case 3:
            return press();
        case 4:
        case 5:
            return release();
        case 6:
            return drag({-50, -50});
        case 7:
            return drag(mouseHeld ? mouseHeld->rect().center() : QPoint());
        case 8:
            return pressKey();
        case 9:
            return releaseKey();
        case 10:
            return disturb();
        case 11:
            return desk.find<QPushButton>("preset1Btn")->click();
        case 12:
            return changeSettings();
        default:
            return reconnect();
        }
    }

    /** The program ends, whatever is held. */
    void quit() { desk.program.reset(); }

    /** What the camera does, against what is held. Empty if all is well. */
    QString trouble()
    {
        for (int commands = commandCount(log.newLines()); commands > 0; --commands) {
            const QByteArray frame = desk.camera.nextFrame();
            if (frame.isEmpty())
                return "a logged command has not reached the camera";
            take(frame);
        }
        if (!desk.camera.pending().isEmpty())
            return "the camera got a frame that is not in the log";
        const QString pan = trouble(panTilt, isDown(0, 4));
        return pan.isEmpty() ? trouble(zoom, isDown(4, 6)) : pan;
    }

    int motions() const { return panTilt.starts + zoom.starts; }

private:
    // A button that is held by the pointer and the space bar at once starts its motion twice and stops it
    // once.
    static QString trouble(Axis& axis, bool isHeld)
    {
        if (axis.isMoving && !isHeld)
            return "the camera moves on alone";
        if (axis.stops > axis.starts)
            return "the camera was stopped twice";
        if (!isHeld)
            axis.stops = axis.starts;
        return {};
    }

    void take(const QByteArray& frame)
    {
        if (frame.startsWith("81 01 06 01"))
            panTilt.take(frame.endsWith("03 03 ff"));
        else if (frame.startsWith("81 01 04 07"))
            zoom.take(frame.endsWith("00 ff"));
    }

    static int commandCount(const QStringList& lines)
    {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(), [](const QString& line) {
            return line.startsWith("Move") || line.startsWith("Zoom") || line.startsWith("Call");
        }));
    }

    QPushButton* anyButton() { return desk.find<QPushButton>(MotionButtons[random.bounded(6)]); }

    bool isDown(int first, int end) const
    {
        if (!desk.program)
            return false;
        return std::any_of(MotionButtons + first, MotionButtons + end,
                           [this](const char* name) { return desk.find<QPushButton>(name)->isDown(); });
    }

    void press()
    {
        if (mouseHeld)
            return;
        mouseHeld = anyButton();
        QTest::mousePress(mouseHeld, Qt::LeftButton);
    }

    void release()
    {
        if (mouseHeld)
            QTest::mouseRelease(std::exchange(mouseHeld, nullptr), Qt::LeftButton);
    }

    void drag(const QPoint& place)
    {
        if (!mouseHeld)
            return;
        QMouseEvent move(QEvent::MouseMove, place, mouseHeld->mapToGlobal(place), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(mouseHeld, &move);
    }

    void pressKey()
    {
        if (keyHeld)
            return;
        keyHeld = anyButton();
        keyHeld->setFocus();
        QTest::keyPress(keyHeld, Qt::Key_Space);
    }

    void releaseKey()
    {
        if (keyHeld)
            QTest::keyRelease(std::exchange(keyHeld, nullptr), Qt::Key_Space);
    }

    void disturb()
    {
        switch (random.bounded(6)) {
        case 0:
            return desk.find<QLineEdit>("presetEdit")->setFocus();
        case 1:
            return desk.program->app.showMessage("Anything");
        case 2: // The port is open already: the box of an error.
            return desk.link()->openSerialPort();
        case 3: // No number has been entered: the box of the number field.
            return desk.find<QPushButton>("callBtn")->click();
        case 4: {
            QEvent deactivation(QEvent::WindowDeactivate);
            QApplication::sendEvent(desk.program->app.mainWin, &deactivation);
            return;
        }
        default:
            desk.program->app.mainWin->hide();
            desk.program->app.mainWin->show();
        }
    }

    void changeSettings()
    {
        desk.settings()->setPanSpeed(random.bounded(1, 19));
        desk.settings()->setZoomSpeed(random.bounded(1, 8));
        desk.settings()->setInvertTilt(random.bounded(2) == 0);
    }

    void reconnect()
    {
        auto* button = desk.find<QPushButton>("connectBtn");
        button->click();
        // What the closed port drops would be in the log and not on the line.
        button->click();
    }

    Desk desk;
    LogTail log{desk.profile.logFile()};
    QRandomGenerator random;
    Axis panTilt;
    Axis zoom;
    QPushButton* mouseHeld = nullptr;
    QPushButton* keyHeld = nullptr;
};

} // namespace

/** Buttons are held, and anything happens meanwhile. */
class HeldMotionSoak : public QObject
{
    Q_OBJECT

private slots:

    void aMotionNeverOutlivesItsButton()
    {
        const int users = rounds(5, 500);
        const int actions = 200;
        int motions = 0;
        for (int user = 0; user < users; ++user) {
            Hands hands(static_cast<quint32>(user));
            for (int action = 0; action < actions; ++action) {
                hands.doAnything();
                QCoreApplication::processEvents();
                const QString trouble = hands.trouble();
                QVERIFY2(trouble.isEmpty(),
                         qPrintable(QString("user %1, action %2: %3").arg(user).arg(action).arg(trouble)));
            }
            hands.quit();
            QVERIFY2(hands.trouble().isEmpty(), qPrintable(QString("user %1, at the end").arg(user)));
            motions += hands.motions();
        }
        QVERIFY(motions > users * 10);
        qInfo("%d actions around held buttons: %d motions, none outlived its button", users * actions,
              motions);
    }
};

QTEST_APPLESS_MAIN(HeldMotionSoak)
#include "HeldMotionSoak.moc"
