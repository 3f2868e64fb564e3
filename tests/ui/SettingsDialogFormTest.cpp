#include "support/Form.h"

#include "ui_AppSettingWin.h"

#include <QAbstractButton>
#include <QDialog>
#include <QDialogButtonBox>
#include <QImage>
#include <QPushButton>
#include <QtTest>

namespace {

constexpr QRgb DarkGrey = 0xff333333;
constexpr QRgb White = 0xffffffff;

/** The form on a plain dialog, with no behaviour behind it. */
struct SettingsDialogForm
{
    SettingsDialogForm() { ui.setupUi(&dialog); }

    void show()
    {
        dialog.show();
        QTRY_VERIFY(dialog.isActiveWindow());
    }

    BareApplication application;
    QDialog dialog;
    Ui_AppSettingWin ui;
};

constexpr FormText Texts[] = {
    {"", "windowTitle", "Settings"},
    {"runOnStartUpCheck", "text", "Run on startup"},
    {"label", "text", "COM port"},
    {"label_5", "text", "BaudRate"},
    {"startUpPresetCheck", "text", "Start up Preset"},
    {"invertPanCheck", "text", "Invert Pan Controls"},
    {"invertTiltCheck", "text", "Invert Tilt Controls"},
    {"panSpeedLabel", "text", "Pan Speed(1)"},
    {"tiltSpeedLabel", "text", "Tilt Speed(1)"},
    {"zoomSpeedLabel", "text", "Zoom Speed(1)"},
};

struct SpeedSlider
{
    const char* name;
    int maximum;
};

constexpr SpeedSlider SpeedSliders[] = {
    {"panSpeedSlider", 18},
    {"tiltSpeedSlider", 14},
    {"zoomSpeedSlider", 7},
};

QImage screenshot(const QWidget* part)
{
    QWidget* window = part->window();
    return window->grab(QRect(part->mapTo(window, QPoint(0, 0)), part->size())).toImage();
}

bool hasColour(const QImage& image, QRgb colour)
{
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == colour)
                return true;
        }
    }
    return false;
}

} // namespace

Q_DECLARE_METATYPE(FormText)
Q_DECLARE_METATYPE(SpeedSlider)

/** The settings dialog's widgets, texts and look, before any behaviour. */
class SettingsDialogFormTest : public QObject
{
    Q_OBJECT

private slots:

    void theDialogHasItsSize()
    {
        const SettingsDialogForm form;
        QCOMPARE(form.dialog.objectName(), QString("AppSettingWin"));
        QCOMPARE(form.dialog.size(), QSize(250, 339));
        QCOMPARE(form.dialog.minimumSize(), QSize(250, 0));
        QCOMPARE(form.dialog.maximumSize(), QSize(NoLimit, NoLimit));
    }

    void theDialogKeepsItsOwnName()
    {
        const BareApplication application;
        QDialog dialog;
        dialog.setObjectName("preferences");
        Ui_AppSettingWin ui;
        ui.setupUi(&dialog);
        QCOMPARE(dialog.objectName(), QString("preferences"));
    }

    void theDialogCannotBeNarrowerThan250Pixels()
    {
        SettingsDialogForm form;
        form.show();
        form.dialog.resize(100, 400);
        QCOMPARE(form.dialog.width(), 250);
        form.dialog.resize(600, 400);
        QCOMPARE(form.dialog.width(), 600);
    }

    void theWidgetsAreThereInOrder()
    {
        const SettingsDialogForm form;
        QCOMPARE(namedChildren(&form.dialog),
                 QStringList({"QCheckBox runOnStartUpCheck", "QLabel label", "QComboBox comPortCombo",
                              "QLabel label_5", "QComboBox baudRateCombo", "QCheckBox startUpPresetCheck",
                              "QComboBox startUpPresetCombo", "QCheckBox invertPanCheck",
                              "QCheckBox invertTiltCheck", "QLabel panSpeedLabel", "QSlider panSpeedSlider",
                              "QLabel tiltSpeedLabel", "QSlider tiltSpeedSlider", "QLabel zoomSpeedLabel",
                              "QSlider zoomSpeedSlider"}));
    }

    void theLayoutIsOneColumnOfRows()
    {
        const SettingsDialogForm form;
        QCOMPARE(outline(form.dialog.layout()),
                 QString("verticalLayout("
                         "runOnStartUpCheck "
                         "horizontalLayout(label comPortCombo) "
                         "horizontalLayout_3(label_5 baudRateCombo) "
                         "horizontalLayout_2(startUpPresetCheck startUpPresetCombo) "
                         "invertPanCheck invertTiltCheck "
                         "panSpeedLabel panSpeedSlider "
                         "tiltSpeedLabel tiltSpeedSlider "
                         "zoomSpeedLabel zoomSpeedSlider)"));
        QCOMPARE(form.ui.verticalLayout->direction(), QBoxLayout::TopToBottom);
        for (const QBoxLayout* row :
             {form.ui.horizontalLayout, form.ui.horizontalLayout_3, form.ui.horizontalLayout_2})
            QCOMPARE(row->direction(), QBoxLayout::LeftToRight);
    }

