#pragma once

#include <QList>
#include <QObject>
#include <QTimer>

class QAbstractButton;
class QKeyEvent;
class QWidget;

/**
 * Sees to it that a button is held exactly as long as the user holds it, so that the camera neither runs on
 * alone nor stutters. It covers what QAbstractButton leaves open:
 *
 *  - A button stays down when a popup takes the focus, a modal box takes the input away or its window goes.
 *    Here it emits released() in each case, and whenever else the focus leaves, as Qt 5.15 does by itself.
 *  - On X11 a held key repeats as releases and presses, and Qt 5 often takes these for real ones. They carry
 *    one time stamp; such a pair is dropped here.
 *  - A button that the mouse or a key presses or releases draws its new look before it emits pressed() or
 *    released(). For the motion buttons the drawing waits, so that the camera has its command first.
 */
class AppHoldGuard : public QObject
{
    Q_OBJECT

public:
    /**
     * Guards all buttons that the window has now.
     *
     * @param motion the buttons whose command goes out before they are drawn. What is slow to act had better
     *               be drawn first, as Qt does it.
     */
    AppHoldGuard(QWidget* window, const QList<QAbstractButton*>& motion);

    /** Releases what is still held. */
    ~AppHoldGuard() override;

    /** Looks at the events of the window and its buttons before they do. */
    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    /** Makes every held button go up and emit released(); the end of that press then changes nothing more. */
    void releaseHeldButtons();

private slots:
    void onKeyReleaseDue();

private:
    void drawLater(QAbstractButton* button);
    bool isKeyRepeat(QAbstractButton* button, const QKeyEvent* event);

    QList<QAbstractButton*> buttons;
    QList<QAbstractButton*> motionButtons;
    QAbstractButton* waitingButton = nullptr;
    ulong waitingSince = 0;
    QTimer keyReleaseTimer;
};
