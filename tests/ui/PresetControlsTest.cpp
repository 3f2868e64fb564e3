#include "support/Desk.h"
#include "support/Form.h"
#include "support/Frames.h"

#include <QLineEdit>
#include <QPushButton>

namespace {

constexpr char NumberMessage[] = "Please enter number between 1 and 64.";

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
    return presetToolTips(desk.program->app.mainWin);
}

QStringList defaultNamesBut(int preset, const QString& name)
{
    QStringList names = defaultPresetNames();
    names[preset - 1] = name;
    return names;
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

    void aQuickButtonRecallsItsPresetWhenItIsReleased()
    {
        Desk desk;
        QStringList log;
        for (int preset = 1; preset <= 9; ++preset) {
            QPushButton* button = presetButton(desk, preset);
            QTest::mousePress(button, Qt::LeftButton);
            QCOMPARE(desk.profile.log(), log);
            QTest::mouseRelease(button, Qt::LeftButton);
            log.append("Call Preset" + QString::number(preset));
            QCOMPARE(desk.camera.nextFrame(), recallPreset(preset));
            QCOMPARE(desk.profile.log(), log);
        }
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void callAndSetActOnTheTypedPreset_data()
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

    void callAndSetActOnTheTypedPreset()
    {
        QFETCH(QString, text);
        QFETCH(int, preset);
        Desk desk;
        pressCall(desk, text);
        QCOMPARE(desk.camera.nextFrame(), recallPreset(preset));
        QVERIFY(desk.user.boxes().isEmpty());

        pressSet(desk, text, "Choir");
        QCOMPARE(desk.camera.nextFrame(), setPreset(preset));
        QCOMPARE(desk.user.texts(), QStringList({confirmation(preset)}));
        QCOMPARE(desk.settings()->getPresetName(preset), QString("Choir"));
        const QString number = QString::number(preset);
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset" + number, "Set Preset" + number}));
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
        // A tooltip shows it only if the names are loaded.
        desk.settings()->setPresetName(1, "Desk");
        pressCall(desk, text);
        QCOMPARE(desk.user.texts(), QStringList({NumberMessage}));
        pressSet(desk, text, "Choir");
        QCOMPARE(desk.user.texts(), QStringList({NumberMessage, NumberMessage}));
        QCOMPARE(desk.user.boxes().constLast().title, QString("Vantrel"));

        QCOMPARE(desk.profile.log(), QStringList());
        QCOMPARE(desk.camera.pending(), QByteArray());
        QCOMPARE(toolTips(desk), defaultPresetNames());
        QCOMPARE(desk.find<QLineEdit>("presetEdit")->text(), text);
        QCOMPARE(desk.find<QLineEdit>("presetNameEdit")->text(), QString("Choir"));
        desk.program.reset();
        QCOMPARE(QSettings(desk.profile.settingsFile(), QSettings::IniFormat).allKeys().size(), 2);
    }

    void returnInTheFieldsDoesNothing()
    {
        Desk desk;
        auto* number = desk.find<QLineEdit>("presetEdit");
        auto* name = desk.find<QLineEdit>("presetNameEdit");

        QTest::keyClicks(number, "5\r");
        QTest::keyClicks(name, "Desk\r");

        QCOMPARE(number->text(), QString("5"));
        QCOMPARE(name->text(), QString("Desk"));
        QCOMPARE(desk.profile.log(), QStringList());
        // The first frame is that of the button.
        presetButton(desk, 1)->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(1));
    }

    void setSendsAndLogsThenConfirmsThenNames()
    {
        Desk desk;
        QByteArray frameWhileOpen;
        QStringList logWhileOpen;
        QString nameWhileOpen;
        QString toolTipWhileOpen;
        desk.user.whenOpen([&] {
            frameWhileOpen = desk.camera.nextFrame();
            logWhileOpen = desk.profile.log();
            nameWhileOpen = desk.settings()->getPresetName(3);
            toolTipWhileOpen = presetButton(desk, 3)->toolTip();
        });
        pressSet(desk, "3", "Desk");

        QCOMPARE(desk.user.texts(), QStringList({confirmation(3)}));
        QCOMPARE(frameWhileOpen, setPreset(3));
        QCOMPARE(logWhileOpen, QStringList("Set Preset3"));
        QCOMPARE(nameWhileOpen, QString("Preset3"));
        QCOMPARE(toolTipWhileOpen, QString("Preset3"));
        QCOMPARE(desk.settings()->getPresetName(3), QString("Desk"));
        QCOMPARE(toolTips(desk), defaultNamesBut(3, "Desk"));
    }

    void setShowsAllNamesInTheToolTipsAndNowhereElse()
    {
        const Desk desk;
        QStringList names;
        for (int preset = 1; preset <= 9; ++preset) {
            names.append(QString::fromUtf8("<b>Chœur</b> &amp; %1").arg(preset));
            desk.settings()->setPresetName(preset, names.constLast());
        }
        pressSet(desk, "12", "Gallery");
        QCOMPARE(toolTips(desk), names);
        for (int preset = 1; preset <= 9; ++preset) {
            QCOMPARE(accessibleName(presetButton(desk, preset)), QString("Preset %1").arg(preset));
            QCOMPARE(presetButton(desk, preset)->text(), QString());
        }
    }

    void anEmptyNameBecomesTheDefaultNameAndBlanksAreKept()
    {
        Desk desk;
        const QStringList names{"Desk", "", "  ", ""};
        for (const QString& name : names) {
            pressSet(desk, "5", name);
            QCOMPARE(presetButton(desk, 5)->toolTip(), name.isEmpty() ? "Preset5" : name);
        }
        desk.program.reset();
        QCOMPARE(desk.profile.stored(desk.camera.portName() + "_5").toString(), QString("Preset5"));
    }

    void theToolTipsFollowThePortSettingAtTheNextSetOrConnect()
    {
        const Desk desk;
        pressSet(desk, "3", "Desk");
        const QStringList names = defaultNamesBut(3, "Desk");
        desk.settings()->setCOMPort("AUTO");
        QCOMPARE(toolTips(desk), names);
        pressSet(desk, "4", "Altar");
        const QStringList otherNames = defaultNamesBut(4, "Altar");
        QCOMPARE(toolTips(desk), otherNames);

        desk.settings()->setCOMPort(desk.camera.portName());
        QCOMPARE(toolTips(desk), otherNames);
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(toolTips(desk), otherNames);
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(toolTips(desk), names);
    }

    void withoutAPortRecallsAreLoggedAndSetStillNames()
    {
        Desk desk;
        desk.find<QPushButton>("connectBtn")->click();
        presetButton(desk, 1)->click();
        pressCall(desk, "64");
        QVERIFY(desk.user.boxes().isEmpty());
        pressSet(desk, "8", "Pulpit");
        QCOMPARE(desk.user.texts(), QStringList({confirmation(8)}));
        QCOMPARE(presetButton(desk, 8)->toolTip(), QString("Pulpit"));
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset1", "Call Preset64", "Set Preset8"}));

        desk.find<QPushButton>("connectBtn")->click();
        presetButton(desk, 2)->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(2));
    }
};

QTEST_APPLESS_MAIN(PresetControlsTest)
#include "PresetControlsTest.moc"
