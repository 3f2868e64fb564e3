#include "AccessibilityBus.h"
#include "support/CameraEnd.h"
#include "support/Frames.h"
#include "support/PrivateProfile.h"
#include "system/RunningProgram.h"

#include <QProcess>
#include <QtTest>

#include <optional>

namespace {

constexpr char MainTitle[] = "Vantrel Controller";
constexpr char SettingsTitle[] = "Settings";
// With the camera's port for %1.
constexpr char ConnectedText[] = "Connected to Port: %1\tBaudRate: 9600";

constexpr char Window[] = "frame";
constexpr char Dialog[] = "dialog";
constexpr char Button[] = "push button";
constexpr char Box[] = "check box";
constexpr char List[] = "combo box";
constexpr char Slider[] = "slider";
constexpr char Field[] = "text";
constexpr char Label[] = "label";
constexpr char Notification[] = "notification";

constexpr char ByPress[] = "Press, SetFocus";
constexpr char ByToggle[] = "Toggle, SetFocus";
constexpr char ByMenu[] = "ShowMenu, Press";
constexpr char BySteps[] = "SetFocus, Increase, Decrease";
constexpr char ByFocus[] = "SetFocus";

/** What a control reports. The name of a list is its present choice; its description says what it is for. */
struct Control
{
    const char* role;
    const char* name;
    const char* actions = "";
    const char* description = "";
};

// In the order in which a screen reader goes through the windows of the connected program.
constexpr Control MainControls[] = {
    {Button, "Settings", ByPress, "Settings"},
    {Button, "Disconnect", ByPress},
    {Button, "Move Up", ByPress, "Move Up"},
    {Button, "Move Left", ByPress, "Move Left"},
    {Button, "Move Home", ByPress, "Move Home"},
    {Button, "Move Right", ByPress, "Move Right"},
    {Button, "Zoom In", ByPress, "Zoom In"},
    {Button, "Move Down", ByPress, "Move Down"},
    {Button, "Zoom Out", ByPress, "Zoom Out"},
    {Button, "Preset 1", ByPress, "Preset1"},
    {Button, "Preset 2", ByPress, "Preset2"},
    {Button, "Preset 3", ByPress, "Preset3"},
    {Button, "Preset 4", ByPress, "Preset4"},
    {Button, "Preset 5", ByPress, "Preset5"},
    {Button, "Preset 6", ByPress, "Preset6"},
    {Button, "Preset 7", ByPress, "Preset7"},
    {Button, "Preset 8", ByPress, "Preset8"},
    {Button, "Preset 9", ByPress, "Preset9"},
    {Field, "Preset Number Input", ByFocus, "Preset Number Input"},
    {Button, "CALL", ByPress, "Recall Preset"},
    {Field, "Enter preset name", ByFocus, "Enter preset name"},
    {Button, "SET", ByPress, "Set Preset"},
    {Notification, ConnectedText},
};

constexpr Control SettingsControls[] = {
    {Box, "Run on startup", ByToggle},
    {Label, "COM port"},
    {List, "AUTO", ByMenu, "COM port"},
    {Label, "BaudRate"},
    {List, "Baud9600", ByMenu, "Baud rate"},
    {Box, "Start up Preset", ByToggle},
    {List, "PRESET1", ByMenu, "Preset to recall at every connect"},
    {Box, "Invert Pan Controls", ByToggle},
    {Box, "Invert Tilt Controls", ByToggle},
    {Label, "Pan Speed(5)"},
    {Slider, "Pan Speed", BySteps},
    {Label, "Tilt Speed(5)"},
    {Slider, "Tilt Speed", BySteps},
    {Label, "Zoom Speed(5)"},
    {Slider, "Zoom Speed", BySteps},
};

/** A fresh account, a camera on the line, and the program, connected to it and used over the bus. */
class Workplace
{
public:
    Workplace()
    {
        profile.store("comport", camera.portName());

        // Qt warns when it is asked about a box that has just closed or is not shown yet. The program cannot
        // avoid that.
        process.emplace(
            VANTREL_PATH, QStringList(),
            RunningProgram::Variables{
                {"DBUS_SESSION_BUS_ADDRESS", bus.sessionAddress()},
                {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"},
                {"QT_LOGGING_RULES", "qt.accessibility.atspi.warning=false;qt.qpa.xcb.warning=false"}});
        program = bus.program("Vantrel");
    }
    Q_DISABLE_COPY(Workplace)

    AccessibleObject find(const char* role, const QString& name) const { return program.find(role, name); }

    void press(const QString& button) const { find(Button, button).act("Press"); }

    AccessibleObject openedSettings() const
    {
        press("Settings");
        return find(Dialog, SettingsTitle);
    }

    QString connectedText() const { return QString(ConnectedText).arg(camera.portName()); }

    QString stored(const QString& key) const { return profile.stored(key).toString(); }

    PrivateProfile profile;
    CameraEnd camera;
    AccessibilityBus bus;

private:
    std::optional<RunningProgram> process;
    AccessibleObject program;
};

QString line(const QStringList& columns)
{
    return columns.join(" | ");
}

template <std::size_t Count> QStringList lines(const Control (&table)[Count])
{
    QStringList lines;
    for (const Control& control : table)
        lines.append(line({control.role, control.name, control.actions, control.description}));
    return lines;
}

/** What every control of a window reports, in the form of the tables above. */
QStringList told(const AccessibleObject& window)
{
    QStringList lines;
    const auto controls = window.controls();
    for (const AccessibleObject& control : controls) {
        lines.append(
            line({control.role(), control.name(), control.actions().join(", "), control.description()}));
    }
    return lines;
}

} // namespace

/** The program as assistive software uses it: over the accessibility bus, without screen, mouse and keyboard.
 */
class AccessibilityTest : public QObject
{
    Q_OBJECT

private slots:

