#include "system/window/Window.h"

#include "support/Form.h"
#include "system/window/Desktop.h"

#include <QCheckBox>
#include <QSlider>
#include <QtTest>

namespace {

constexpr int AppearMs = 10000;

// The area of a widget in its window.
QRect areaInWindow(const QWidget* widget)
{
    return {widget->mapTo(widget->window(), QPoint(0, 0)), widget->size()};
}

QString sizeText(const QSize& size)
{
    return QString("%1 x %2").arg(size.width()).arg(size.height());
}

} // namespace

Window::Window(const QString& title)
    : Window([&title] { return desktop().findWindow(title); }, title)
{
}

Window Window::popup()
{
    return Window([] { return desktop().findPopup(); }, "a menu or tooltip");
}

Window::Window(const std::function<QString()>& find, const QString& description)
{
    static_cast<void>(QTest::qWaitFor(
        [&] {
            id = find();
            return !id.isEmpty();
        },
        AppearMs));
    if (id.isEmpty())
        QTest::qFail(qPrintable("not on the screen: " + description), __FILE__, __LINE__);
}

bool Window::isOnScreen(const QString& title)
{
    return !desktop().findWindow(title).isEmpty();
}

bool Window::isOnScreen() const
{
    return desktop().isOnScreen(id);
}

void Window::activate() const
{
    desktop().activate(id);
    // A minimised window becomes active before it is on the screen again.
    QTRY_VERIFY(isOnScreen());
}

void Window::minimise() const
{
    desktop().minimise(id);
}

QRect Window::areaOf(const QWidget* control) const
{
    // The copy may still be at its layout.
    const QWidget* copy = control->window();
    if (!QTest::qWaitFor([&] { return desktop().sizeOf(id) == copy->size(); })) {
        const QString sizes = sizeText(desktop().sizeOf(id)) + ", its copy's " + sizeText(copy->size());
        QTest::qFail(qPrintable("the window's size is " + sizes), __FILE__, __LINE__);
    }
    return areaInWindow(control);
}

QPoint Window::spotOf(const QWidget* control) const
{
    const QRect area = areaOf(control);
    if (const auto* check = qobject_cast<const QCheckBox*>(control))
        return area.topLeft() + indicator(check).center();
    if (const auto* slider = qobject_cast<const QSlider*>(control))
        return area.topLeft() + handle(slider).center();
    return area.center();
}

void Window::pointAt(const QPoint& place) const
{
    desktop().pointAt(place, id);
}

void Window::pointAt(const QWidget* control) const
{
    pointAt(spotOf(control));
}

void Window::press(const QWidget* control) const
{
    pointAt(control);
    desktop().pressMouse();
}

void Window::click(const QPoint& place) const
{
    pointAt(place);
    desktop().clickMouse();
}

void Window::click(const QWidget* control) const
{
    click(spotOf(control));
}

QImage Window::picture() const
{
    return desktop().pictureOf(id).convertToFormat(QImage::Format_RGB32);
}

void pointAway()
{
    desktop().pointAt(QPoint(Desktop::ScreenSize.width() - 1, Desktop::ScreenSize.height() - 1));
}

void type(const QString& text)
{
    QStringList keys;
    for (const QChar letter : text)
        keys.append(letter.isUpper() ? QString("shift+") + letter.toLower() : QString(letter));
    desktop().pressKeys(keys);
}
