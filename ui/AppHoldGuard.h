#pragma once

#include <QTimer>

class QAbstractButton;

/**
 * Makes sure that a motion ends when its button goes up, and that a command is sent before the button is
 * redrawn. QAbstractButton does not always emit released() when it goes up, and it may stay down when its
 * window is hidden or blocked. It also redraws itself before it emits pressed() or released(), which takes
 * much longer than sending the command.
 */
class AppHoldGuard : public QObject
{
    Q_OBJECT

public:
    /** Guards a button whose pressed() starts a motion and whose released() ends it. */
    explicit AppHoldGuard(QAbstractButton* button);

    /** Ends the motion. */
    ~AppHoldGuard() override;

    /** Ends the motion when the button loses the focus or is hidden, or when its window is deactivated or
     * blocked. */
    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    /** Raises the button; if a motion is under way, the button emits released(). When the user lets go later,
     * nothing happens. */
    void endMotion();

private slots:
    void catchUp();

private:
    QAbstractButton* motionButton;
    bool isMoving = false;
    // Its interval is 0: it fires after the event loop has let the port write.
    QTimer nextTurn;
};
