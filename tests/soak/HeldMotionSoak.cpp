#include "soak/Soak.h"
#include "support/Desk.h"
#include "ui/AppKeyRepeat.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include <algorithm>
#include <optional>

namespace {

/** What can happen around two motion buttons, Right and Zoom In. "AtOnce" events have the time stamp of the
 * event before. */
enum Event
{
    PressRight,
    PressZoomIn,
    ReleaseMouse,
    DragOff,
    DragOn,
    SpaceDown,
    SpaceUp,
    SpaceUpAtOnce,
    SpaceRepeats,
    OtherKeyDown,
    OtherKeyDownAtOnce,
    OtherKeyUp,
    OtherKeyUpAtOnce,
    Tab,
    TabAtOnce,
    TimePasses,
    LastOfHands = TimePasses,
    FocusTheField,
    HideAndShow,
    AnotherWindow,
    Popup,
    Box,
    Reconnect,
    OpenSettings,
    LastOfAll = OpenSettings
};

using Sequence = QVector<int>;

/** What a user holds down. */
struct Held
{
    bool can(int event) const
    {
        switch (event) {
        case PressRight:
        case PressZoomIn:
            return !mouse;
        case ReleaseMouse:
            return mouse;
        case DragOff:
            return mouse && inside;
        case DragOn:
            return mouse && !inside;
        case SpaceDown:
            return !space;
        case SpaceUp:
        case SpaceUpAtOnce:
        case SpaceRepeats:
            return space;
        case OtherKeyDown:
        case OtherKeyDownAtOnce:
            return !other;
        case OtherKeyUp:
        case OtherKeyUpAtOnce:
            return other;
        default:
            return true;
        }
    }

    Held after(int event) const
    {
        Held held = *this;
        held.mouse = event == PressRight || event == PressZoomIn || (mouse && event != ReleaseMouse);
        held.inside =
            event == PressRight || event == PressZoomIn || event == DragOn || (inside && event != DragOff);
        held.space = event == SpaceDown || (space && event != SpaceUp && event != SpaceUpAtOnce);
        held.other = event == OtherKeyDown || event == OtherKeyDownAtOnce ||
                     (other && event != OtherKeyUp && event != OtherKeyUpAtOnce);
        return held;
    }

    bool mouse = false;
    bool inside = false;
    bool space = false;
    bool other = false;
};

/** What a camera does with one of its motors. */
struct Motor
{
    bool isMoving = false;
    int starts = 0;
    int extraStops = 0;
};

/** The user's hands on the controller, and the camera at the other end of the line. */
class Hands
{
public:
    Hands()
    {
        // The program itself has it on X11 only.
        if (QGuiApplication::platformName() != "xcb")
            repeats.emplace(window());
        // Drawing would only take time.
        window()->setUpdatesEnabled(false);
        begin();
    }

    /** Does one thing and checks how the camera moves. Returns what is wrong, or "". */
    QString doIt(int event)
    {
        const int starts = motors[0].starts + motors[1].starts;
        const bool mayStart =
            event == PressRight || event == PressZoomIn || event == DragOn || event == SpaceDown;
        const bool mustStart = mayStart && event != DragOn && (event != SpaceDown || isMotionButton(focus()));
        held = held.after(event);
        act(event);
        QCoreApplication::processEvents();
        follow(log.newLines());
        const int started = motors[0].starts + motors[1].starts - starts;
        if (started > (mayStart ? 1 : 0))
            return "a command without its press";
        if (mustStart && started == 0)
            return "a press without its command";
        return trouble();
    }

    /** Does one after another, up to the first trouble. */
    QString doAll(const Sequence& sequence)
    {
        QString found;
        for (const int event : sequence) {
            if (found.isEmpty())
                found = doIt(event);
        }
        return found;
    }

    /** Lets go of everything before the next sequence. */
    QString begin()
    {
        QString trouble;
        for (const int event : {ReleaseMouse, SpaceUp, OtherKeyUp, TimePasses}) {
            if (trouble.isEmpty() && held.can(event))
                trouble = doIt(event);
        }
        if (trouble.isEmpty() && (motors[0].isMoving || motors[1].isMoving))
            trouble = "the camera moves though nothing is held";
        if (trouble.isEmpty() && !haveAllFramesArrived())
            trouble = "the frames on the line are not those of the commands in the log";
        QApplication::setActiveWindow(window());
        find("rightBtn")->setFocus();
        return trouble;
    }

    /** Ends the program, with whatever is held. */
    QString quit()
    {
        repeats.reset();
        desk.program.reset();
        follow(log.newLines());
        takeAway();
        const QString found = trouble();
        return found.isEmpty() && !haveAllFramesArrived() ? "the last stop did not reach the line" : found;
    }

private:
    QWidget* window() const { return desk.program->app.mainWin; }

    QPushButton* find(const char* name) const { return desk.find<QPushButton>(name); }

    static QWidget* focus() { return QApplication::focusWidget(); }