    void theLayoutKeepsTheStylesSpacingAndMargins()
    {
        const SettingsDialogForm form;
        QWidget plain;
        const QVBoxLayout untouched(&plain);
        QCOMPARE(form.ui.verticalLayout->spacing(), untouched.spacing());
        QCOMPARE(form.ui.verticalLayout->contentsMargins(), untouched.contentsMargins());
    }

    void noWidgetHasASizePolicyOrSheetOfItsOwn()
    {
        const SettingsDialogForm form;
        const auto widgets = form.dialog.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(widgets.size(), 15);
        for (const QWidget* widget : widgets) {
            const QByteArray name = widget->objectName().toUtf8();
            QVERIFY2(widget->minimumSize() == QSize(0, 0), name);
            QVERIFY2(widget->maximumSize() == QSize(NoLimit, NoLimit), name);
            QVERIFY2(widget->styleSheet().isEmpty(), name);
            QVERIFY2(widget->toolTip().isEmpty(), name);
        }
        checkSizePolicies<QCheckBox>(form.dialog);
        checkSizePolicies<QComboBox>(form.dialog);
        checkSizePolicies<QLabel>(form.dialog);
        const auto sliders = form.dialog.findChildren<QSlider*>();
        for (const QSlider* slider : sliders)
            QCOMPARE(slider->sizePolicy(), QSlider(Qt::Horizontal).sizePolicy());
    }

    void nothingIsCheckedOrListedYet()
    {
        const SettingsDialogForm form;
        const auto checks = form.dialog.findChildren<QCheckBox*>();
        for (const QCheckBox* check : checks)
            QVERIFY2(!check->isChecked() && check->isEnabled() && !check->isTristate(),
                     qPrintable(check->objectName()));
        const auto combos = form.dialog.findChildren<QComboBox*>();
        for (const QComboBox* combo : combos)
            QVERIFY2(combo->count() == 0 && combo->isEnabled() && !combo->isEditable(),
                     qPrintable(combo->objectName()));
    }

    void theSlidersHaveTheirRanges_data() { speedSliders(); }

    void theSlidersHaveTheirRanges()
    {
        QFETCH(SpeedSlider, speed);
        const SettingsDialogForm form;
        const auto* slider = form.dialog.findChild<QSlider*>(speed.name);
        QCOMPARE(slider->minimum(), 1);
        QCOMPARE(slider->maximum(), speed.maximum);
        QCOMPARE(slider->value(), 1);
        QCOMPARE(slider->pageStep(), 2);
        QCOMPARE(slider->singleStep(), 1);
        QCOMPARE(slider->orientation(), Qt::Horizontal);
        QCOMPARE(slider->tickPosition(), QSlider::NoTicks);
        QVERIFY(slider->hasTracking());
    }

    void keysMoveASliderWithinItsRange_data() { speedSliders(); }

    void keysMoveASliderWithinItsRange()
    {
        QFETCH(SpeedSlider, speed);
        SettingsDialogForm form;
        form.show();
        auto* slider = form.dialog.findChild<QSlider*>(speed.name);

        QTest::keyClick(slider, Qt::Key_PageUp);
        QCOMPARE(slider->value(), 3);
        QTest::keyClick(slider, Qt::Key_PageDown);
        QCOMPARE(slider->value(), 1);
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(slider->value(), 2);
        QTest::keyClick(slider, Qt::Key_Left);
        QCOMPARE(slider->value(), 1);

        for (const int key : {Qt::Key_Left, Qt::Key_PageDown, Qt::Key_Home}) {
            QTest::keyClick(slider, Qt::Key(key));
            QCOMPARE(slider->value(), 1);
        }
        QTest::keyClick(slider, Qt::Key_End);
        QCOMPARE(slider->value(), speed.maximum);
        for (const int key : {Qt::Key_Right, Qt::Key_PageUp}) {
            QTest::keyClick(slider, Qt::Key(key));
            QCOMPARE(slider->value(), speed.maximum);
        }
    }

    void theSheetIsTheMainWindowsWithADialogRule()
    {
        const SettingsDialogForm form;
        const QStringList ownRules{"QToolTip { color : black }", "QDialog { background : #333333 }"};
        QCOMPARE(styleRules(form.dialog.styleSheet()), ownRules + sharedStyleRules());
    }

    void textsAreWritten_data() { texts(); }

    void textsAreWritten()
    {
        QFETCH(FormText, text);
        SettingsDialogForm form;
        QCOMPARE(formObject(&form.dialog, text.object)->property(text.property).toString(),
                 QString(text.text));
    }

    void textsCanBeTranslated_data() { texts(); }

    void textsCanBeTranslated()
    {
        QFETCH(FormText, text);
        SettingsDialogForm form;
        BracketTranslator translator("AppSettingWin");
        QCoreApplication::installTranslator(&translator);

        form.ui.retranslateUi(&form.dialog);
        QCOMPARE(formObject(&form.dialog, text.object)->property(text.property).toString(),
                 '<' + QString(text.text) + '>');
    }

