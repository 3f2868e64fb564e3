#include "ui/AppFocusRing.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QPainter>
#include <QProxyStyle>
#include <QPushButton>
#include <QStyleOptionSlider>

namespace {

constexpr int RingWidth = 2;

/** The desktop's style without its own focus mark, which the ring replaces. */
class RingStyle : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        if (element != PE_FrameFocusRect)
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override
    {
        const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (!slider)
            return QProxyStyle::drawComplexControl(control, option, painter, widget);
        // Some styles show a slider's focus by its colours.
        QStyleOptionSlider unfocused = *slider;
        unfocused.state &= ~State_HasFocus;
        QProxyStyle::drawComplexControl(control, &unfocused, painter, widget);
    }

    int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override
    {
        const bool isMargin = metric == PM_FocusFrameHMargin || metric == PM_FocusFrameVMargin;
        return isMargin ? RingWidth : QProxyStyle::pixelMetric(metric, option, widget);
    }

    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override
    {
        // A mask would cut off the part of the ring that lies inside a button, around its picture.
        if (hint == SH_FocusFrame_Mask)
            return false;
        // If a combo box opened its list like a menu, the style sheets would hide the selected entry.
        if (hint == SH_ComboBox_Popup)
            return false;
        return QProxyStyle::styleHint(hint, option, widget, returned);
    }
};

} // namespace

AppFocusRing::AppFocusRing(QWidget* window)
    : QFocusFrame(window)
    , ownWindow(window)
{
    hide();
    auto* style = new RingStyle(QApplication::style()->objectName());
    style->setParent(window);
    window->setStyle(style);
    // Buttons with a style sheet of their own do not inherit the window's style.
    const auto buttons = window->findChildren<QPushButton*>();
    for (QPushButton* button : buttons)
        button->setStyle(style);
    // The desktop's style may open lists like menus; then Qt has turned off their scroll bars.
    const auto lists = window->findChildren<QComboBox*>();
    for (const QComboBox* list : lists)
        list->view()->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    connect(qApp, SIGNAL(focusChanged(QWidget*,QWidget*)), this, SLOT(onFocusChanged(QWidget*,QWidget*)));
}

void AppFocusRing::paintEvent(QPaintEvent*)
{
    const QRect marked = markedArea();
    const QRect outer = marked.adjusted(-RingWidth, -RingWidth, RingWidth, RingWidth);
    QPainter painter(this);
    painter.setClipRegion(QRegion(outer) - marked);
    painter.fillRect(outer, Qt::white);
}

void AppFocusRing::onFocusChanged(QWidget*, QWidget* now)
{
    const bool isControl = now && now->window() == ownWindow && now->focusPolicy() != Qt::NoFocus;
    setWidget(isControl ? now : nullptr);
}

QRect AppFocusRing::markedArea() const
{
    const QRect control = rect().adjusted(RingWidth, RingWidth, -RingWidth, -RingWidth);
    const auto* button = qobject_cast<const QPushButton*>(widget());
    if (!button || !button->text().isEmpty())
        return control;
    // A button without text shows a square picture in its middle, as high as the button.
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, QSize(control.height(), control.height()),
                               control);
}