    static bool isMotionButton(const QWidget* widget)
    {
        const QStringList names{"upBtn", "downBtn", "leftBtn", "rightBtn", "zoomInBtn", "zoomOutBtn"};
        return widget && names.contains(widget->objectName());
    }

    void act(int event)
    {
        switch (event) {
        case PressRight:
            return press("rightBtn");
        case PressZoomIn:
            return press("zoomInBtn");
        case ReleaseMouse:
            isMouseHolding = false;
            return mouse(QEvent::MouseButtonRelease, Qt::LeftButton, Qt::NoButton);
        case DragOff:
        case DragOn:
            return mouse(QEvent::MouseMove, Qt::NoButton, Qt::LeftButton);
        case SpaceDown:
            spaceOn = focus();
            isReleaseWaiting = false;
            return key(QEvent::KeyPress, Qt::Key_Space, ++time);
        case SpaceUp:
        case SpaceUpAtOnce:
            spaceOn = nullptr;
            isReleaseWaiting = true;
            return key(QEvent::KeyRelease, Qt::Key_Space, event == SpaceUp ? ++time : time);
        case SpaceRepeats:
            key(QEvent::KeyRelease, Qt::Key_Space, ++time);
            return key(QEvent::KeyPress, Qt::Key_Space, time);
        case OtherKeyDown:
        case OtherKeyDownAtOnce:
            isReleaseWaiting = false;
            return key(QEvent::KeyPress, Qt::Key_A, event == OtherKeyDown ? ++time : time);
        case OtherKeyUp:
        case OtherKeyUpAtOnce:
            return key(QEvent::KeyRelease, Qt::Key_A, event == OtherKeyUp ? ++time : time);
        case Tab:
        case TabAtOnce:
            key(QEvent::KeyPress, Qt::Key_Tab, event == Tab ? ++time : time);
            takeAway();
            return key(QEvent::KeyRelease, Qt::Key_Tab, ++time);
        case TimePasses:
            isReleaseWaiting = false;
            return passTime();
        default:
            disturb(event);
            // Let the platform report the change of windows first.
            QCoreApplication::processEvents();
            QApplication::setActiveWindow(window());
            return takeAway();
        }
    }

    void disturb(int event)
    {
        switch (event) {
        case FocusTheField:
            return desk.find<QLineEdit>("presetEdit")->setFocus();
        case HideAndShow:
            window()->hide();
            return window()->show();
        case AnotherWindow:
            return QApplication::setActiveWindow(&other);
        case Popup: {
            QMenu menu;
            menu.addAction("Anything");
            return menu.popup({});
        }
        case Box:
            QTimer::singleShot(0, window(), [] { QApplication::activeModalWidget()->close(); });
            return desk.program->app.showMessage("Anything");
        case Reconnect:
            find("connectBtn")->click();
            return find("connectBtn")->click();
        default:
            find("settingsBtn")->click();
            desk.find<QWidget>("AppSettingWin")->close();
            desk.settings()->setCOMPort(desk.camera.portName());
        }
    }

    // Nothing that was held counts any more.
    void takeAway()
    {
        isMouseHolding = false;
        spaceOn = nullptr;
        isReleaseWaiting = false;
    }

    void press(const char* button)
    {
        pressed = find(button);
        isMouseHolding = true;
        if (spaceOn != pressed)
            spaceOn = nullptr;
        isReleaseWaiting = false;
        pressed->setFocus(Qt::MouseFocusReason);
        mouse(QEvent::MouseButtonPress, Qt::LeftButton, Qt::LeftButton);
    }

    void mouse(QEvent::Type type, Qt::MouseButton button, Qt::MouseButtons buttons)
    {
        const QPoint place = held.inside ? pressed->rect().center() : QPoint(-20, -20);
        QMouseEvent event(type, place, pressed->mapToGlobal(place), button, buttons, Qt::NoModifier);
        QApplication::sendEvent(pressed, &event);
    }

    // As with Qt on X11, the release and the press of a repeat have the same time stamp.
    void key(QEvent::Type type, Qt::Key key, ulong timestamp) const
    {
        QKeyEvent event(type, key, Qt::NoModifier);
        event.setTimestamp(timestamp);
        QApplication::sendEvent(focus() ? focus() : window(), &event);
    }

    // Fires all timers of up to 25 ms.
    void passTime() const
    {
        const auto timers = window()->findChildren<QTimer*>();
        for (QTimer* timer : timers) {
            if (!timer->isActive() || timer->interval() > 25)
                continue;
            QTimerEvent due(timer->timerId());
            QCoreApplication::sendEvent(timer, &due);
        }
    }

    void follow(const QStringList& lines)
    {
        for (const QString& line : lines) {
            const bool isZoom = line.startsWith("Zoom");
            const bool isMotion = isZoom || line.startsWith("Move");
            if (isMotion || line.startsWith("Call"))
                commands.append(line);
            if (!isMotion)
                continue;
            Motor& motor = motors[isZoom ? 1 : 0];
            const bool isStop = line.endsWith("Stop");
            motor.extraStops += isStop && !motor.isMoving ? 1 : 0;
            motor.starts += isStop ? 0 : 1;
            motor.isMoving = !isStop;
        }
    }