    void assistiveSoftwareFindsEveryControlByName()
    {
        const SettingsDialogForm form;
        QCOMPARE(accessibleName(form.ui.runOnStartUpCheck), QString("Run on startup"));
        QCOMPARE(accessibleName(form.ui.comPortCombo), QString("COM port"));
        QCOMPARE(accessibleName(form.ui.baudRateCombo), QString("BaudRate"));
        QCOMPARE(accessibleName(form.ui.startUpPresetCheck), QString("Start up Preset"));
        QCOMPARE(accessibleName(form.ui.startUpPresetCombo), QString("Start up Preset"));
        QCOMPARE(accessibleName(form.ui.invertPanCheck), QString("Invert Pan Controls"));
        QCOMPARE(accessibleName(form.ui.invertTiltCheck), QString("Invert Tilt Controls"));
        QCOMPARE(accessibleName(form.ui.panSpeedSlider), QString("Pan Speed"));
        QCOMPARE(accessibleName(form.ui.tiltSpeedSlider), QString("Tilt Speed"));
        QCOMPARE(accessibleName(form.ui.zoomSpeedSlider), QString("Zoom Speed"));
    }

    void theTabKeyReachesEveryControlInOrder()
    {
        SettingsDialogForm form;
        form.show();
        QCOMPARE(tabOrder(form.ui.runOnStartUpCheck),
                 QStringList({"runOnStartUpCheck", "comPortCombo", "baudRateCombo", "startUpPresetCheck",
                              "startUpPresetCombo", "invertPanCheck", "invertTiltCheck", "panSpeedSlider",
                              "tiltSpeedSlider", "zoomSpeedSlider"}));
    }

    void thereAreNoPushButtons()
    {
        const SettingsDialogForm form;
        QVERIFY(form.dialog.findChildren<QPushButton*>().isEmpty());
        QVERIFY(form.dialog.findChildren<QDialogButtonBox*>().isEmpty());
    }

    void theDialogIsDarkGreyWithWhiteText()
    {
        SettingsDialogForm form;
        form.show();
        QCOMPARE(screenshot(&form.dialog).pixel(2, 2), DarkGrey);
        QVERIFY(hasColour(screenshot(form.ui.label), White));
        const QImage check = screenshot(form.ui.invertPanCheck);
        const int textBegin = indicator(form.ui.invertPanCheck).right() + 4;
        QVERIFY(hasColour(check.copy(textBegin, 0, check.width() - textBegin, check.height()), White));
    }

    void aCheckBoxIsWhiteAndTurnsDark()
    {
        SettingsDialogForm form;
        form.show();
        QCheckBox* check = form.ui.invertPanCheck;
        const QPoint centre = indicator(check).center();

        QCOMPARE(screenshot(check).pixel(centre), White);
        check->setChecked(true);
        QCOMPARE(screenshot(check).pixel(centre), 0xff1f1f1f);
    }

    void aComboBoxIsBlackish()
    {
        SettingsDialogForm form;
        form.ui.comPortCombo->addItem("AUTO");
        form.show();
        const QImage combo = screenshot(form.ui.comPortCombo);
        QCOMPARE(combo.pixel(combo.width() / 2, 3), 0xff111111);
        QVERIFY(hasColour(combo, White));
    }

    void aSliderHandleIsGreyLighterUnderTheMouseAndDarkPressed()
    {
        SettingsDialogForm form;
        form.show();
        QSlider* slider = form.ui.panSpeedSlider;
        const QPoint centre = handle(slider).center();
        const auto colour = [&] { return screenshot(slider).pixel(centre); };

        QTest::mouseMove(form.ui.invertPanCheck);
        QCOMPARE(colour(), 0xff808080);
        QTest::mouseMove(slider, centre);
        QTRY_COMPARE(colour(), 0xffc9c9c9);
        QTest::mousePress(slider, Qt::LeftButton, Qt::NoModifier, centre);
        QCOMPARE(colour(), 0xff474747);
        QTest::mouseRelease(slider, Qt::LeftButton, Qt::NoModifier, centre);
    }

private:
    template <class Widget> static void checkSizePolicies(const QDialog& dialog)
    {
        const auto widgets = dialog.findChildren<Widget*>();
        QVERIFY(!widgets.isEmpty());
        for (const Widget* widget : widgets)
            QCOMPARE(widget->sizePolicy(), Widget().sizePolicy());
    }

    static void texts()
    {
        QTest::addColumn<FormText>("text");
        for (const FormText& text : Texts)
            QTest::addRow("%s %s", text.object, text.property) << text;
    }

    static void speedSliders()
    {
        QTest::addColumn<SpeedSlider>("speed");
        for (const SpeedSlider& slider : SpeedSliders)
            QTest::newRow(slider.name) << slider;
    }
};

QTEST_APPLESS_MAIN(SettingsDialogFormTest)
#include "SettingsDialogFormTest.moc"
