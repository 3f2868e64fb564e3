#pragma once

#include <QTimer>

class QAbstractButton;

/**
 * Ends a motion with its button, so that the camera never runs on alone, and lets the camera have its command
 * before the button is drawn. QAbstractButton goes up in silence in some cases, stays down in others when its
 * window is taken away, and draws before it emits pressed() or released(), which takes far longer than a
 * command.
 */
class AppHoldGuard : public QObject
{
    Q_OBJECT

public:
    /** Guards a button whose pressed() starts a motion and whose released() ends it. */
    explicit AppHoldGuard(QAbstractButton* button);

    /** Ends the motion. */
    ~AppHoldGuard() override;

    /** Ends the motion when the button loses the focus, is hidden, or its window is left or blocked. */
    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    /** Lets the button go up and emit released() if a motion is under way. The end of that press does
     * nothing. */
    void endMotion();

private slots:
    void catchUp();

private:
    QAbstractButton* motionButton;
    bool isMoving = false;
    // A timer of no time: it comes due after the port's turn to write.
    QTimer nextTurn;
};
