#pragma once

#include "app/VantrelApp.h"
#include "ui/AppMainWin.h"

#include <QEvent>

#include <functional>
#include <utility>

/** Looks at the main window of the next program when it is shown. */
class WhenShown : public QObject
{
public:
    explicit WhenShown(std::function<void(QWidget*)> lookAtWindow)
        : look(std::move(lookAtWindow))
    {
        current() = this;
        static const bool registered = (qAddPreRoutine(&WhenShown::watch), true);
        Q_UNUSED(registered)
    }

    ~WhenShown() override { current() = nullptr; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<AppMainWin*>(watched))
            look(static_cast<QWidget*>(watched));
        return false;
    }

private:
    static void watch()
    {
        if (current())
            QCoreApplication::instance()->installEventFilter(current());
    }

    static WhenShown*& current()
    {
        static WhenShown* watcher = nullptr;
        return watcher;
    }

    std::function<void(QWidget*)> look;
};
