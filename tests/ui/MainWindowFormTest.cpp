#include "support/Form.h"

#include "ui_AppMainWin.h"

#include <QHelpEvent>
#include <QImage>
#include <QMainWindow>
#include <QMenuBar>
#include <QToolBar>
#include <QToolTip>
#include <QtTest>

namespace {

constexpr QRgb DarkGrey = 0xff333333;
constexpr QRgb Grey = 0xff808080;
constexpr QRgb White = 0xffffffff;
constexpr QRgb Black = 0xff000000;
constexpr QRgb Red = 0xffff0000;

/** The form on a plain window, with no controller behind it. */
struct MainWindowForm
{
    MainWindowForm() { ui.setupUi(&window); }

    void show()
    {
        window.show();
        QTRY_VERIFY(window.isActiveWindow());
    }

    BareApplication application;
    QMainWindow window;
    Ui_AppMainWin ui;
};

constexpr FormText Texts[] = {
    {"", "windowTitle", "Vantrel Controller"},
    {"actionShow_Settings", "text", "Show Settings"},
    {"settingsBtn", "toolTip", "Settings"},
    {"connectBtn", "text", "Connect"},
    {"upBtn", "toolTip", "Move Up"},
    {"leftBtn", "toolTip", "Move Left"},
    {"homeBtn", "toolTip", "Move Home"},
    {"rightBtn", "toolTip", "Move Right"},
    {"zoomInBtn", "toolTip", "Zoom In"},
    {"downBtn", "toolTip", "Move Down"},
    {"zoomOutBtn", "toolTip", "Zoom Out"},
    {"preset1Btn", "toolTip", "Preset1"},
    {"preset2Btn", "toolTip", "Preset2"},
    {"preset3Btn", "toolTip", "Preset3"},
    {"preset4Btn", "toolTip", "Preset4"},
    {"preset5Btn", "toolTip", "Preset5"},
    {"preset6Btn", "toolTip", "Preset6"},
    {"preset7Btn", "toolTip", "Preset7"},
    {"preset8Btn", "toolTip", "Preset8"},
    {"preset9Btn", "toolTip", "Preset9"},
    {"presetEdit", "toolTip", "Preset Number Input"},
    {"presetEdit", "placeholderText", "Enter preset number(1-64)"},
    {"callBtn", "toolTip", "Recall Preset"},
    {"callBtn", "text", "CALL"},
    {"presetNameEdit", "placeholderText", "Enter preset name"},
    {"setBtn", "toolTip", "Set Preset"},
    {"setBtn", "text", "SET"},
};

QString spriteSheet(const char* image)
{
    const QString rules =
        "QPushButton { width :60px; height : 60px; background :  url(':/assets/%1') center top "
        "no-repeat }\n"
        "QPushButton:hover { width : 60px; height : 60px; background :  url(':/assets/%1') "
        "center center no-repeat }\n"
        "QPushButton:pressed { width : 60px; height : 60px; background :  url(':/assets/%1') "
        "center bottom no-repeat }";
    return rules.arg(image);
}

QImage screenshot(QWidget* window, QWidget* part)
{
    const QRect place(part->mapTo(window, QPoint(0, 0)), part->size());
    return window->grab(place).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

int pixelsOfColour(const QImage& image, QRgb colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixel(x, y) == colour ? 1 : 0;
    }
    return count;
}

} // namespace

Q_DECLARE_METATYPE(FormText)
Q_DECLARE_METATYPE(ImageButton)

