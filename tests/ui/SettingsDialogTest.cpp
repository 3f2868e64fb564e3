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
#include <QPushButton>
#include <QSerialPortInfo>
#include <QSettings>
#include <QSlider>

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

// All stored settings, after the store has written the file.
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
        QCOMPARE(privateSlots(AppSettingWin::staticMetaObject), expected);
    }

    void theDialogHasMinimiseAndCloseButtonsOnly()
    {
        const Desk desk;
        // Qt gives every such window the title and the system menu as well.
        QCOMPARE(dialogOf(desk)->windowFlags(), Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                                    Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    }

    void theDialogFitsItsContent()
    {
        const QSize fitting = FormAlone<QDialog, Ui_AppSettingWin>::fittingSize();
        QVERIFY(fitting != QSize(250, 339));
        QCOMPARE(dialogOf(Desk())->size(), fitting);
    }

    void aFreshAccountShowsTheDefaults()
    {
        const Desk desk;
        for (const Speed& speed : Speeds) {
            QCOMPARE(desk.find<QSlider>(speed.slider)->value(), 5);
            QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(5));
        }
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
                         {"isstartuppreset", true}});
        for (const Speed& speed : Speeds) {
            QCOMPARE(desk.find<QSlider>(speed.slider)->value(), speed.maximum);
            QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(speed.maximum));
        }
        QCOMPARE(desk.find<QComboBox>("startUpPresetCombo")->currentText(), QString("PRESET64"));
        QVERIFY(desk.find<QComboBox>("startUpPresetCombo")->isEnabled());
        QCOMPARE(desk.find<QComboBox>("baudRateCombo")->currentText(), QString("Baud57600"));
    }

    void aStoredCheckIsShownInItsOwnCheckBox_data() { checks(); }

    void aStoredCheckIsShownInItsOwnCheckBox()
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

    void aSpeedOutOfRangeIsShownAsTheNearestAndStaysStored_data()
    {
        QTest::addColumn<Speed>("speed");
        QTest::addColumn<int>("value");
        for (const Speed& speed : Speeds) {
            for (const int value : {24, 0, -3})
                QTest::addRow("%s %d", speed.key, value) << speed << value;
        }
    }

    void aSpeedOutOfRangeIsShownAsTheNearestAndStaysStored()
    {
        QFETCH(Speed, speed);
        QFETCH(int, value);
        Desk desk({{speed.key, value}});
        const int nearest = value > 1 ? speed.maximum : 1;
        QCOMPARE(desk.find<QSlider>(speed.slider)->value(), nearest);
        QCOMPARE(desk.find<QLabel>(speed.label)->text(), QString(speed.text).arg(nearest));
        openDialog(desk);
        QCOMPARE(storedSettings(desk).value(speed.key).toInt(), value);
    }

    void movingASliderStoresItsSpeedOnly_data()
    {
        QTest::addColumn<Speed>("speed");
        for (const Speed& speed : Speeds)
            QTest::newRow(speed.key) << speed;
    }

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

    void switchingACheckBoxStoresItsChoiceOnly_data() { checks(); }

    void switchingACheckBoxStoresItsChoiceOnly()
    {
        QFETCH(Check, check);
        Desk desk;
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);
        auto* checkBox = desk.find<QCheckBox>(check.checkBox);

        checkBox->click();
        expected.insert(check.key, "true");
        QCOMPARE(storedSettings(desk), expected);
        checkBox->click();
        expected.insert(check.key, "false");
        QCOMPARE(storedSettings(desk), expected);
    }

    void aCheckBoxSwitchedByAssistiveSoftwareActsAsClicked()
    {
        Desk desk;
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);
        auto* checkBox = desk.find<QCheckBox>("invertPanCheck");
        QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(checkBox);
        QCOMPARE(interface->role(), QAccessible::CheckBox);
        QCOMPARE(interface->text(QAccessible::Name), checkBox->text());
        QVERIFY(interface->state().checkable);

        for (const char* choice : {"true", "false"}) {
            interface->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
            expected.insert("invertpan", choice);
            QTRY_COMPARE(storedSettings(desk), expected);
            QCOMPARE(interface->state().checked, checkBox->isChecked());
        }
        interface->actionInterface()->doAction(QAccessibleActionInterface::setFocusAction());
        QTRY_VERIFY(checkBox->hasFocus());
        QCOMPARE(storedSettings(desk), expected);
    }

    void aListHasADescriptionForAssistiveSoftwareAndNoLabel()
    {
        const Desk desk;
        constexpr const char* Lists[][2] = {{"comPortCombo", "COM port"},
                                            {"baudRateCombo", "Baud rate"},
                                            {"startUpPresetCombo", "Preset to recall at every connect"}};
        for (const auto& [name, description] : Lists) {
            const QAccessibleInterface* list =
                QAccessible::queryAccessibleInterface(desk.find<QComboBox>(name));
            QCOMPARE(list->text(QAccessible::Description), QString(description));
            // With a label, a screen reader would read the label instead of the choice.
            QVERIFY(list->relations(QAccessible::Label).isEmpty());
        }
    }

    void aCheckBoxThatTheProgramChecksStoresNothing_data() { checks(); }

    void aCheckBoxThatTheProgramChecksStoresNothing()
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

    void theStartUpPresetCheckEnablesTheList()
    {
        Desk desk({{"startuppreset", 12}});
        openDialog(desk);
        const auto* combo = desk.find<QComboBox>("startUpPresetCombo");
        for (const bool isEnabled : {false, true, false}) {
            QCOMPARE(combo->isEnabled(), isEnabled);
            QCOMPARE(combo->currentText(), QString("PRESET12"));
            desk.find<QCheckBox>("startUpPresetCheck")->click();
        }
    }

    void everyStartUpPresetOfTheListIsStored()
    {
        Desk desk({{"isstartuppreset", true}, {"startuppreset", 64}});
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);
        auto* combo = desk.find<QComboBox>("startUpPresetCombo");
        QCOMPARE(combo->count(), 64);
        for (int preset = 1; preset <= 64; ++preset) {
            combo->setCurrentText("PRESET" + QString::number(preset));
            QCOMPARE(combo->currentIndex(), preset - 1);
            QCOMPARE(desk.settings()->getStartUpPreset(), preset);
        }
        QCOMPARE(storedSettings(desk), expected);
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

    void everyBaudRateOfTheListIsStored()
    {
        Desk desk;
        openDialog(desk);
        QVariantMap expected = storedSettings(desk);
        auto* combo = desk.find<QComboBox>("baudRateCombo");
        QStringList texts;
        int index = 0;
        for (const char* baudRate : {"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"}) {
            combo->setCurrentIndex(index++);
            texts.append(QString("Baud") + baudRate);
            expected.insert("baudrate", baudRate);
            QCOMPARE(storedSettings(desk), expected);
        }
        QCOMPARE(entries(combo), texts);
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

    void eachOpeningListsThePortsAndStoresAuto()
    {
        QStringList stored;
        const Desk desk;
        const auto* combo = desk.find<QComboBox>("comPortCombo");
        connect(combo, &QComboBox::currentTextChanged, desk.settings(),
                [list = &stored, settings = desk.settings()] { list->append(settings->getCOMPort()); });

        openDialog(desk)->close();
        QCOMPARE(stored, QStringList({"AUTO"}));
        QCOMPARE(entries(combo), portList());
        openDialog(desk);
        QCOMPARE(stored, QStringList({"AUTO", "", "AUTO"}));
        QCOMPARE(entries(combo), portList());
    }

    void aChosenPortStaysUntilTheDialogIsOpenedAgain()
    {
        const Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        auto* combo = desk.find<QComboBox>("comPortCombo");
        combo->addItem("ttyUSB7");
        combo->setCurrentText("ttyUSB7");

        openDialog(desk);
        // The window system shows it again, as after it was minimised.
        QShowEvent restored;
        QSpontaneKeyEvent::setSpontaneous(&restored);
        QVERIFY(restored.spontaneous());
        QCoreApplication::instance()->notify(dialog, &restored);
        dialog->close();

        QCOMPARE(combo->currentText(), QString("ttyUSB7"));
        QCOMPARE(desk.settings()->getCOMPort(), QString("ttyUSB7"));
        openDialog(desk);
        QCOMPARE(desk.settings()->getCOMPort(), QString("AUTO"));
    }

    void hidingTheDialogRevertsNothing_data()
    {
        QTest::addColumn<bool>("byEscape");
        QTest::newRow("Escape") << true;
        QTest::newRow("closed") << false;
    }

    void hidingTheDialogRevertsNothing()
    {
        QFETCH(bool, byEscape);
        Desk desk;
        AppSettingWin* dialog = openDialog(desk);
        desk.find<QSlider>("zoomSpeedSlider")->setValue(2);
        const QVariantMap stored = storedSettings(desk);

        if (byEscape)
            QTest::keyClick(dialog, Qt::Key_Escape);
        else
            dialog->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(dialog->isHidden());
        QVERIFY(desk.program->app.mainWin->isVisible());
        QCOMPARE(storedSettings(desk), stored);
        QCOMPARE(stored.value("zoomspeed").toInt(), 2);

        // It is the same dialog, which does not read the settings again.
        desk.settings()->setZoomSpeed(6);
        QCOMPARE(openDialog(desk), dialog);
        QCOMPARE(desk.find<QSlider>("zoomSpeedSlider")->value(), 2);
        QCOMPARE(desk.settings()->getZoomSpeed(), 6);
    }

    void theDialogLeavesAnOpenConnectionAlone()
    {
        Desk desk;
        const auto* status = desk.find<QWidget>("statusBar")->findChild<QLabel*>();
        const QString before = status->text();
        openDialog(desk);
        desk.find<QComboBox>("baudRateCombo")->setCurrentText("Baud115200");
        dialogOf(desk)->close();

        QVERIFY(desk.link()->isConnected());
        QCOMPARE(status->text(), before);
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
    static void checks()
    {
        QTest::addColumn<Check>("check");
        for (const Check& check : Checks)
            QTest::newRow(check.key) << check;
    }
};

QTEST_APPLESS_MAIN(SettingsDialogTest)
#include "SettingsDialogTest.moc"
