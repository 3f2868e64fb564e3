#include "support/Desk.h"
#include "support/Form.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTextDocument>

namespace {

constexpr char NumberMessage[] = "Please enter number between 1 and 64.";

QByteArray presetFrame(const char* action, int preset)
{
    return "81 01 04 3f " + QByteArray(action) + ' ' + QByteArray(1, char(preset)).toHex() + " ff";
}

QByteArray recallFrame(int preset)
{
    return presetFrame("02", preset);
}

QByteArray storeFrame(int preset)
{
    return presetFrame("01", preset);
}

QString confirmation(int preset)
{
    return "Preset No" + QString::number(preset) + " is set.";
}

QPushButton* presetButton(const Desk& desk, int preset)
{
    return desk.find<QPushButton>(qPrintable("preset" + QString::number(preset) + "Btn"));
}

QStringList toolTips(const Desk& desk)
{
    QStringList names;
    for (int preset = 1; preset <= 9; ++preset)
        names.append(presetButton(desk, preset)->toolTip());
    return names;
}

QStringList defaultNames()
{
    return {"Preset1", "Preset2", "Preset3", "Preset4", "Preset5",
            "Preset6", "Preset7", "Preset8", "Preset9"};
}

void pressCall(const Desk& desk, const QString& number)
{
    desk.find<QLineEdit>("presetEdit")->clear();
    QTest::keyClicks(desk.find<QLineEdit>("presetEdit"), number);
    QTest::mouseClick(desk.find<QPushButton>("callBtn"), Qt::LeftButton);
}

void pressSet(const Desk& desk, const QString& number, const QString& name)
{
    desk.find<QLineEdit>("presetEdit")->clear();
    desk.find<QLineEdit>("presetNameEdit")->clear();
    QTest::keyClicks(desk.find<QLineEdit>("presetEdit"), number);
    QTest::keyClicks(desk.find<QLineEdit>("presetNameEdit"), name);
    QTest::mouseClick(desk.find<QPushButton>("setBtn"), Qt::LeftButton);
}

} // namespace

/** Recalling, storing and naming presets. */
class PresetControlsTest : public QObject
{
    Q_OBJECT

private slots:

    void aQuickButtonRecallsItsPreset_data() { quickPresets(); }

    void aQuickButtonRecallsItsPreset()
    {
        QFETCH(int, preset);
        Desk desk;
        QTest::mouseClick(presetButton(desk, preset), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), recallFrame(preset));
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset" + QString::number(preset)}));
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void aQuickButtonActsOnTheCompletedClickOnly_data() { quickPresets(); }

