#include "support/Desk.h"
#include "support/Form.h"
#include "support/Frames.h"

#include "ui/AppSettingWin.h"
#include "ui/AppSettingsPlace.h"
#include "ui_AppSettingWin.h"

#include <QAccessible>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QSerialPortInfo>
#include <QSettings>
#include <QSlider>
#include <QStyleOptionSlider>

#include <limits>

namespace {

struct Speed
{
    const char* key;
    const char* slider;
    const char* label;
    const char* text;
    int maximum;
};

constexpr Speed Speeds[] = {
    {"panspeed", "panSpeedSlider", "panSpeedLabel", "Pan Speed(%1)", 18},
    {"tiltspeed", "tiltSpeedSlider", "tiltSpeedLabel", "Tilt Speed(%1)", 14},
    {"zoomspeed", "zoomSpeedSlider", "zoomSpeedLabel", "Zoom Speed(%1)", 7},
};

struct Check
{
    const char* key;
    const char* checkBox;
};

constexpr Check Checks[] = {
    {"invertpan", "invertPanCheck"},
    {"inverttilt", "invertTiltCheck"},
    {"isstartuppreset", "startUpPresetCheck"},
    {"runonstartup", "runOnStartUpCheck"},
};

AppSettingWin* dialogOf(const Desk& desk)
{
    return desk.find<AppSettingWin>("AppSettingWin");
}

AppSettingWin* openDialog(const Desk& desk)
{
    desk.find<QPushButton>("settingsBtn")->click();
    return dialogOf(desk);
}

QStringList entries(const QComboBox* combo)
{
    QStringList texts;
    for (int i = 0; i < combo->count(); ++i)
        texts.append(combo->itemText(i));
    return texts;
}

QStringList portList()
{
    QStringList names{"AUTO"};
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& port : ports)
        names.append(port.portName());
    return names;
}

// What is stored now, whether it is in the file yet or not.
QVariantMap storedSettings(Desk& desk)
{
    QCoreApplication::processEvents();
    const QSettings file(desk.profile.settingsFile(), QSettings::IniFormat);
    QVariantMap values;
    const auto keys = file.allKeys();
    for (const QString& key : keys)
        values.insert(key, file.value(key));
    return values;
}

// Where the middle of a slider's handle is for a value.
QPoint handlePosition(const QSlider* slider, int value)
{
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.orientation = Qt::Horizontal;
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = value;
    option.sliderValue = value;
    return slider->style()
        ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider)
        .center();
}

void moveHeldPointer(QWidget* widget, const QPoint& position)
{
    QMouseEvent move(QEvent::MouseMove, position, widget->mapToGlobal(position), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}

} // namespace

Q_DECLARE_METATYPE(Speed)
Q_DECLARE_METATYPE(Check)

/** The settings dialog: what it shows, and what it stores at every change. */
class SettingsDialogTest : public QObject
{
    Q_OBJECT

private slots:

