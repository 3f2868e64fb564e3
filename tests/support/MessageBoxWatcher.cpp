#include "support/MessageBoxWatcher.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QtTest>

namespace {

constexpr int PollMs = 5;
constexpr int HoldMs = 5000;
MessageBoxWatcher* current = nullptr;

} // namespace

MessageBoxWatcher::MessageBoxWatcher()
{
    current = this;
    if (QCoreApplication::instance()) {
        start();
        return;
    }
    // A timer needs the event dispatcher of an application object.
    static bool registered = false;
    if (!registered)
        qAddPreRoutine(&MessageBoxWatcher::startWithApplication);
    registered = true;
}

MessageBoxWatcher::~MessageBoxWatcher()
{
    current = nullptr;
}

QStringList MessageBoxWatcher::texts() const
{
    QStringList texts;
    for (const Box& box : seen)
        texts.append(box.text);
    return texts;
}

void MessageBoxWatcher::holdUntil(std::function<bool()> condition)
{
    mayPress = std::move(condition);
    holdEnd.setRemainingTime(HoldMs);
}

int MessageBoxWatcher::openCount()
{
    int count = 0;
    const auto widgets = QApplication::topLevelWidgets();
    for (const QWidget* widget : widgets)
        count += widget->isVisible() && qobject_cast<const QMessageBox*>(widget) ? 1 : 0;
    return count;
}

void MessageBoxWatcher::startWithApplication()
{
    if (current)
        current->start();
}

void MessageBoxWatcher::start()
{
    poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, &MessageBoxWatcher::readTopmostBox);
    poll->start(PollMs);
}

void MessageBoxWatcher::readTopmostBox()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    if (mayPress && !mayPress() && !holdEnd.hasExpired())
        return;
    mayPress = nullptr;

    QStringList buttons;
    const auto buttonList = box->buttons();
    for (const QAbstractButton* button : buttonList)
        buttons.append(button->text());
    seen.append({box->windowTitle(), box->text(), buttons});

    if (whileOpen) {
        const auto action = std::move(whileOpen);
        whileOpen = nullptr;
        action();
    }
    if (box->isVisible())
        QTest::mouseClick(buttonList.constFirst(), Qt::LeftButton);
}
