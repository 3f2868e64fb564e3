#pragma once

#include <QTimer>

/**
 * Drops the repeats of a held key on X11. The X server repeats a key as releases and presses, and Qt often
 * takes these for real ones, so that a held Space would click a button again and again. The release and the
 * press of a repeat are of one key and have one time stamp. A real release takes effect 25 ms later, or right
 * before the next key, a press of the mouse on the button, or the loss of the focus.
 */
class AppKeyRepeat : public QObject
{
    Q_OBJECT

public:
    /** Serves every button that this window, its parent, has now, those of its dialogs included. */
    explicit AppKeyRepeat(QWidget* window);

    /** A release that still waits takes effect now. */
    ~AppKeyRepeat() override;

    /** Holds the release of a key back until it is known whether a press follows it. */
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void release();

private:
    QObject* waitingButton = nullptr;
    int waitingKey = 0;
    ulong waitingSince = 0;
    QTimer waitingTime{this};
    bool isReleasing = false;
};