    void theSlotsAreDeclaredInOrder()
    {
        const QByteArrayList expected{"onPanSpeedChanged(int val)",
                                      "onTiltSpeedChanged(int val)",
                                      "onZoomSpeedChanged(int val)",
                                      "onRunAsAdminChecked()",
                                      "onRunOnStartUpChecked()",
                                      "onStartupPresetChecked()",
                                      "onStartupPresetChanged(int val)",
                                      "onComPortChanged(QString val)",
                                      "onBaudRateChanged(QString val)",
                                      "onInvertPanChecked()",
                                      "onInvertTiltChecked()"};
        QCOMPARE(expected.size(), 11);

        const QMetaObject& type = AppSettingWin::staticMetaObject;
        QByteArrayList declared;
        for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
            const QMetaMethod method = type.method(index);
            const QByteArray parameter =
                method.parameterCount() == 0
                    ? QByteArray()
                    : method.parameterTypes().join(", ") + ' ' + method.parameterNames().join(", ");
            declared.append(method.name() + '(' + parameter + ')');
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            QCOMPARE(method.access(), QMetaMethod::Private);
            QCOMPARE(method.returnType(), int(QMetaType::Void));
        }
        QCOMPARE(declared, expected);
    }

    void theDialogHasMinimiseAndCloseButtonsOnly()
    {
        const Desk desk;
        // Qt gives every such window the title and the system menu as well.
        QCOMPARE(dialogOf(desk)->windowFlags(), Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                                    Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
        QCOMPARE(dialogOf(desk)->windowTitle(), QString("Settings"));
    }

    void theDialogFitsItsContent()
    {
        QSize fitting;
        {
            const BareApplication application;
            QDialog dialog;
            Ui_AppSettingWin ui;
            ui.setupUi(&dialog);
            dialog.adjustSize();
            fitting = dialog.size();
        }
        QVERIFY(fitting != QSize(250, 339));

        const Desk desk;
        QCOMPARE(dialogOf(desk)->size(), fitting);
    }

    void thePresetListGoesFrom1To64()
    {
        const Desk desk;
        QStringList expected;
        for (int preset = 1; preset <= 64; ++preset)
            expected.append("PRESET" + QString::number(preset));
        QCOMPARE(entries(desk.find<QComboBox>("startUpPresetCombo")), expected);
    }

    void theBaudRateListHasEightRates()
    {
        const Desk desk;
        QCOMPARE(entries(desk.find<QComboBox>("baudRateCombo")),
                 QStringList({"Baud1200", "Baud2400", "Baud4800", "Baud9600", "Baud19200", "Baud38400",
                              "Baud57600", "Baud115200"}));
    }

    void aFreshAccountShowsTheDefaults()
    {
        const Desk desk;
        for (const Speed& speed : Speeds) {
            QCOMPARE(desk.find<QSlider>(speed.slider)->value(), 5);
            QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(5));
        }
        for (const Check& check : Checks)
            QVERIFY(!desk.find<QCheckBox>(check.checkBox)->isChecked());
        QCOMPARE(desk.find<QComboBox>("startUpPresetCombo")->currentText(), QString("PRESET1"));
        QVERIFY(!desk.find<QComboBox>("startUpPresetCombo")->isEnabled());
        QCOMPARE(desk.find<QComboBox>("baudRateCombo")->currentText(), QString("Baud9600"));
        QCOMPARE(desk.find<QComboBox>("comPortCombo")->count(), 0);
    }

    void storedSettingsAreShown()
    {
        const Desk desk({{"panspeed", 18},
                         {"tiltspeed", 14},
                         {"zoomspeed", 7},
                         {"baudrate", 57600},
                         {"startuppreset", 64},
                         {"isstartuppreset", true},
                         {"runonstartup", true},
                         {"invertpan", true},
                         {"inverttilt", true}});
        for (const Speed& speed : Speeds) {
            QCOMPARE(desk.find<QSlider>(speed.slider)->value(), speed.maximum);
            QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(speed.maximum));
        }
        for (const Check& check : Checks)
            QVERIFY(desk.find<QCheckBox>(check.checkBox)->isChecked());
        QCOMPARE(desk.find<QComboBox>("startUpPresetCombo")->currentText(), QString("PRESET64"));
        QVERIFY(desk.find<QComboBox>("startUpPresetCombo")->isEnabled());
        QCOMPARE(desk.find<QComboBox>("baudRateCombo")->currentText(), QString("Baud57600"));
    }

    void aStoredCheckIsShownInItsOwnBox_data() { checks(); }

    void aStoredCheckIsShownInItsOwnBox()
    {
        QFETCH(Check, check);
        const Desk desk({{check.key, true}});
        for (const Check& other : Checks)
            QCOMPARE(desk.find<QCheckBox>(other.checkBox)->isChecked(), other.checkBox == check.checkBox);
    }

    void buildingTheDialogStoresNothing_data()
    {
        QTest::addColumn<QVariantMap>("stored");
        QTest::newRow("fresh account") << QVariantMap();
        QTest::newRow("out of range") << QVariantMap({{"panspeed", 24},
                                                      {"tiltspeed", 0},
                                                      {"zoomspeed", 3},
                                                      {"baudrate", 14400},
                                                      {"startuppreset", 500},
                                                      {"isstartuppreset", true},
                                                      {"runonstartup", true}});
    }

    void buildingTheDialogStoresNothing()
    {
        QFETCH(QVariantMap, stored);
        Desk desk(stored);
        desk.program.reset();

        stored.insert("comport", desk.camera.portName());
        const QSettings file(desk.profile.settingsFile(), QSettings::IniFormat);
        QCOMPARE(file.allKeys(), QStringList(stored.keys()));
        for (auto setting = stored.cbegin(); setting != stored.cend(); ++setting)
            QCOMPARE(file.value(setting.key()).toString(), setting.value().toString());
        QVERIFY(desk.profile.osascriptRuns().isEmpty());
    }

    void aSpeedAboveTheRangeShowsTheMaximumAndStays_data() { speeds(); }

    void aSpeedAboveTheRangeShowsTheMaximumAndStays()
    {
        QFETCH(Speed, speed);
        Desk desk({{speed.key, 24}});
        auto* slider = desk.find<QSlider>(speed.slider);
        QCOMPARE(slider->value(), speed.maximum);
        QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(speed.maximum));
        openDialog(desk);
        QCOMPARE(storedSettings(desk).value(speed.key).toInt(), 24);

        QTest::keyClick(slider, Qt::Key_Left);
        QCOMPARE(storedSettings(desk).value(speed.key).toInt(), speed.maximum - 1);
    }

    void aSpeedOfZeroOrBelowShows1AndStays_data()
    {
        QTest::addColumn<Speed>("speed");
        QTest::addColumn<int>("value");
        for (const Speed& speed : Speeds) {
            for (const int value : {0, -3})
                QTest::addRow("%s %d", speed.key, value) << speed << value;
        }
    }

    void aSpeedOfZeroOrBelowShows1AndStays()
    {
        QFETCH(Speed, speed);
        QFETCH(int, value);
        Desk desk({{speed.key, value}});
        QCOMPARE(desk.find<QSlider>(speed.slider)->value(), 1);
        QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(1));
        openDialog(desk);
        QCOMPARE(storedSettings(desk).value(speed.key).toInt(), value);
    }

    void movingASliderStoresItsSpeedOnly_data() { speeds(); }

    void movingASliderStoresItsSpeedOnly()
    {
        QFETCH(Speed, speed);
        Desk desk;
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);

        QTest::keyClick(desk.find<QSlider>(speed.slider), Qt::Key_PageUp);
        expected.insert(speed.key, "7");
        QCOMPARE(storedSettings(desk), expected);
        for (const Speed& other : Speeds)
            QCOMPARE(desk.find<QLabel>(other.label)->text(),
                     QString(other.text).arg(other.slider == speed.slider ? 7 : 5));
    }

    void draggingASliderStoresEveryValueOnTheWay_data() { speeds(); }

    void draggingASliderStoresEveryValueOnTheWay()
    {
        QFETCH(Speed, speed);
        Desk desk;
        openDialog(desk);
        auto* slider = desk.find<QSlider>(speed.slider);

        QTest::mousePress(slider, Qt::LeftButton, Qt::NoModifier, handlePosition(slider, 5));
        for (const int value : {4, 3, 2, 6}) {
            moveHeldPointer(slider, handlePosition(slider, value));
            QCOMPARE(storedSettings(desk).value(speed.key).toInt(), value);
            QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(value));
        }
        QTest::mouseRelease(slider, Qt::LeftButton, Qt::NoModifier, handlePosition(slider, 6));
        QCOMPARE(storedSettings(desk).value(speed.key).toInt(), 6);
    }

    void aClickOnACheckBoxStoresItsChoiceOnly_data() { checks(); }

    void aClickOnACheckBoxStoresItsChoiceOnly()
    {
        QFETCH(Check, check);
        Desk desk;
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);

        auto* checkBox = desk.find<QCheckBox>(check.checkBox);
        QTest::mouseClick(checkBox, Qt::LeftButton, Qt::NoModifier, QPoint(8, checkBox->height() / 2));
        expected.insert(check.key, "true");
        QCOMPARE(storedSettings(desk), expected);
        QTest::keyClick(checkBox, Qt::Key_Space);
        expected.insert(check.key, "false");
        QCOMPARE(storedSettings(desk), expected);
    }

    void aCheckBoxSwitchedByAssistiveSoftwareActsAsClicked_data() { checks(); }

    void aCheckBoxSwitchedByAssistiveSoftwareActsAsClicked()
    {
        QFETCH(Check, check);
        Desk desk;
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);
        auto* checkBox = desk.find<QCheckBox>(check.checkBox);
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(checkBox);
        QCOMPARE(interface->role(), QAccessible::CheckBox);
        QCOMPARE(interface->text(QAccessible::Name), checkBox->text());
        QVERIFY(interface->state().checkable);

        for (const char* choice : {"true", "false"}) {
            interface->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
            expected.insert(check.key, choice);
            QTRY_COMPARE(storedSettings(desk), expected);
            QCOMPARE(interface->state().checked, checkBox->isChecked());
        }
        interface->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
        QTRY_VERIFY(checkBox->hasFocus());
        QCOMPARE(storedSettings(desk), expected);
    }

    void aDescriptionAndNoLabelTellsAssistiveSoftwareWhatAListIsFor()
    {
        const Desk desk;
        constexpr const char* Lists[][2] = {{"comPortCombo", "COM port"},
                                            {"baudRateCombo", "Baud rate"},
                                            {"startUpPresetCombo", "Preset to recall at every connect"}};
        for (const auto& [name, description] : Lists) {
            const QAccessibleInterface* list =
                QAccessible::queryAccessibleInterface(desk.find<QComboBox>(name));
            QCOMPARE(list->text(QAccessible::Description), QString(description));
            // A screen reader would read the label in place of the choice.
            QVERIFY(list->relations(QAccessible::Label).isEmpty());
        }
    }

    void aCheckThatIsNotTheUsersStoresNothing_data() { checks(); }

    void aCheckThatIsNotTheUsersStoresNothing()
    {
        QFETCH(Check, check);
        Desk desk;
        desk.find<QCheckBox>(check.checkBox)->setChecked(true);
        QVERIFY(!storedSettings(desk).contains(check.key));
        QVERIFY(desk.profile.osascriptRuns().isEmpty());
    }

    void runOnStartupActsAtOnce()
    {
        Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        auto* check = desk.find<QCheckBox>("runOnStartUpCheck");

        check->click();
        QCOMPARE(desk.profile.osascriptRuns().size(), 1);
        QVERIFY(desk.profile.osascriptRuns().constLast().constFirst().contains("make login item"));
        QVERIFY(desk.settings()->getRunOnStartUp());

        check->click();
        QCOMPARE(desk.profile.osascriptRuns().size(), 2);
        QVERIFY(desk.profile.osascriptRuns().constLast().constFirst().contains("delete login item"));
        QVERIFY(!desk.settings()->getRunOnStartUp());

        dialog->close();
        desk.program.reset();
        QCOMPARE(desk.profile.osascriptRuns().size(), 2);
    }

    void theStartUpPresetCheckEnablesTheListAndStoresTheFlagOnly()
    {
        Desk desk({{"startuppreset", 12}});
        openDialog(desk);
        auto* combo = desk.find<QComboBox>("startUpPresetCombo");
        QVERIFY(!combo->isEnabled());
        QCOMPARE(combo->currentText(), QString("PRESET12"));
        QVariantMap expected = storedSettings(desk);

        desk.find<QCheckBox>("startUpPresetCheck")->click();
        QVERIFY(combo->isEnabled());
        QCOMPARE(combo->currentText(), QString("PRESET12"));
        expected.insert("isstartuppreset", "true");
        QCOMPARE(storedSettings(desk), expected);

        desk.find<QCheckBox>("startUpPresetCheck")->click();
        QVERIFY(!combo->isEnabled());
        QCOMPARE(combo->currentText(), QString("PRESET12"));
        expected.insert("isstartuppreset", "false");
        QCOMPARE(storedSettings(desk), expected);
    }

    void choosingAStartUpPresetStoresItsNumber()
    {
        Desk desk({{"isstartuppreset", true}});
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);
        auto* combo = desk.find<QComboBox>("startUpPresetCombo");

        QTest::keyClick(combo, Qt::Key_Down);
        expected.insert("startuppreset", "2");
        QCOMPARE(storedSettings(desk), expected);
        QTest::keyClick(combo, Qt::Key_End);
        QCOMPARE(desk.settings()->getStartUpPreset(), 64);
        QTest::keyClick(combo, Qt::Key_Home);
        QCOMPARE(desk.settings()->getStartUpPreset(), 1);
    }

    void aStartUpPresetOutOfRangeSelectsNothing_data()
    {
        QTest::addColumn<int>("preset");
        for (const int preset :
             {0, -1, std::numeric_limits<int>::min(), 65, 500, std::numeric_limits<int>::max()})
            QTest::addRow("%d", preset) << preset;
    }

    void aStartUpPresetOutOfRangeSelectsNothing()
    {
        QFETCH(int, preset);
        Desk desk({{"startuppreset", preset}});
        auto* combo = desk.find<QComboBox>("startUpPresetCombo");
        QCOMPARE(combo->currentIndex(), -1);
        openDialog(desk);
        QCOMPARE(desk.settings()->getStartUpPreset(), preset);

        combo->setCurrentIndex(6);
        QCOMPARE(desk.settings()->getStartUpPreset(), 7);
    }

    void choosingABaudRateStoresIt_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("baudRate");
        const int baudRates[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
        int index = 0;
        for (const int baudRate : baudRates)
            QTest::addRow("%d", baudRate) << index++ << baudRate;
    }

    void choosingABaudRateStoresIt()
    {
        QFETCH(int, index);
        QFETCH(int, baudRate);
        Desk desk({{"baudrate", baudRate == 1200 ? 2400 : 1200}});
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);

        desk.find<QComboBox>("baudRateCombo")->setCurrentIndex(index);
        expected.insert("baudrate", QString::number(baudRate));
        QCOMPARE(storedSettings(desk), expected);
    }

    void anUnlistedBaudRateStaysUntilAnotherIsChosen()
    {
        const Desk desk({{"baudrate", 14400}});
        auto* combo = desk.find<QComboBox>("baudRateCombo");
        QCOMPARE(combo->currentText(), QString("Baud1200"));
        openDialog(desk);
        QCOMPARE(desk.settings()->getBaudRate(), 14400);

        combo->setCurrentText("Baud115200");
        QCOMPARE(desk.settings()->getBaudRate(), 115200);
    }

    void theNumberFromTheFifthCharacterOnIsTheBaudRate_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("baudRate");
        for (const char* text : {"", "Baud", "Baudfast", "Baud0", "9600"})
            QTest::addRow("'%s'", text) << QString(text) << 9600;
        QTest::newRow("another word") << "xxxx2400" << 2400;
        QTest::newRow("a number alone") << "19200" << 9600;
        QTest::newRow("the word twice") << "BaudBaud2400" << 9600;
    }

    void theNumberFromTheFifthCharacterOnIsTheBaudRate()
    {
        QFETCH(QString, text);
        QFETCH(int, baudRate);
        const Desk desk({{"baudrate", 115200}});
        QMetaObject::invokeMethod(dialogOf(desk), "onBaudRateChanged", Q_ARG(QString, text));
        QCOMPARE(desk.settings()->getBaudRate(), baudRate);
    }

