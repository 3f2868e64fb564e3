#include "BareWindow.h"

#include <QVBoxLayout>

BareWindow::BareWindow(const QPushButton& look, const QString& portName)
{
    button.setStyleSheet(look.styleSheet());
    button.setFixedSize(look.size());
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(&button);

    port.setPortName(portName);
    port.setBaudRate(QSerialPort::Baud9600);
    if (!port.open(QIODevice::ReadWrite))
        qFatal("cannot open %s", qPrintable(portName));
    connect(&button, SIGNAL(pressed()), this, SLOT(sendFrame()));
}

void BareWindow::sendFrame()
{
    port.write(MoveUpFrame, sizeof(MoveUpFrame));
}
