#pragma once

#include <QList>
#include <QObject>

class QAbstractButton;
class QWidget;

/**
 * Ends the motion of a held button wherever Qt would leave the button down or let it up in silence, so that
 * the camera never runs on alone. QAbstractButton emits released() when the mouse button or key goes up and
 * when the pointer is dragged off; not when the focus leaves, when a modal box takes the input away, or when
 * its window goes.
 */
class AppHoldGuard : public QObject
{
    Q_OBJECT

public:
    /**
     * @param window the buttons' window
     * @param buttons the buttons whose released() ends a motion
     */
    AppHoldGuard(QWidget* window, const QList<QAbstractButton*>& buttons);

    /** Releases what is still held. */
    ~AppHoldGuard() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    /** Makes every held button go up and emit released(); its later real release emits nothing. */
    void releaseHeldButtons();

private:
    QList<QAbstractButton*> buttons;
};
