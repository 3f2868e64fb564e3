#include "support/Form.h"

#include "ui_AppSettingWin.h"

#include <QDialog>

namespace {

constexpr QRgb DarkGrey = 0xff333333;
constexpr QRgb White = 0xffffffff;

using SettingsDialogForm = FormAlone<QDialog, Ui_AppSettingWin>;

QVector<FormText> texts()
{
    return {
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
}

} // namespace

/** The settings dialog's form: its widgets, texts and look. */
class SettingsDialogFormTest : public QObject
{
    Q_OBJECT

private slots:

    void theDialogHasItsSize()
    {
        const SettingsDialogForm form;
        QCOMPARE(form.window.objectName(), QString("AppSettingWin"));
        QCOMPARE(form.window.size(), QSize(250, 339));
        QCOMPARE(form.window.minimumSize(), QSize(250, 0));
        QCOMPARE(form.window.maximumSize(), QSize(NoLimit, NoLimit));
    }

    void theWidgetsAreThereInOrder()
    {
        const SettingsDialogForm form;
        QCOMPARE(namedChildren(&form.window),
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
        QCOMPARE(outline(form.window.layout()),
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

        QWidget plain;
        const QVBoxLayout untouched(&plain);
        QCOMPARE(form.ui.verticalLayout->spacing(), untouched.spacing());
        QCOMPARE(form.ui.verticalLayout->contentsMargins(), untouched.contentsMargins());
    }

    void noWidgetHasASizePolicyOrSheetOfItsOwn()
    {
        const SettingsDialogForm form;
        const auto widgets = form.window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (const QWidget* widget : widgets) {
            const QByteArray name = widget->objectName().toUtf8();
            QVERIFY2(widget->minimumSize() == QSize(0, 0), name);
            QVERIFY2(widget->maximumSize() == QSize(NoLimit, NoLimit), name);
            QVERIFY2(widget->styleSheet().isEmpty(), name);
            QVERIFY2(widget->toolTip().isEmpty(), name);
        }
        checkSizePolicies<QCheckBox>(form.window);
        checkSizePolicies<QComboBox>(form.window);
        checkSizePolicies<QLabel>(form.window);
        const auto sliders = form.window.findChildren<QSlider*>();
        for (const QSlider* slider : sliders)
            QCOMPARE(slider->sizePolicy(), QSlider(Qt::Horizontal).sizePolicy());
    }

    void nothingIsCheckedOrListedYet()
    {
        const SettingsDialogForm form;
        const auto checks = form.window.findChildren<QCheckBox*>();
        for (const QCheckBox* check : checks)
            QVERIFY2(!check->isChecked() && check->isEnabled() && !check->isTristate(),
                     qPrintable(check->objectName()));
        const auto combos = form.window.findChildren<QComboBox*>();
        for (const QComboBox* combo : combos)
            QVERIFY2(combo->count() == 0 && combo->isEnabled() && !combo->isEditable(),
                     qPrintable(combo->objectName()));
    }

    void theSlidersHaveTheirRanges()
    {
        const SettingsDialogForm form;
        const QVector<QPair<const QSlider*, int>> sliders{
            {form.ui.panSpeedSlider, 18}, {form.ui.tiltSpeedSlider, 14}, {form.ui.zoomSpeedSlider, 7}};
        for (const auto& [slider, maximum] : sliders) {
            QCOMPARE(slider->minimum(), 1);
            QCOMPARE(slider->maximum(), maximum);
            QCOMPARE(slider->value(), 1);
            QCOMPARE(slider->pageStep(), 2);
            QCOMPARE(slider->singleStep(), 1);
            QCOMPARE(slider->orientation(), Qt::Horizontal);
            QCOMPARE(slider->tickPosition(), QSlider::NoTicks);
            QVERIFY(slider->hasTracking());
        }
    }

    void theSheetHasItsRules()
    {
        const SettingsDialogForm form;
        const QStringList ownRules{"QToolTip { color : black }", "QDialog { background : #333333 }"};
        QCOMPARE(styleRules(form.window.styleSheet()), ownRules + sharedStyleRules());
    }

    void theTextsAreSetAndCanBeTranslated() { checkTexts<SettingsDialogForm>("AppSettingWin", texts()); }

    void everyControlHasANameForAssistiveSoftware()
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

    void theDialogIsDarkGreyWithWhiteTextAndCheckedBoxesAreDark()
    {
        SettingsDialogForm form;
        form.ui.comPortCombo->addItem("AUTO");
        form.show();
        QCOMPARE(screenshot(&form.window).pixel(2, 2), DarkGrey);
        QVERIFY(hasColour(screenshot(form.ui.label), White));
        const QImage combo = screenshot(form.ui.comPortCombo);
        QCOMPARE(combo.pixel(combo.width() / 2, 3), 0xff111111);
        QVERIFY(hasColour(combo, White));

        QCheckBox* check = form.ui.invertPanCheck;
        const QPoint box = indicator(check).center();
        QCOMPARE(screenshot(check).pixel(box), White);
        check->setChecked(true);
        QCOMPARE(screenshot(check).pixel(box), 0xff1f1f1f);
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
    }

private:
    template <class Widget> static void checkSizePolicies(const QDialog& dialog)
    {
        const auto widgets = dialog.findChildren<Widget*>();
        QVERIFY(!widgets.isEmpty());
        for (const Widget* widget : widgets)
            QCOMPARE(widget->sizePolicy(), Widget().sizePolicy());
    }
};

QTEST_APPLESS_MAIN(SettingsDialogFormTest)
#include "SettingsDialogFormTest.moc"
