#include "support/Form.h"

#include "ui_AppMainWin.h"

#include <QHelpEvent>
#include <QMainWindow>
#include <QToolTip>

namespace {

constexpr QRgb DarkGrey = 0xff333333;
constexpr QRgb Grey = 0xff808080;
constexpr QRgb White = 0xffffffff;
constexpr QRgb Black = 0xff000000;
constexpr QRgb Red = 0xffff0000;

using MainWindowForm = FormAlone<QMainWindow, Ui_AppMainWin>;

QVector<ImageButton> imageButtons()
{
    QVector<ImageButton> buttons{SettingsButton};
    std::copy(std::begin(ImageButtons), std::end(ImageButtons), std::back_inserter(buttons));
    return buttons;
}

QVector<FormText> texts()
{
    QVector<FormText> all{
        {"", "windowTitle", "Vantrel Controller"},
        {"actionShow_Settings", "text", "Show Settings"},
        {"label_3", "text", ""},
        {"connectBtn", "text", "Connect"},
        {"presetEdit", "toolTip", "Preset Number Input"},
        {"presetEdit", "placeholderText", "Enter preset number(1-64)"},
        {"callBtn", "toolTip", "Recall Preset"},
        {"callBtn", "text", "CALL"},
        {"presetNameEdit", "placeholderText", "Enter preset name"},
        {"setBtn", "toolTip", "Set Preset"},
        {"setBtn", "text", "SET"},
    };
    const auto buttons = imageButtons();
    for (const ImageButton& button : buttons)
        all << FormText{button.name, "toolTip", button.toolTip} << FormText{button.name, "text", ""};
    return all;
}

/** A widget's size limits and its own style rules. */
struct Look
{
    QSize minimum{0, 0};
    QSize maximum{NoLimit, NoLimit};
    QStringList rules;
};

QStringList spriteRules(const QString& image)
{
    const QString rules =
        "QPushButton { width :60px; height : 60px; background :  url(':/assets/%1') center top "
        "no-repeat }\n"
        "QPushButton:hover { width : 60px; height : 60px; background :  url(':/assets/%1') "
        "center center no-repeat }\n"
        "QPushButton:pressed { width : 60px; height : 60px; background :  url(':/assets/%1') "
        "center bottom no-repeat }";
    return rules.arg(image).split('\n');
}

QStringList settingsRules()
{
    return {"QPushButton { width : 30px; height : 30px; background :  url(:/assets/setting.PNG) "
            "center top no-repeat }",
            "QPushButton:hover { width : 30px; height : 30px; background :  url(:/assets/setting.PNG) "
            "center center no-repeat }",
            "QPushButton:pressed { width : 30px; height : 30px; background :  url(:/assets/setting.PNG) "
            "center bottom no-repeat }"};
}

/** The looks of the widgets that have limits or rules. */
QMap<QString, Look> looks()
{
    QMap<QString, Look> looks;
    const auto buttons = imageButtons();
    for (const ImageButton& button : buttons) {
        const bool isSettings = button.name == SettingsButton.name;
        looks[button.name] = {{70, button.height},
                              {button.maximumWidth, button.height},
                              isSettings ? settingsRules() : spriteRules(button.image)};
    }
    looks["label_3"].rules = QStringList("QLabel { image : url(:/assets/Vantrel.png) }");
    return looks;
}

QSizePolicy policyOf(const QWidget* widget)
{
    if (qobject_cast<const QLineEdit*>(widget) || widget->objectName() == SettingsButton.name)
        return {QSizePolicy::Preferred, QSizePolicy::Preferred};
    if (qobject_cast<const QPushButton*>(widget))
        return QPushButton().sizePolicy();
    if (qobject_cast<const QLabel*>(widget))
        return QLabel().sizePolicy();
    return qobject_cast<const QStatusBar*>(widget) ? QStatusBar().sizePolicy() : QWidget().sizePolicy();
}

} // namespace