    QString trouble() const
    {
        if (motors[0].extraStops + motors[1].extraStops > 0)
            return "a motion ended in two stops";
        const auto isHeld = [this](bool zoom) {
            const auto belongs = [zoom](const QWidget* widget) {
                return widget && widget->objectName().startsWith("zoom") == zoom;
            };
            return (isMouseHolding && held.inside && belongs(pressed)) ||
                   (isMotionButton(spaceOn) && belongs(spaceOn));
        };
        for (const bool zoom : {false, true}) {
            if (motors[zoom ? 1 : 0].isMoving && !isHeld(zoom) && !isReleaseWaiting)
                return "the camera moves though nothing is held";
        }
        return {};
    }

    struct Frame
    {
        const char* begin;
        const char* end;
        CameraEnd::Size bytes;
    };

    static Frame frameOf(const QString& command)
    {
        const bool isStop = command.endsWith("Stop");
        if (command.startsWith("Call"))
            return {"81 01 04 3f 02", "ff", 7};
        if (command.startsWith("Zoom"))
            return {"81 01 04 07", isStop ? "00 ff" : "5 ff", 6};
        return {"81 01 06 01 05 05", isStop ? "03 03 ff" : "ff", 9};
    }

    bool haveAllFramesArrived()
    {
        desk.camera.pending();
        bool haveAll = true;
        const QStringList given = std::exchange(commands, {});
        for (const QString& command : given) {
            const Frame frame = frameOf(command);
            const QByteArray arrived = desk.camera.take(frame.bytes);
            haveAll = haveAll && arrived.startsWith(frame.begin) && arrived.endsWith(frame.end);
        }
        return haveAll && desk.camera.pending().isEmpty();
    }

    Desk desk;
    LogTail log{desk.profile.logFile()};
    QWidget other;
    std::optional<AppKeyRepeat> repeats;
    Motor motors[2];
    QStringList commands;
    ulong time = 1000;
    Held held;
    QWidget* pressed = nullptr;
    bool isMouseHolding = false;
    const QWidget* spaceOn = nullptr;
    bool isReleaseWaiting = false;
};

QString described(const Sequence& sequence)
{
    // In the order of enum Event.
    static const QStringList known =
        QString(
            "press Right, press Zoom In, let go, drag off, drag on, Space down, Space up, Space up at once, "
            "Space repeats, A down, A down at once, A up, A up at once, Tab, Tab at once, 25 ms, focus the "
            "field, hide and show, another window, popup, box, disconnect and connect, settings")
            .split(", ");
    QStringList names;
    for (const int event : sequence)
        names.append(known[event]);
    return names.join(", ");
}

/** Calls `play` with each sequence of `length` events up to `last`, until it returns trouble. */
template <class Play> QString walk(int length, int last, Play play, Sequence sequence = {}, Held held = {})
{
    if (length == 0) {
        const QString trouble = play(sequence);
        return trouble.isEmpty() ? trouble : trouble + " after: " + described(sequence);
    }
    QString trouble;
    for (int event = 0; event <= last && trouble.isEmpty(); ++event) {
        if (held.can(event))
            trouble = walk(length - 1, last, play, sequence + Sequence{event}, held.after(event));
    }
    return trouble;
}

} // namespace

/** Motion buttons are held while other things happen. */
class HeldMotionSoak : public QObject
{
    Q_OBJECT

private slots:

    void everyMotionEndsInOneStop_data()
    {
        QTest::addColumn<int>("last");
        QTest::addColumn<int>("length");
        QTest::newRow("mouse and keys") << int(LastOfHands) << rounds(5, 6);
        QTest::newRow("everything") << int(LastOfAll) << rounds(3, 4);
    }

    void everyMotionEndsInOneStop()
    {
        QFETCH(int, last);
        QFETCH(int, length);
        Hands hands;
        int count = 0;
        const QString trouble = walk(length, last, [&](const Sequence& sequence) {
            ++count;
            const QString found = hands.doAll(sequence);
            return found.isEmpty() ? hands.begin() : found;
        });
        QVERIFY2(trouble.isEmpty(), qPrintable(trouble));
        qInfo("%d sequences of %d events around two buttons: every motion ended in one stop", count, length);
    }

    void theEndOfTheProgramStopsTheCamera()
    {
        int count = 0;
        const QString trouble = walk(rounds(2, 3), LastOfHands, [&](const Sequence& sequence) {
            ++count;
            Hands hands;
            const QString found = hands.doAll(sequence);
            return found.isEmpty() ? hands.quit() : found;
        });
        QVERIFY2(trouble.isEmpty(), qPrintable(trouble));
        qInfo("%d ends after as many sequences: nothing still moves", count);
    }
};

QTEST_APPLESS_MAIN(HeldMotionSoak)
#include "HeldMotionSoak.moc"