/** The main window's widgets, texts and look, before any behaviour. */
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

    void theWindowKeepsItsOwnNameAndHeightForWidth()
    {
        const BareApplication application;
        QMainWindow window;
        window.setObjectName("controlSurface");
        QSizePolicy tall;
        tall.setHeightForWidth(true);
        window.setSizePolicy(tall);

        Ui_AppMainWin ui;
        ui.setupUi(&window);
        QCOMPARE(window.objectName(), QString("controlSurface"));
        QVERIFY(window.sizePolicy().hasHeightForWidth());
    }

    void thereIsAStatusBarButNoMenuBarAndNoToolBar()
    {
        const MainWindowForm form;
        QVERIFY(!form.window.menuWidget());
        QVERIFY(form.window.findChildren<QMenuBar*>().isEmpty());
        QVERIFY(form.window.findChildren<QToolBar*>().isEmpty());
        QCOMPARE(form.ui.statusBar->objectName(), QString("statusBar"));
        QCOMPARE(form.window.findChildren<QStatusBar*>(), QList<QStatusBar*>({form.ui.statusBar}));
    }

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
        QCOMPARE(layouts.size(), 28);
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

    void theButtonsStandWhereTheirDirectionPoints()
    {
        MainWindowForm form;
        form.show();
        const auto centre = [&](const QWidget* widget) { return widget->geometry().center(); };

        QCOMPARE(centre(form.ui.upBtn).x(), centre(form.ui.homeBtn).x());
        QCOMPARE(centre(form.ui.downBtn).x(), centre(form.ui.homeBtn).x());
        QCOMPARE(centre(form.ui.leftBtn).y(), centre(form.ui.homeBtn).y());
        QCOMPARE(centre(form.ui.rightBtn).y(), centre(form.ui.homeBtn).y());
        QVERIFY(centre(form.ui.upBtn).y() < centre(form.ui.homeBtn).y());
        QVERIFY(centre(form.ui.downBtn).y() > centre(form.ui.homeBtn).y());
        QVERIFY(centre(form.ui.leftBtn).x() < centre(form.ui.homeBtn).x());
        QVERIFY(centre(form.ui.rightBtn).x() > centre(form.ui.homeBtn).x());
    }

    void imageButtonsHaveTheirSizes_data()
    {
        imageButtons();
    }

    void imageButtonsHaveTheirSizes()
    {
        QFETCH(ImageButton, button);
        const MainWindowForm form;
        const auto* widget = form.window.findChild<QPushButton*>(button.name);
        QCOMPARE(widget->minimumSize(), QSize(70, 60));
        QCOMPARE(widget->maximumSize(), QSize(button.maximumWidth, 60));
        QCOMPARE(widget->sizePolicy(), QPushButton().sizePolicy());
    }

    void theSettingsButtonHasItsSize()
    {
        const MainWindowForm form;
        QCOMPARE(form.ui.settingsBtn->minimumSize(), QSize(70, 30));
        QCOMPARE(form.ui.settingsBtn->maximumSize(), QSize(30, 30));
        QCOMPARE(form.ui.settingsBtn->sizePolicy(),
                 QSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred));
    }

    void theFieldsGiveWay()
    {
        const MainWindowForm form;
        for (const QLineEdit* field : {form.ui.presetEdit, form.ui.presetNameEdit}) {
            QCOMPARE(field->sizePolicy(), QSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred));
            QCOMPARE(field->minimumSize(), QSize(0, 0));
            QCOMPARE(field->maximumSize(), QSize(NoLimit, NoLimit));
            QCOMPARE(field->styleSheet(), QString());
        }
    }

    void theOtherWidgetsHaveNoSizePolicyOrSheetOfTheirOwn()
    {
        const MainWindowForm form;
        for (const QPushButton* button : {form.ui.connectBtn, form.ui.callBtn, form.ui.setBtn}) {
            QCOMPARE(button->sizePolicy(), QPushButton().sizePolicy());
            QCOMPARE(button->styleSheet(), QString());
        }
        QCOMPARE(form.ui.label_3->sizePolicy(), QLabel().sizePolicy());
        QCOMPARE(form.ui.centralWidget->sizePolicy(), QWidget().sizePolicy());
        QCOMPARE(form.ui.centralWidget->styleSheet(), QString());
        QCOMPARE(form.ui.statusBar->sizePolicy(), QStatusBar().sizePolicy());
        QCOMPARE(form.ui.statusBar->styleSheet(), QString());
        const QWidgetList widgets{form.ui.connectBtn, form.ui.callBtn,       form.ui.setBtn,
                                  form.ui.label_3,    form.ui.centralWidget, form.ui.statusBar};
        for (const QWidget* widget : widgets) {
            QVERIFY2(widget->minimumSize() == QSize(0, 0), qPrintable(widget->objectName()));
            QVERIFY2(widget->maximumSize() == QSize(NoLimit, NoLimit), qPrintable(widget->objectName()));
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

    void theLogoSheetShowsTheLogo()
    {
        const MainWindowForm form;
        QCOMPARE(styleRules(form.ui.label_3->styleSheet()),
                 QStringList({"QLabel { image : url(:/assets/Vantrel.png) }"}));
    }

    void spriteSheetsShowTheirImage_data()
    {
        imageButtons();
    }

    void spriteSheetsShowTheirImage()
    {
        QFETCH(ImageButton, button);
        const MainWindowForm form;
        QCOMPARE(styleRules(form.window.findChild<QPushButton*>(button.name)->styleSheet()),
                 spriteSheet(button.image).split('\n'));
    }

    void theSettingsSheetShowsItsImage()
    {
        const MainWindowForm form;
        QCOMPARE(styleRules(form.ui.settingsBtn->styleSheet()),
                 QStringList({"QPushButton { width : 30px; height : 30px; background :  "
                              "url(:/assets/setting.PNG) center top no-repeat }",
                              "QPushButton:hover { width : 30px; height : 30px; background :  "
                              "url(:/assets/setting.PNG) center center no-repeat }",
                              "QPushButton:pressed { width : 30px; height : 30px; background :  "
                              "url(:/assets/setting.PNG) center bottom no-repeat }"}));
    }

    void textsAreWritten_data()
    {
        texts();
    }

    void textsAreWritten()
    {
        QFETCH(FormText, text);
        MainWindowForm form;
        QCOMPARE(formObject(&form.window, text.object)->property(text.property).toString(),
                 QString(text.text));
    }

    void textsCanBeTranslated_data()
    {
        texts();
    }

    void textsCanBeTranslated()
    {
        QFETCH(FormText, text);
        MainWindowForm form;
        BracketTranslator translator("AppMainWin");
        QCoreApplication::installTranslator(&translator);

        form.ui.retranslateUi(&form.window);
        QCOMPARE(formObject(&form.window, text.object)->property(text.property).toString(),
                 '<' + QString(text.text) + '>');
    }

    void imageButtonsAndLogoHaveNoText_data()
    {
        imageButtons();
        QTest::newRow(SettingsButton.name) << SettingsButton;
        QTest::newRow("label_3") << ImageButton{"label_3", "", 0, ""};
    }

    void imageButtonsAndLogoHaveNoText()
    {
        QFETCH(ImageButton, button);
        MainWindowForm form;
        QObject* object = formObject(&form.window, button.name);
        QCOMPARE(object->property("text").toString(), QString());

        object->setProperty("text", "anything");
        form.ui.retranslateUi(&form.window);
        QCOMPARE(object->property("text").toString(), QString());
    }

    void theOtherWidgetsHaveNoToolTip()
    {
        const MainWindowForm form;
        const QWidgetList widgets{form.ui.presetNameEdit, form.ui.connectBtn, form.ui.label_3,
                                  form.ui.centralWidget, form.ui.statusBar};
        for (const QWidget* widget : widgets)
            QVERIFY2(widget->toolTip().isEmpty(), qPrintable(widget->objectName()));
    }

    void assistiveSoftwareFindsEveryControlByName()
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

    void theFieldsTakeAnyText()
    {
        const MainWindowForm form;
        for (const QLineEdit* field : {form.ui.presetEdit, form.ui.presetNameEdit}) {
            QCOMPARE(field->text(), QString());
            QCOMPARE(field->inputMask(), QString());
            QVERIFY(!field->validator());
            QCOMPARE(field->maxLength(), QLineEdit().maxLength());
        }
    }

    void anEmptyNumberFieldShowsItsPlaceholder()
    {
        MainWindowForm form;
        form.show();
        const QImage withPlaceholder = screenshot(&form.window, form.ui.presetEdit);
        form.ui.presetEdit->setPlaceholderText({});
        QVERIFY(screenshot(&form.window, form.ui.presetEdit) != withPlaceholder);
    }

    void noButtonOfTheFormIsATextFieldsDefault()
    {
        const MainWindowForm form;
        const auto buttons = form.window.findChildren<QPushButton*>();
        for (const QPushButton* button : buttons)
            QVERIFY2(!button->isDefault() && !button->autoDefault(), qPrintable(button->objectName()));
    }

    void imageButtonsShowTheFrameOfTheirState_data()
    {
        imageButtons();
        QTest::newRow(SettingsButton.name) << SettingsButton;
    }

    void imageButtonsShowTheFrameOfTheirState()
    {
        QFETCH(ImageButton, button);
        MainWindowForm form;
        form.show();
        auto* widget = form.window.findChild<QPushButton*>(button.name);
        const auto frame = [&](int number) { return buttonWithFrame(widget->size(), button.image, number); };
        QCOMPARE(3 * widget->height(), QImage(QString(":/assets/") + button.image).height());

        QTest::mouseMove(form.ui.connectBtn);
        QCOMPARE(screenshot(&form.window, widget), frame(0));

        QTest::mouseMove(widget);
        QTRY_VERIFY(widget->underMouse());
        QCOMPARE(screenshot(&form.window, widget), frame(1));

        QTest::mousePress(widget, Qt::LeftButton);
        QCOMPARE(screenshot(&form.window, widget), frame(2));

        QTest::mouseRelease(widget, Qt::LeftButton);
        QCOMPARE(screenshot(&form.window, widget), frame(1));
    }

    void textButtonsAreGrey()
    {
        MainWindowForm form;
        form.show();
        for (QPushButton* button : {form.ui.connectBtn, form.ui.callBtn, form.ui.setBtn}) {
            const QPoint besideTheText(6, button->height() / 2);
            const auto colour = [&] { return screenshot(&form.window, button).pixel(besideTheText); };

            QTest::mouseMove(form.ui.upBtn);
            QCOMPARE(colour(), Grey);
            QVERIFY(pixelsOfColour(screenshot(&form.window, button), White) > 0);
            QTest::mouseMove(button);
            QTRY_COMPARE(colour(), 0xffc9c9c9);
            QTest::mousePress(button, Qt::LeftButton);
            QCOMPARE(colour(), 0xff474747);
            QTest::mouseRelease(button, Qt::LeftButton);
        }
    }

    void thePanelIsDarkGreyAndTheLogoOnIt()
    {
        MainWindowForm form;
        form.show();
        const QImage panel = screenshot(&form.window, form.ui.centralWidget);
        QCOMPARE(panel.pixel(3, 3), DarkGrey);
        QCOMPARE(panel.pixel(panel.width() - 3, panel.height() - 3), DarkGrey);

        const QImage logo = screenshot(&form.window, form.ui.label_3);
        QVERIFY(pixelsOfColour(logo, DarkGrey) < logo.width() * logo.height());
    }

    void theStatusBarIsGreyWithWhiteText()
    {
        MainWindowForm form;
        form.show();
        auto* label = new QLabel("Status");
        form.ui.statusBar->addPermanentWidget(label);
        QCoreApplication::processEvents();

        const QImage bar = screenshot(&form.window, form.ui.statusBar);
        QCOMPARE(bar.pixel(20, bar.height() / 2), Grey);
        QVERIFY(pixelsOfColour(screenshot(&form.window, label), White) > 0);
    }

    void imageButtonsShowTheirToolTipInBlack_data()
    {
        imageButtons();
        QTest::newRow(SettingsButton.name) << SettingsButton;
    }

    void imageButtonsShowTheirToolTipInBlack()
    {
        QFETCH(ImageButton, button);
        MainWindowForm form;
        form.show();
        QPalette palette;
        palette.setColor(QPalette::ToolTipText, QColor::fromRgb(Red));
        palette.setColor(QPalette::WindowText, QColor::fromRgb(Red));
        // A desktop's colours for tooltips. A palette given to QToolTip itself goes before the sheet in
        // Qt 6.8.
        QApplication::setPalette(palette, "QTipLabel");
        auto* widget = form.window.findChild<QPushButton*>(button.name);

        QHelpEvent help(QEvent::ToolTip, widget->rect().center(),
                        widget->mapToGlobal(widget->rect().center()));
        QApplication::sendEvent(widget, &help);
        QVERIFY(QToolTip::isVisible());
        QCOMPARE(QToolTip::text(), QString(button.toolTip));

        const QImage toolTip = toolTipWindow()->grab().toImage();
        QVERIFY(pixelsOfColour(toolTip, Black) > 0);
        QCOMPARE(pixelsOfColour(toolTip, Red), 0);
    }

private:
    static void imageButtons()
    {
        QTest::addColumn<ImageButton>("button");
        for (const ImageButton& button : ImageButtons)
            QTest::newRow(button.name) << button;
    }

    static void texts()
    {
        QTest::addColumn<FormText>("text");
        for (const FormText& text : Texts)
            QTest::addRow("%s %s", text.object, text.property) << text;
    }
};

QTEST_APPLESS_MAIN(MainWindowFormTest)
#include "MainWindowFormTest.moc"
