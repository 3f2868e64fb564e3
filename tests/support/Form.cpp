#include "support/Form.h"

#include <QAccessible>
#include <QAction>
#include <QCheckBox>
#include <QMetaMethod>
#include <QPainter>
#include <QRegularExpression>
#include <QSlider>
#include <QStyleOptionButton>
#include <QStyleOptionSlider>
#include <QWidget>
#include <QtTest>

QString BracketTranslator::translate(const char* context, const char* source, const char* disambiguation,
                                     int n) const
{
    Q_UNUSED(disambiguation)
    Q_UNUSED(n)
    return context == ownContext ? '<' + QString(source) + '>' : QString();
}

QObject* formObject(QWidget* window, const char* name)
{
    if (!*name)
        return window;
    auto* object = window->findChild<QObject*>(name);
    if (!object)
        qFatal("there is no %s", name);
    return object;
}

QString textOf(QWidget* window, const FormText& text)
{
    return formObject(window, text.object)->property(text.property).toString();
}

QImage screenshot(QWidget* part)
{
    QWidget* window = part->window();
    const QRect place(part->mapTo(window, QPoint(0, 0)), part->size());
    return window->grab(place).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
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

QImage buttonWithFrame(const QSize& button, const QString& image, int frame)
{
    const QImage strip(":/assets/" + image);
    const int frameSize = strip.height() / 3;
    QImage picture(button, QImage::Format_ARGB32_Premultiplied);
    constexpr QRgb background = 0xff333333;
    picture.fill(background);
    QPainter painter(&picture);
    painter.drawImage((button.width() - frameSize) / 2, 0, strip, 0, frame * frameSize, frameSize, frameSize);
    return picture;
}

QRect indicator(const QCheckBox* check)
{
    QStyleOptionButton option;
    option.initFrom(check);
    return check->style()->subElementRect(QStyle::SE_CheckBoxIndicator, &option, check);
}

QRect handle(const QSlider* slider)
{
    QStyleOptionSlider option;
    option.initFrom(slider);
    option.orientation = Qt::Horizontal;
    option.minimum = slider->minimum();
    option.maximum = slider->maximum();
    option.sliderPosition = slider->sliderPosition();
    option.sliderValue = slider->value();
    return slider->style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, slider);
}

QWidget* toolTipWindow()
{
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget* window : windows) {
        if (window->windowType() == Qt::ToolTip && window->isVisible())
            return window;
    }
    qFatal("there is no tooltip");
}

QString outline(QLayout* layout)
{
    QStringList items;
    for (int i = 0; i < layout->count(); ++i) {
        QLayoutItem* item = layout->itemAt(i);
        if (item->layout())
            items.append(outline(item->layout()));
        else
            items.append(item->widget() ? item->widget()->objectName() : "spacer");
    }
    return layout->objectName() + '(' + items.join(' ') + ')';
}

QStringList styleRules(const QString& styleSheet)
{
    static const QRegularExpression rulePattern("([^{}]+)\\{([^{}]*)\\}");

    QStringList rules;
    auto matches = rulePattern.globalMatch(styleSheet);
    while (matches.hasNext()) {
        const QRegularExpressionMatch rule = matches.next();
        QStringList declarations;
        const auto parts = rule.captured(2).split(';');
        for (const QString& part : parts) {
            if (!part.trimmed().isEmpty())
                declarations.append(part.trimmed());
        }
        rules.append(rule.captured(1).trimmed() + " { " + declarations.join("; ") + " }");
    }
    return rules;
}

QStringList sharedStyleRules()
{
    return {
        // The rules longer than a line. NOLINTNEXTLINE(bugprone-suspicious-missing-comma)
        "QGroupBox { color : white; margin-top : 2ex; border-radius : 5px; padding : 8px; "
        "padding-top : 13px; border-style: outset; border-width: 2px; border-color: #1f1f1f }",
        "QMenuBar#menuBar { background : grey; color : white; border-bottom-style: outset; "
        "border-bottom-width: 1px; border-bottom-color: #222222 }",
        "QMenu { background : grey; color : #1f1f1f }",
        "QMenu::item:selected { background : #c9c9c9 }",
        "QStatusBar#statusBar { background : grey; color : white; border-top-style: outset; "
        "border-top-width: 1px; border-top-color: #222222 }",
        "QPushButton { color : white; background : grey; padding : 8px 5px; border-radius : 3px; "
        "min-width : 60px }",
        "QPushButton:hover { background : #c9c9c9 }",
        "QPushButton:pressed { background : #474747 }",
        "QPushButton:disabled { color : #474747 }",
        "QLineEdit { color : white; background : #111111; padding : 3px; border-radius : 3px; "
        "border-color : white; border-width : 1px }",
        "QComboBox { color : white; background : #111111; padding : 3px; min-width : 40px; "
        "border-radius : 3px }",
        "QComboBox::drop-down {  }",
        "QComboBox QAbstractItemView { background-color : black; color : white }",
        "QSlider::handle { background : grey }",
        "QSlider::handle:hover { background : #c9c9c9 }",
        "QSlider::handle:pressed { background : #474747 }",
        "QLabel { color : white }",
        "QRadioButton { color : white }",
        "QCheckBox { color : white }",
        "QRadioButton::indicator { border-style: outset; border-width: 2px; border-color: #1f1f1f; "
        "background : white; border-radius : 6px }",
        "QRadioButton::indicator:checked { border-style: outset; border-width: 2px; border-color: white; "
        "background : #1f1f1f; border-radius : 6px }",
        "QCheckBox::indicator { border-style: outset; border-width: 2px; border-color: #1f1f1f; "
        "background : white }",
        "QCheckBox::indicator:checked { border-style: outset; border-width: 2px; border-color: white; "
        "background : #1f1f1f }",
    };
}

QStringList namedChildren(const QObject* parent)
{
    QStringList names;
    for (const QObject* child : parent->children()) {
        if (child->isWidgetType() || qobject_cast<const QAction*>(child))
            names.append(QString(child->metaObject()->className()) + ' ' + child->objectName());
    }
    return names;
}

QByteArrayList privateSlots(const QMetaObject& type)
{
    QByteArrayList declared;
    for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
        const QMetaMethod method = type.method(index);
        QByteArray parameter = method.parameterTypes().join() + ' ' + method.parameterNames().join();
        declared.append(method.name() + '(' + parameter.trimmed() + ')');
        if (method.methodType() != QMetaMethod::Slot || method.access() != QMetaMethod::Private ||
            method.returnType() != QMetaType::Void)
            declared.last() += " is no private slot";
    }
    return declared;
}

QString accessibleName(QWidget* widget)
{
    return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
}

QStringList presetToolTips(const QWidget* window)
{
    QStringList toolTips;
    const auto names = defaultPresetNames();
    for (const QString& name : names)
        toolTips.append(window->findChild<QWidget*>(name.toLower() + "Btn")->toolTip());
    return toolTips;
}

QStringList defaultPresetNames()
{
    return {"Preset1", "Preset2", "Preset3", "Preset4", "Preset5",
            "Preset6", "Preset7", "Preset8", "Preset9"};
}

QStringList tabOrder(QWidget* first)
{
    QStringList names;
    first->setFocus();
    do {
        names.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    } while (QApplication::focusWidget() != first &&
             !names.contains(QApplication::focusWidget()->objectName()));
    return names;
}
