#pragma once

#include "support/PrivateProfile.h"

#include <QApplication>
#include <QLayout>
#include <QString>
#include <QStringList>
#include <QTranslator>

/** A bare application object, for a test that looks at a window's form without the program behind it. */
class BareApplication
{
    PrivateProfile profile;
    int count = 1;
    char name[5] = "form";
    char* arguments[2] = {name, nullptr};
    QApplication app{count, arguments};
};

/** A text that a form gives to one of its objects. */
struct FormText
{
    /** Object name; empty for the window itself. */
    const char* object;
    const char* property;
    const char* text;
};

/** Makes a foreign language of every text in one context: "Connect" becomes "<Connect>". */
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

/** The object with this name among a window's own; the window itself if the name is empty. */
QObject* formObject(QWidget* window, const char* name);

/** What a layout holds, e.g. "row(label column(button) spacer)". */
QString outline(QLayout* layout);

/** The rules of a style sheet in order, each as "selector { declaration; declaration }". */
QStringList styleRules(const QString& styleSheet);

/** The rules that both windows have, after their own. */
QStringList sharedStyleRules();

/** The classes, names and order of a widget's child widgets and actions, e.g. "QLabel logo". */
QStringList namedChildren(const QObject* parent);

/** The name under which assistive software finds a widget. */
QString accessibleName(QWidget* widget);

/** The object names of the widgets that the Tab key goes through, from the given one until it comes round. */
QStringList tabOrder(QWidget* first);
