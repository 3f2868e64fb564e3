#pragma once

#include <QPushButton>
#include <QSerialPort>
#include <QWidget>

/** The frame of the Up button at speed 5, the default. */
constexpr char MoveUpFrame[] = {'\x81', '\x01', '\x06', '\x01', '\x05', '\x05', '\x03', '\x01', '\xFF'};

/**
 * The floor of a press: a window with one button, which writes a frame of nine bytes and does nothing else.
 * The button looks like the program's, so that drawing it pressed takes the same time.
 */
class BareWindow : public QWidget
{
    Q_OBJECT

public:
    /**
     * @param look the button whose style sheet and size this one takes
     * @param portName the port to open; fatal if it cannot be opened
     */
    BareWindow(const QPushButton& look, const QString& portName);

    QPushButton button;
    QSerialPort port;

private slots:
    void sendFrame();
};
