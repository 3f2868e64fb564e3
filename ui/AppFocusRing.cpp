#include "ui/AppFocusRing.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleFactory>

AppFocusRing::AppFocusRing(QWidget* window)
    : QFocusFrame(window)
    , ownWindow(window)
{
    hide();
    // Width and shape of the ring come from the style. This one is there on every system.
    QStyle* style = QStyleFactory::create("Windows");
    style->setParent(this);
    setStyle(style);
    connect(qApp, SIGNAL(focusChanged(QWidget*,QWidget*)), this, SLOT(onFocusChanged(QWidget*,QWidget*)));
}

void AppFocusRing::paintEvent(QPaintEvent*)
{
    QPainter(this).fillRect(rect(), Qt::white);
}

void AppFocusRing::onFocusChanged(QWidget*, QWidget* now)
{
    const bool isControl = now && now->window() == ownWindow && now->focusPolicy() != Qt::NoFocus;
    setWidget(isControl ? now : nullptr);
}