    void everyControlOfTheMainWindowSaysWhatItIs()
    {
        const Workplace place;
        QStringList expected = lines(MainControls);
        expected.replaceInStrings(ConnectedText, place.connectedText());

        QCOMPARE(told(place.find(Window, MainTitle)), expected);
    }

    void everySettingSaysWhatItIs()
    {
        const Workplace place;

        QCOMPARE(told(place.openedSettings()), lines(SettingsControls));
    }

    void pressingAButtonActsOnce()
    {
        Workplace place;

        place.press("Move Up");
        QCOMPARE(place.camera.nextFrame(), QByteArray(Up));
        QCOMPARE(place.camera.nextFrame(), QByteArray(Stop));
        place.press("Move Home");
        QCOMPARE(place.camera.nextFrame(), QByteArray(Home));
        QCOMPARE(place.camera.nextFrame(), QByteArray(FullWide));
        place.press("Preset 9");
        QCOMPARE(place.camera.nextFrame(), recallPreset(9));
    }

    void aPresetsButtonHasThePresetsName()
    {
        Workplace place;

        place.find(Field, "Preset Number Input").enter("3");
        place.find(Field, "Enter preset name").enter("Desk");
        place.press("SET");
        QCOMPARE(place.camera.nextFrame(), setPreset(3));
        place.find(Label, "Preset No3 is set.");
        place.press("OK");

        QTRY_COMPARE(place.find(Button, "Preset 3").description(), QString("Desk"));
    }

    void togglingABoxStoresItsSettingAndEnablesItsList()
    {
        const Workplace place;
        const AccessibleObject settings = place.openedSettings();
        const AccessibleObject box = settings.find(Box, "Start up Preset");
        const AccessibleObject list = settings.find(List, "PRESET1");

        for (const bool isOn : {true, false}) {
            box.act("Toggle");
            QTRY_COMPARE(place.stored("isstartuppreset"), QString(isOn ? "true" : "false"));
            QCOMPARE(box.isChecked(), isOn);
            QTRY_COMPARE(list.isEnabled(), isOn);
        }
    }

    void steppingASliderStoresItsSpeed()
    {
        const Workplace place;
        const AccessibleObject settings = place.openedSettings();
        const AccessibleObject slider = settings.find(Slider, "Zoom Speed");

        slider.act("Increase");
        QTRY_COMPARE(place.stored("zoomspeed"), QString("6"));
        settings.find(Label, "Zoom Speed(6)");
        slider.act("Decrease");
        QTRY_COMPARE(place.stored("zoomspeed"), QString("5"));
    }

    void aChangeOfTheConnectionIsAnnounced()
    {
        Workplace place;
        const AccessibleObject status = place.find(Notification, place.connectedText());
        place.bus.listen();

        QStringList expected{"Device disconnected"};
        place.press("Disconnect");
        QTRY_COMPARE(place.bus.newNames(status), expected);

        expected.append(place.connectedText());
        place.press("Connect");
        QTRY_COMPARE(place.bus.newNames(status), expected);
        QTRY_COMPARE(place.bus.announcements(), expected);
    }

    void anEmptyFieldReportsOnlyItsFocus()
    {
        Workplace place;
        place.bus.listen();

        const QVector<QPair<const char*, const char*>> fieldsAfterButtons = {
            {"Preset 9", "Preset Number Input"}, {"CALL", "Enter preset name"}};
        for (const auto& [buttonName, fieldName] : fieldsAfterButtons) {
            const AccessibleObject button = place.find(Button, buttonName);
            const AccessibleObject field = place.find(Field, fieldName);
            button.act("SetFocus");
            // Only an active window tells of the focus, and only to that one go the keys.
            QTRY_COMPARE(place.bus.movesOf(button), QStringList("focus"));
            QCOMPARE(QProcess::execute("xdotool", {"key", "Tab"}), 0);
            QTRY_VERIFY(!place.bus.movesOf(field).isEmpty());
            QCOMPARE(place.bus.movesOf(field), QStringList("focus"));
        }
    }
};

QTEST_GUILESS_MAIN(AccessibilityTest)

#include "AccessibilityTest.moc"
