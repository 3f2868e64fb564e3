#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <functional>

class QMessageBox;

/**
 * The user in front of a message box: reads each box that opens and presses its button. Create it before the
 * application object for a box that opens while the program starts. One at a time.
 */
class MessageBoxWatcher : public QObject
{
public:
    struct Box
    {
        QString title;
        QString text;
        QStringList buttons;
    };

    MessageBoxWatcher();
    ~MessageBoxWatcher() override;

    /** The boxes that have been read, in order. Of stacked boxes the topmost comes first. */
    QVector<Box> boxes() const { return seen; }

    /** The texts of boxes(). */
    QStringList texts() const;

    /** Forgets the boxes so far. */
    void forget() { seen.clear(); }

    /** What to do once, while the next box is open, before its button is pressed. */
    void whenOpen(std::function<void()> action) { whileOpen = std::move(action); }

    /** Leaves every box open until this is true for the first time, for five seconds at most. */
    void holdUntil(std::function<bool()> condition);

    /** How many message boxes are on the screen now. */
    static int openCount();

private:
    void start();
    void readTopmostBox();
    static void startWithApplication();

    QTimer* poll = nullptr;
    QVector<Box> seen;
    std::function<void()> whileOpen;
    std::function<bool()> mayPress;
    QDeadlineTimer holdEnd;
};