Q_DECLARE_METATYPE(ImageButton)

/** The main window's form: its widgets, texts and look. */
class MainWindowFormTest : public QObject
{
    Q_OBJECT

private slots:

    void theWindowHasItsSizeAndPolicy()
    {
        const MainWindowForm form;
        QCOMPARE(form.window.objectName(), QString("AppMainWin"));
        QCOMPARE(form.window.size(), QSize(248, 599));
        QCOMPARE(form.window.minimumSize(), QSize(0, 0));
        QCOMPARE(form.window.maximumSize(), QSize(NoLimit, NoLimit));
        QCOMPARE(form.window.sizePolicy(), QSizePolicy(QSizePolicy::Minimum, QSizePolicy::Minimum));
        QVERIFY(form.window.isDockNestingEnabled());
#ifdef Q_OS_MACOS
        QVERIFY(form.window.unifiedTitleAndToolBarOnMac());
#endif
    }

    // Neither a menu bar nor a toolbar is among them.
    void theWidgetsAreThereInOrder()
    {
        const MainWindowForm form;
        QCOMPARE(namedChildren(&form.window), QStringList({"QAction actionShow_Settings",
                                                           "QWidget centralWidget", "QStatusBar statusBar"}));
        QCOMPARE(form.window.centralWidget()->objectName(), QString("centralWidget"));
        QCOMPARE(namedChildren(form.ui.centralWidget),
                 QStringList({"QLabel label_3",           "QPushButton settingsBtn", "QPushButton connectBtn",
                              "QPushButton upBtn",        "QPushButton leftBtn",     "QPushButton homeBtn",
                              "QPushButton rightBtn",     "QPushButton zoomInBtn",   "QPushButton downBtn",
                              "QPushButton zoomOutBtn",   "QPushButton preset1Btn",  "QPushButton preset2Btn",
                              "QPushButton preset3Btn",   "QPushButton preset4Btn",  "QPushButton preset5Btn",
                              "QPushButton preset6Btn",   "QPushButton preset7Btn",  "QPushButton preset8Btn",
                              "QPushButton preset9Btn",   "QLineEdit presetEdit",    "QPushButton callBtn",
                              "QLineEdit presetNameEdit", "QPushButton setBtn"}));
    }

    void theLayoutsNestAndFollowInOrder()
    {
        const MainWindowForm form;
        QCOMPARE(outline(form.ui.centralWidget->layout()),
                 QString("verticalLayout("
                         "horizontalLayout_9(label_3 settingsBtn) "
                         "connectBtn "
                         "horizontalLayout_2(spacer upBtn spacer) "
                         "horizontalLayout_3(verticalLayout_6(leftBtn) verticalLayout_7(homeBtn) "
                         "verticalLayout_5(rightBtn)) "
                         "horizontalLayout_4(verticalLayout_10(zoomInBtn) verticalLayout_9(downBtn) "
                         "verticalLayout_8(zoomOutBtn)) "
                         "horizontalLayout_5(verticalLayout_13(preset1Btn) verticalLayout_12(preset2Btn) "
                         "verticalLayout_11(preset3Btn)) "
                         "horizontalLayout_6(verticalLayout_16(preset4Btn) verticalLayout_15(preset5Btn) "
                         "verticalLayout_14(preset6Btn)) "
                         "horizontalLayout_7(verticalLayout_19(preset7Btn) verticalLayout_18(preset8Btn) "
                         "verticalLayout_17(preset9Btn)) "
                         "horizontalLayout(verticalLayout_20(presetEdit) callBtn) "
                         "horizontalLayout_8(verticalLayout_2(presetNameEdit) verticalLayout_21(setBtn)))"));
    }

