#pragma once

#include "support/PrivateProfile.h"

#include <QApplication>
#include <QByteArrayList>
#include <QImage>
#include <QLayout>
#include <QString>
#include <QStringList>
#include <QTranslator>
#include <QVector>
#include <QtTest>

class QCheckBox;
class QSlider;

/** An application object without the program's windows, for a test of a form alone. */
class BareApplication
{
    PrivateProfile profile;
    int count = 1;
    char name[5] = "form";
    char* arguments[2] = {name, nullptr};
    QApplication app{count, arguments};
};

/** A window that has only its form, without the program's code. */
template <class Window, class Ui> struct FormAlone
{
    FormAlone() { ui.setupUi(&window); }

    void show()
    {
        window.show();
        QTRY_VERIFY(window.isActiveWindow());
    }

    /** The window's size after adjustSize(). */
    static QSize fittingSize()
    {
        FormAlone form;
        form.window.adjustSize();
        return form.window.size();
    }

    BareApplication application;
    Window window;
    Ui ui;
};

/** A text that a form sets on one of its objects. */
struct FormText
{
    /** Object name; empty for the window itself. */
    const char* object;
    const char* property;
    const char* text;
};

constexpr int NoLimit = 16777215;

/** A button of the main window that shows a frame of an image instead of a text. */
struct ImageButton
{
    const char* name;
    const char* image;
    const char* toolTip;
    int maximumWidth = NoLimit;
    int height = 60;
};

constexpr ImageButton ImageButtons[] = {
    {"upBtn", "up.png", "Move Up", 60},        {"leftBtn", "left.png", "Move Left"},
    {"homeBtn", "home.png", "Move Home"},      {"rightBtn", "right.png", "Move Right"},
    {"zoomInBtn", "zoomin.png", "Zoom In"},    {"downBtn", "down.png", "Move Down"},
    {"zoomOutBtn", "zoomout.png", "Zoom Out"}, {"preset1Btn", "preset1.png", "Preset1"},
    {"preset2Btn", "preset2.png", "Preset2"},  {"preset3Btn", "preset3.png", "Preset3"},
    {"preset4Btn", "preset4.png", "Preset4"},  {"preset5Btn", "preset5.png", "Preset5"},
    {"preset6Btn", "preset6.png", "Preset6"},  {"preset7Btn", "preset7.png", "Preset7"},
    {"preset8Btn", "preset8.png", "Preset8"},  {"preset9Btn", "preset9.png", "Preset9"},
};
constexpr ImageButton SettingsButton{"settingsBtn", "setting.PNG", "Settings", 30, 30};

/** Translates every text of one context: "Connect" becomes "<Connect>". */
class BracketTranslator : public QTranslator
{
public:
    explicit BracketTranslator(const char* translatedContext)
        : ownContext(translatedContext)
    {
    }

    bool isEmpty() const override { return false; }

    QString translate(const char* context, const char* source, const char* disambiguation,
                      int n) const override;

private:
    QByteArray ownContext;
};

/** The window's object with this name; the window itself if the name is empty. */
QObject* formObject(QWidget* window, const char* name);

/** What that property of the object is now. */
QString textOf(QWidget* window, const FormText& text);

/** Checks that a form sets these texts, and that retranslateUi() sets their translations. */
template <class Form> void checkTexts(const char* context, const QVector<FormText>& texts)
{
    Form form;
    for (const FormText& text : texts) {
        QCOMPARE(textOf(&form.window, text), QString(text.text));
        formObject(&form.window, text.object)->setProperty(text.property, "anything");
    }
    BracketTranslator translator(context);
    QCoreApplication::installTranslator(&translator);
    form.ui.retranslateUi(&form.window);
    // An empty text is empty in every language.
    for (const FormText& text : texts)
        QCOMPARE(textOf(&form.window, text), *text.text ? '<' + QString(text.text) + '>' : QString());
}

/** A part of a window as it is drawn. */
QImage screenshot(QWidget* part);

bool hasColour(const QImage& image, QRgb colour);

/** A button of this size as it is drawn: one of the three frames of its image, centred on the window's
 * background. */
QImage buttonWithFrame(const QSize& button, const QString& image, int frame);

/** Where the check box has its box. */
QRect indicator(const QCheckBox* check);

/** Where the slider has its handle. */
QRect handle(const QSlider* slider);

/** The tooltip that is shown. */
QWidget* toolTipWindow();

/** What a layout holds, e.g. "row(label column(button) spacer)". */
QString outline(QLayout* layout);

/** The rules of a style sheet in order, each as "selector { declaration; declaration }". */
QStringList styleRules(const QString& styleSheet);

/** The rules that both windows have, after those of their own. */
QStringList sharedStyleRules();

/** The classes, names and order of a widget's child widgets and actions, e.g. "QLabel logo". */
QStringList namedChildren(const QObject* parent);

/** The methods that a class declares, in order, such as "onPanSpeedChanged(int val)". One that is not a
 * private slot returning void is marked. */
QByteArrayList privateSlots(const QMetaObject& type);

/** The name under which assistive software finds a widget. */
QString accessibleName(QWidget* widget);

/** The tooltips of the main window's preset buttons. */
QStringList presetToolTips(const QWidget* window);

/** Their tooltips while no preset has a name. */
QStringList defaultPresetNames();

/** The object names of the widgets that Tab goes through, from `first` until it reaches one of them again. */
QStringList tabOrder(QWidget* first);
