#pragma once

#include <QTimer>

/**
 * Drops the repeats of a held key on X11. The X server sends each repeat as a release and a press. Qt often
 * does not recognise them, so a held Space would click a button again and again. The release and the press of
 * a repeat have the same key and the same time stamp. So a release that may raise a button is held back for
 * up to 25 ms, until it is clear that no such press follows. It is delivered earlier if another key event, a
 * mouse press on a button or the loss of the focus comes first.
 */
class AppKeyRepeat : public QObject
{
    Q_OBJECT

public:
    /** Handles the keys of every button that exists in this window and its dialogs. The window becomes its
     * parent. */
    explicit AppKeyRepeat(QWidget* window);

    /** Delivers a release that is still held back. */
    ~AppKeyRepeat() override;

    /** Holds back the release of a key until it is known whether it belongs to a repeat. */
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