    void theLayoutsHaveTheirKindSpacingAndMargins()
    {
        const MainWindowForm form;
        const auto layouts = form.ui.centralWidget->findChildren<QBoxLayout*>();
        for (const QBoxLayout* layout : layouts) {
            const QByteArray name = layout->objectName().toUtf8();
            const bool isRow = name.startsWith("horizontal");
            QVERIFY2(layout->direction() == (isRow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom),
                     name);
            QVERIFY2(layout->spacing() == 6, name);
            const int margin = layout == form.ui.verticalLayout ? 11 : 0;
            QVERIFY2(layout->contentsMargins() == QMargins(margin, margin, margin, margin), name);
            for (int i = 0; i < layout->count(); ++i)
                QVERIFY2(layout->stretch(i) == 0, name);
        }
    }

    void twoExpandingSpacersCentreTheUpButton()
    {
        const MainWindowForm form;
        for (const int index : {0, 2}) {
            const QSpacerItem* spacer = form.ui.horizontalLayout_2->itemAt(index)->spacerItem();
            QVERIFY(spacer);
            QCOMPARE(spacer->sizeHint(), QSize(40, 20));
            QCOMPARE(spacer->sizePolicy(), QSizePolicy(QSizePolicy::Expanding, QSizePolicy::Minimum));
        }
    }

    void theWidgetsHaveTheirSizesPoliciesAndRules()
    {
        const MainWindowForm form;
        const auto expected = looks();
        auto widgets = form.ui.centralWidget->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        widgets << form.ui.centralWidget << form.ui.statusBar;
        for (const QWidget* widget : std::as_const(widgets)) {
            const QByteArray name = widget->objectName().toUtf8();
            const Look look = expected.value(name);
            QVERIFY2(widget->minimumSize() == look.minimum, name);
            QVERIFY2(widget->maximumSize() == look.maximum, name);
            QVERIFY2(widget->sizePolicy() == policyOf(widget), name);
            QVERIFY2(styleRules(widget->styleSheet()) == look.rules, name);
        }
    }

    void theWindowSheetHasItsRules()
    {
        const MainWindowForm form;
        const QStringList ownRules{
            "QToolTip { color : black }", "QWidget#centralWidget { background : #333333 }",
            "QDockWidget { background : grey }", "QDockWidget QWidget { background : #333333 }"};
        QCOMPARE(styleRules(form.window.styleSheet()), ownRules + sharedStyleRules());
    }

    void theTextsAreSetAndCanBeTranslated()
    {
        checkTexts<MainWindowForm>("AppMainWin", texts());
    }