    void aQuickButtonActsOnTheCompletedClickOnly()
    {
        QFETCH(int, preset);
        const Desk desk;
        QPushButton* button = presetButton(desk, preset);

        QTest::mousePress(button, Qt::LeftButton);
        QCOMPARE(desk.profile.log(), QStringList());
        QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(-20, -20));
        QCOMPARE(desk.profile.log(), QStringList());
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(desk.profile.log().size(), 1);
    }

    void theSpaceKeyPressesAQuickButton()
    {
        Desk desk;
        QTest::keyClick(presetButton(desk, 4), Qt::Key_Space);
        QCOMPARE(desk.camera.nextFrame(), recallFrame(4));
    }

    void callRecallsTheTypedPreset_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("preset");
        QTest::newRow("the first") << QString("1") << 1;
        QTest::newRow("a quick preset") << QString("7") << 7;
        QTest::newRow("the last") << QString("64") << 64;
        QTest::newRow("blanks around it") << QString(" 12 ") << 12;
        QTest::newRow("leading zeros") << QString("010") << 10;
        QTest::newRow("a plus sign") << QString("+5") << 5;
    }

    void callRecallsTheTypedPreset()
    {
        QFETCH(QString, text);
        QFETCH(int, preset);
        Desk desk;
        pressCall(desk, text);
        QCOMPARE(desk.camera.nextFrame(), recallFrame(preset));
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset" + QString::number(preset)}));
        QVERIFY(desk.user.boxes().isEmpty());
        QCOMPARE(desk.find<QLineEdit>("presetEdit")->text(), text);
    }

    void setStoresTheTypedPreset_data() { callRecallsTheTypedPreset_data(); }

    void setStoresTheTypedPreset()
    {
        QFETCH(QString, text);
        QFETCH(int, preset);
        Desk desk;
        pressSet(desk, text, "Choir");
        QCOMPARE(desk.camera.nextFrame(), storeFrame(preset));
        QCOMPARE(desk.profile.log(), QStringList({"Set Preset" + QString::number(preset)}));
        QCOMPARE(desk.user.texts(), QStringList({confirmation(preset)}));
        QCOMPARE(desk.settings()->getPresetName(preset), QString("Choir"));
        QCOMPARE(desk.find<QLineEdit>("presetEdit")->text(), text);
        QCOMPARE(desk.find<QLineEdit>("presetNameEdit")->text(), QString("Choir"));
    }

    void callAndSetRejectOtherNumbers_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text :
             {"0", "65", "-1", "abc", "", " ", "7a", "7.5", "0x10", "1 2", "99", "255", "256", "257",
              "-2147483648", "2147483648", "4294967297", "99999999999999999999"})
            QTest::addRow("'%s'", text) << QString(text);
    }

    void callAndSetRejectOtherNumbers()
    {
        QFETCH(QString, text);
        Desk desk;
        pressCall(desk, text);
        QCOMPARE(desk.user.texts(), QStringList({NumberMessage}));
        pressSet(desk, text, "Choir");
        QCOMPARE(desk.user.texts(), QStringList({NumberMessage, NumberMessage}));
        QCOMPARE(desk.user.boxes().constLast().title, QString("Vantrel"));

        QCOMPARE(desk.profile.log(), QStringList());
        QCOMPARE(desk.camera.pending(), QByteArray());
        QCOMPARE(toolTips(desk), defaultNames());
        QCOMPARE(desk.find<QLineEdit>("presetEdit")->text(), text);
        QCOMPARE(desk.find<QLineEdit>("presetNameEdit")->text(), QString("Choir"));
        desk.program.reset();
        QCOMPARE(QSettings(desk.profile.settingsFile(), QSettings::IniFormat).allKeys(),
                 QStringList({"comport"}));
    }

    void aRejectedSetDoesNotReloadTheNames()
    {
        const Desk desk;
        desk.settings()->setPresetName(1, "Desk");
        pressSet(desk, "65", "Choir");
        QCOMPARE(toolTips(desk), defaultNames());
    }

    void setNamesThePresetOnceTheConfirmationIsDismissed()
    {
        Desk desk;
        QByteArray frameWhileOpen;
        QString nameWhileOpen;
        QString toolTipWhileOpen;
        desk.user.whenOpen([&] {
            frameWhileOpen = desk.camera.nextFrame();
            nameWhileOpen = desk.settings()->getPresetName(3);
            toolTipWhileOpen = presetButton(desk, 3)->toolTip();
        });
        pressSet(desk, "3", "Desk");

        QCOMPARE(desk.user.texts(), QStringList({confirmation(3)}));
        QCOMPARE(frameWhileOpen, storeFrame(3));
        QCOMPARE(nameWhileOpen, QString("Preset3"));
        QCOMPARE(toolTipWhileOpen, QString("Preset3"));
        QCOMPARE(desk.settings()->getPresetName(3), QString("Desk"));
        QStringList names = defaultNames();
        names[2] = "Desk";
        QCOMPARE(toolTips(desk), names);
    }

    void aNameIsTheToolTipAndNothingElse_data() { quickPresets(); }

    void aNameIsTheToolTipAndNothingElse()
    {
        QFETCH(int, preset);
        const Desk desk;
        desk.settings()->setPresetName(preset, QString::fromUtf8("Chœur à gauche"));
        desk.program->app.mainWin->loadPresetNames();

        QStringList names = defaultNames();
        names[preset - 1] = QString::fromUtf8("Chœur à gauche");
        QCOMPARE(toolTips(desk), names);
        QCOMPARE(accessibleName(presetButton(desk, preset)), QString("Preset %1").arg(preset));
        QCOMPARE(presetButton(desk, preset)->text(), QString());
    }

    void aNameWithMarkupIsTheToolTipAsItIsStored()
    {
        const QString name = "<h1>Altar</h1>  &amp; <b>Chor";
        const Desk desk;
        desk.settings()->setPresetName(4, name);
        desk.program->app.mainWin->loadPresetNames();

        QCOMPARE(presetButton(desk, 4)->toolTip(), name);
    }

    void anEmptyNameStoresTheDefaultName()
    {
        Desk desk;
        pressSet(desk, "12", "");
        QCOMPARE(desk.user.texts(), QStringList({confirmation(12)}));
        QCOMPARE(toolTips(desk), defaultNames());

        desk.program.reset();
        QCOMPARE(storedNames(desk), QStringList({"Preset12"}));
    }

    void anEmptyNameTakesAnEarlierNameAway()
    {
        const Desk desk;
        pressSet(desk, "5", "Desk");
        QCOMPARE(presetButton(desk, 5)->toolTip(), QString("Desk"));
        pressSet(desk, "5", "");
        QCOMPARE(presetButton(desk, 5)->toolTip(), QString("Preset5"));
        QCOMPARE(desk.settings()->getPresetName(5), QString("Preset5"));
    }

    void aNameOfBlanksIsKept()
    {
        const Desk desk;
        pressSet(desk, "2", "  ");
        QCOMPARE(desk.settings()->getPresetName(2), QString("  "));
        QCOMPARE(presetButton(desk, 2)->toolTip(), QString("  "));
    }

    void namesAbove9AreStoredThoughNotShown()
    {
        const Desk desk;
        pressSet(desk, "10", "Gallery");
        QCOMPARE(desk.settings()->getPresetName(10), QString("Gallery"));
        QCOMPARE(toolTips(desk), defaultNames());
    }

    void setReloadsAllNames()
    {
        const Desk desk;
        desk.settings()->setPresetName(1, "Desk");
        desk.settings()->setPresetName(9, "Door");
        pressSet(desk, "12", "");
        QStringList names = defaultNames();
        names[0] = "Desk";
        names[8] = "Door";
        QCOMPARE(toolTips(desk), names);
    }

    void storedNamesShowAtTheConnection()
    {
        const PrivateProfile profile;
        const CameraEnd camera;
        profile.store("comport", camera.portName());
        {
            const Program first;
            first.app.mainWin->savePresetName(6, "Organ");
        }
        const Program second;
        QCOMPARE(second.find<QPushButton>("preset6Btn")->toolTip(), QString("Organ"));
    }

    void namesBelongToThePortSetting()
    {
        const Desk desk;
        pressSet(desk, "3", "Desk");
        QStringList names = defaultNames();
        names[2] = "Desk";

        desk.settings()->setCOMPort("AUTO");
        QCOMPARE(toolTips(desk), names);
        pressSet(desk, "4", "Altar");
        QStringList otherNames = defaultNames();
        otherNames[3] = "Altar";
        QCOMPARE(toolTips(desk), otherNames);

        desk.settings()->setCOMPort(desk.camera.portName());
        QCOMPARE(toolTips(desk), otherNames);
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(toolTips(desk), otherNames);
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(toolTips(desk), names);
    }

    void withoutAPortSetStillConfirmsAndNames()
    {
        Desk desk;
        desk.find<QPushButton>("connectBtn")->click();
        pressSet(desk, "8", "Pulpit");
        QCOMPARE(desk.user.texts(), QStringList({confirmation(8)}));
        QCOMPARE(presetButton(desk, 8)->toolTip(), QString("Pulpit"));
        QCOMPARE(desk.profile.log(), QStringList({"Set Preset8"}));
        QCOMPARE(desk.camera.pending(), QByteArray());
    }

    void withoutAPortARecallIsLoggedOnly()
    {
        Desk desk;
        desk.find<QPushButton>("connectBtn")->click();
        presetButton(desk, 1)->click();
        pressCall(desk, "64");
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset1", "Call Preset64"}));
        QCOMPARE(desk.camera.pending(), QByteArray());
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void theEnterKeyInAFieldPressesNothing()
    {
        const Desk desk;
        desk.find<QLineEdit>("presetEdit")->setText("3");
        const auto buttons = desk.program->app.mainWin->findChildren<QPushButton*>();
        for (const char* field : {"presetEdit", "presetNameEdit"}) {
            desk.find<QLineEdit>(field)->setFocus();
            QTest::keyClick(desk.find<QLineEdit>(field), Qt::Key_Return);
            for (const QPushButton* button : buttons)
                QVERIFY2(!button->isDown(), qPrintable(button->objectName()));
        }
        QCOMPARE(desk.profile.log(), QStringList());
        QVERIFY(desk.user.boxes().isEmpty());
    }

private:
    static void quickPresets()
    {
        QTest::addColumn<int>("preset");
        for (int preset = 1; preset <= 9; ++preset)
            QTest::addRow("preset %d", preset) << preset;
    }

    // The preset names in the settings file.
    static QStringList storedNames(const Desk& desk)
    {
        const QSettings file(desk.profile.settingsFile(), QSettings::IniFormat);
        QStringList names;
        const auto keys = file.allKeys();
        for (const QString& key : keys) {
            if (key.contains('_'))
                names.append(file.value(key).toString());
        }
        return names;
    }
};

QTEST_APPLESS_MAIN(PresetControlsTest)
#include "PresetControlsTest.moc"
