#pragma once

#include <QList>
#include <QObject>
#include <QTimer>

class QAbstractButton;
class QKeyEvent;

/**
 * Sees to it that a motion button is held exactly as long as the user holds it, so that the camera neither
 * runs on alone nor stutters. It covers what QAbstractButton leaves open:
 *
 *  - A button stays down when a popup takes the focus, a modal box takes the input away or its window goes.
 *    Here it emits released() in each case, and whenever else the focus leaves, as Qt does by itself.
 *  - On X11 a held key repeats as releases and presses, and Qt often takes these for real ones. They carry
 *    one time stamp; such a pair is dropped here.
 *  - A button that the mouse or a key presses or releases draws its new look before it emits pressed() or
 *    released(). Here the drawing waits, so that the camera has its command first.
 */
class AppHoldGuard : public QObject
{
    Q_OBJECT

public:
    /** Guards these buttons and no other. */
    explicit AppHoldGuard(const QList<QAbstractButton*>& motionButtons);

    /** Releases what is still held. */
    ~AppHoldGuard() override;

    /** Looks at the events of the buttons before they do. */
    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    /** Makes every held button go up and emit released(); the end of that press then changes nothing more. */
    void releaseHeldButtons();

private slots:
    void onKeyReleaseDue();

private:
    static void drawLater(QAbstractButton* button);
    bool isKeyRepeat(QAbstractButton* button, const QKeyEvent* event);

    QList<QAbstractButton*> buttons;
    QAbstractButton* waitingButton = nullptr;
    int waitingKey = 0;
    ulong waitingSince = 0;
    QTimer keyReleaseTimer;
};