    void theOtherWidgetsHaveNoToolTip()
    {
        const MainWindowForm form;
        const QWidgetList others{form.ui.presetNameEdit, form.ui.connectBtn, form.ui.label_3,
                                 form.ui.centralWidget, form.ui.statusBar};
        for (const QWidget* widget : others)
            QVERIFY2(widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
    }

    void everyControlHasANameForAssistiveSoftware()
    {
        MainWindowForm form;
        for (const ImageButton& button : ImageButtons)
            QCOMPARE(accessibleName(form.window.findChild<QPushButton*>(button.name)),
                     QString(button.toolTip).replace("Preset", "Preset "));
        QCOMPARE(accessibleName(form.ui.settingsBtn), QString("Settings"));
        QCOMPARE(accessibleName(form.ui.connectBtn), QString("Connect"));
        QCOMPARE(accessibleName(form.ui.presetEdit), QString("Preset Number Input"));
        QCOMPARE(accessibleName(form.ui.callBtn), QString("CALL"));
        QCOMPARE(accessibleName(form.ui.presetNameEdit), QString("Enter preset name"));
        QCOMPARE(accessibleName(form.ui.setBtn), QString("SET"));
    }

    void theTabKeyReachesEveryControlInOrder()
    {
        MainWindowForm form;
        form.show();
        QCOMPARE(tabOrder(form.ui.settingsBtn),
                 QStringList({"settingsBtn",    "connectBtn", "upBtn",      "leftBtn",    "homeBtn",
                              "rightBtn",       "zoomInBtn",  "downBtn",    "zoomOutBtn", "preset1Btn",
                              "preset2Btn",     "preset3Btn", "preset4Btn", "preset5Btn", "preset6Btn",
                              "preset7Btn",     "preset8Btn", "preset9Btn", "presetEdit", "callBtn",
                              "presetNameEdit", "setBtn"}));
    }

    void noButtonRepeatsOrIsADefaultButton()
    {
        const MainWindowForm form;
        const auto buttons = form.window.findChildren<QPushButton*>();
        for (const QPushButton* button : buttons)
            QVERIFY2(!button->isDefault() && !button->autoDefault() && !button->autoRepeat(),
                     qPrintable(button->objectName()));
    }

    void imageButtonsShowTheFrameOfTheirState_data()
    {
        everyImageButton();
    }

    void imageButtonsShowTheFrameOfTheirState()
    {
        QFETCH(ImageButton, button);
        MainWindowForm form;
        form.show();
        auto* widget = form.window.findChild<QPushButton*>(button.name);
        const auto frame = [&](int number) { return buttonWithFrame(widget->size(), button.image, number); };
        QCOMPARE(widget->height(), button.height);

        QTest::mouseMove(form.ui.connectBtn);
        QCOMPARE(screenshot(widget), frame(0));
        QTest::mouseMove(widget);
        QTRY_VERIFY(widget->underMouse());
        QCOMPARE(screenshot(widget), frame(1));
        QTest::mousePress(widget, Qt::LeftButton);
        QCOMPARE(screenshot(widget), frame(2));
        QTest::mouseRelease(widget, Qt::LeftButton);
        QCOMPARE(screenshot(widget), frame(1));
    }

    void theOtherWidgetsAreGreyWithWhiteText()
    {
        MainWindowForm form;
        auto* status = new QLabel("Status");
        form.ui.statusBar->addPermanentWidget(status);
        form.show();
        QTest::mouseMove(form.ui.upBtn);
        QCoreApplication::processEvents();

        QCOMPARE(screenshot(form.ui.centralWidget).pixel(3, 3), DarkGrey);
        const QWidgetList greys{form.ui.connectBtn, form.ui.callBtn, form.ui.setBtn, form.ui.statusBar};
        for (QWidget* grey : greys)
            QCOMPARE(screenshot(grey).pixel(6, grey->height() / 2), Grey);
        const QWidgetList whites{form.ui.connectBtn, form.ui.callBtn, form.ui.setBtn, status};
        for (QWidget* text : whites)
            QVERIFY2(hasColour(screenshot(text), White), qPrintable(text->objectName()));
    }

    void imageButtonsShowTheirToolTipInBlack_data()
    {
        everyImageButton();
    }

    void imageButtonsShowTheirToolTipInBlack()
    {
        QFETCH(ImageButton, button);
        MainWindowForm form;
        form.show();
        QPalette palette;
        palette.setColor(QPalette::ToolTipText, QColor::fromRgb(Red));
        palette.setColor(QPalette::WindowText, QColor::fromRgb(Red));
        // The desktop's colours for tooltips. With Qt 6.8 a palette of QToolTip itself would override the
        // sheet.
        QApplication::setPalette(palette, "QTipLabel");
        auto* widget = form.window.findChild<QPushButton*>(button.name);

        QHelpEvent help(QEvent::ToolTip, widget->rect().center(),
                        widget->mapToGlobal(widget->rect().center()));
        QApplication::sendEvent(widget, &help);
        QVERIFY(QToolTip::isVisible());

        const QImage toolTip = toolTipWindow()->grab().toImage();
        QVERIFY(hasColour(toolTip, Black));
        QVERIFY(!hasColour(toolTip, Red));
    }

private:
    static void everyImageButton()
    {
        QTest::addColumn<ImageButton>("button");
        const auto buttons = imageButtons();
        for (const ImageButton& button : buttons)
            QTest::newRow(button.name) << button;
    }
};

QTEST_APPLESS_MAIN(MainWindowFormTest)
#include "MainWindowFormTest.moc"