#if QT_VERSION_MAJOR < 6
    void anEntryThatIsRenamedStoresNothing()
    {
        const Desk desk({{"baudrate", 115200}});
        auto* combo = desk.find<QComboBox>("baudRateCombo");
        combo->setItemText(combo->currentIndex(), "Baud300");
        QCOMPARE(desk.settings()->getBaudRate(), 115200);
    }
#endif

    void openingListsAutoThenThePortsThatArePresent()
    {
        const Desk desk;
        openDialog(desk);
        const auto* combo = desk.find<QComboBox>("comPortCombo");
        QCOMPARE(entries(combo), portList());
        QCOMPARE(combo->currentText(), QString("AUTO"));
    }

    void openingAndClosingPutsThePortToAuto()
    {
        const Desk desk;
        QCOMPARE(desk.settings()->getCOMPort(), desk.camera.portName());
        openDialog(desk)->close();
        QCOMPARE(desk.settings()->getCOMPort(), QString("AUTO"));
    }

    void openingAgainStoresAnEmptyPortThenAuto()
    {
        QStringList stored;
        const Desk desk;
        const auto* combo = desk.find<QComboBox>("comPortCombo");
        connect(combo, &QComboBox::currentTextChanged, desk.settings(),
                [list = &stored, settings = desk.settings()] { list->append(settings->getCOMPort()); });

        openDialog(desk)->close();
        QCOMPARE(stored, QStringList({"AUTO"}));
        stored.clear();
        openDialog(desk);
        QCOMPARE(stored, QStringList({"", "AUTO"}));
        QCOMPARE(entries(combo), portList());
    }

    void choosingAPortStoresItUntilTheDialogIsOpenedAgain()
    {
        const Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        auto* combo = desk.find<QComboBox>("comPortCombo");
        combo->addItem("ttyUSB7");

        combo->setCurrentText("ttyUSB7");
        QCOMPARE(desk.settings()->getCOMPort(), QString("ttyUSB7"));
        dialog->close();
        QCOMPARE(desk.settings()->getCOMPort(), QString("ttyUSB7"));
        openDialog(desk);
        QCOMPARE(desk.settings()->getCOMPort(), QString("AUTO"));
        QCOMPARE(entries(combo), portList());
    }

    void beingShownAgainByTheWindowSystemChangesNothing()
    {
        const Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        auto* combo = desk.find<QComboBox>("comPortCombo");
        combo->addItem("ttyUSB7");
        combo->setCurrentText("ttyUSB7");

        QShowEvent restored;
        QSpontaneKeyEvent::setSpontaneous(&restored);
        QVERIFY(restored.spontaneous());
        QCoreApplication::instance()->notify(dialog, &restored);
        QCOMPARE(combo->currentText(), QString("ttyUSB7"));
        QCOMPARE(desk.settings()->getCOMPort(), QString("ttyUSB7"));
    }

    void theSettingsButtonDoesNotRefillAnOpenDialog()
    {
        const Desk desk;
        openDialog(desk);
        auto* combo = desk.find<QComboBox>("comPortCombo");
        combo->addItem("ttyUSB7");
        combo->setCurrentText("ttyUSB7");

        openDialog(desk);
        QCOMPARE(combo->currentText(), QString("ttyUSB7"));
        QCOMPARE(desk.settings()->getCOMPort(), QString("ttyUSB7"));
    }

    void escapeHidesTheDialogAndRevertsNothing()
    {
        Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        desk.find<QSlider>("panSpeedSlider")->setValue(9);
        desk.find<QCheckBox>("invertPanCheck")->click();
        const QVariantMap stored = storedSettings(desk);

        QTest::keyClick(dialog, Qt::Key_Escape);
        QVERIFY(dialog->isHidden());
        QCOMPARE(storedSettings(desk), stored);
        QCOMPARE(stored.value("panspeed").toInt(), 9);

        openDialog(desk);
        QVERIFY(dialog->isVisible());
        QCOMPARE(desk.find<QSlider>("panSpeedSlider")->value(), 9);
        QVERIFY(desk.find<QCheckBox>("invertPanCheck")->isChecked());
    }

    void closingHidesTheDialogAndReopeningKeepsItsWidgets()
    {
        const Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        desk.find<QSlider>("zoomSpeedSlider")->setValue(2);

        dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(dialogOf(desk), dialog);
        QVERIFY(dialog->isHidden());
        QVERIFY(desk.program->app.mainWin->isVisible());
        desk.settings()->setZoomSpeed(6);
        openDialog(desk);
        QCOMPARE(dialogOf(desk), dialog);
        QCOMPARE(desk.find<QSlider>("zoomSpeedSlider")->value(), 2);
        QCOMPARE(desk.settings()->getZoomSpeed(), 6);
    }

    void theEnterKeyDoesNotCloseTheDialog()
    {
        const Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        QTest::keyClick(dialog, Qt::Key_Return);
        QVERIFY(dialog->isVisible());
    }

    void loadingCopiesTheStoredValuesIntoTheWidgets()
    {
        const Desk desk;
        desk.settings()->setTiltSpeed(11);
        desk.settings()->setInvertTilt(true);
        dialogOf(desk)->loadSavedSettings();
        QCOMPARE(desk.find<QSlider>("tiltSpeedSlider")->value(), 11);
        QCOMPARE(desk.find<QLabel>("tiltSpeedLabel")->text(), QString("Tilt Speed(11)"));
        QVERIFY(desk.find<QCheckBox>("invertTiltCheck")->isChecked());
    }

    void runAsAdministratorIsNotTouched()
    {
        Desk desk;
        const QVariantMap before = storedSettings(desk);
        QMetaObject::invokeMethod(dialogOf(desk), "onRunAsAdminChecked");
        QCOMPARE(storedSettings(desk), before);
        QVERIFY(desk.profile.osascriptRuns().isEmpty());
    }

    // When a change takes effect.

    void speedsActAtTheNextCommand()
    {
        Desk desk;
        openDialog(desk);
        desk.find<QSlider>("panSpeedSlider")->setValue(18);
        desk.find<QSlider>("tiltSpeedSlider")->setValue(14);
        desk.find<QSlider>("zoomSpeedSlider")->setValue(1);

        QTest::mousePress(desk.find<QPushButton>("upBtn"), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray("81 01 06 01 12 0e 03 01 ff"));
        QTest::mouseRelease(desk.find<QPushButton>("upBtn"), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray("81 01 06 01 12 0e 03 03 ff"));
        QTest::mousePress(desk.find<QPushButton>("zoomInBtn"), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray("81 01 04 07 21 ff"));
    }

    void theStartUpPresetActsAtTheNextConnection()
    {
        Desk desk;
        const CameraEnd& camera = desk.camera;
        openDialog(desk);
        auto* ports = desk.find<QComboBox>("comPortCombo");
        ports->addItem(camera.portName());
        ports->setCurrentText(camera.portName());
        desk.find<QCheckBox>("startUpPresetCheck")->click();
        desk.find<QComboBox>("startUpPresetCombo")->setCurrentText("PRESET33");
        QCOMPARE(desk.profile.log(), QStringList());

        desk.find<QPushButton>("connectBtn")->click();
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(33));
    }

    void theDialogLeavesAnOpenConnectionAlone()
    {
        Desk desk;
        const QString status = statusText(desk);
        openDialog(desk);
        desk.find<QComboBox>("baudRateCombo")->setCurrentText("Baud115200");
        dialogOf(desk)->close();

        QVERIFY(desk.link()->isConnected());
        QCOMPARE(statusText(desk), status);
        desk.find<QPushButton>("preset1Btn")->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(1));
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void itOpensFromAWindowThatWasNeverShown()
    {
        const Desk desk;
        AppMainWin hidden(nullptr);
        auto* settings = hidden.findChild<QDialog*>();
        const AppSettingsPlace place(settings);

        QMetaObject::invokeMethod(&hidden, "onSettingsBtnClicked");

        QVERIFY(settings->isVisible());
    }

private:
    static void speeds()
    {
        QTest::addColumn<Speed>("speed");
        for (const Speed& speed : Speeds)
            QTest::newRow(speed.key) << speed;
    }

    static void checks()
    {
        QTest::addColumn<Check>("check");
        for (const Check& check : Checks)
            QTest::newRow(check.key) << check;
    }

    static QString statusText(const Desk& desk)
    {
        return desk.find<QWidget>("statusBar")->findChild<QLabel*>()->text();
    }
};

QTEST_APPLESS_MAIN(SettingsDialogTest)
#include "SettingsDialogTest.moc"
