#include "support/Desk.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>

#include <algorithm>
#include <cmath>

namespace {

constexpr int RingWidth = 2;

// What WCAG asks of everything that has to be seen.
constexpr double LeastContrast = 3;

double linear(int component)
{
    const double share = component / 255.0;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

// The relative luminance of WCAG 2.
double luminance(QRgb colour)
{
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrast(QRgb one, QRgb other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QImage pictureOf(QWidget* window)
{
    return window->grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// The pixels of a frame around an area, `distance` pixels away from it; 1 is the nearest.
QVector<QPoint> frameAround(const QRect& area, int distance)
{
    const QRect outer = area.adjusted(-distance, -distance, distance, distance);
    QVector<QPoint> points;
    for (int x = outer.left(); x <= outer.right(); ++x)
        points << QPoint(x, outer.top()) << QPoint(x, outer.bottom());
    for (int y = outer.top(); y <= outer.bottom(); ++y)
        points << QPoint(outer.left(), y) << QPoint(outer.right(), y);
    return points;
}

QList<QWidget*> controlsOf(QWidget* window)
{
    QList<QWidget*> controls = window->findChildren<QWidget*>();
    controls.erase(std::remove_if(controls.begin(), controls.end(),
                                  [window](const QWidget* widget) {
                                      return widget->focusPolicy() == Qt::NoFocus ||
                                             widget->window() != window || !widget->isVisible();
                                  }),
                   controls.end());
    return controls;
}

} // namespace

/** Whoever works without a mouse sees where the keyboard is, and nothing acts unasked. */
class KeyboardFocusTest : public QObject
{
    Q_OBJECT

private slots:
    void everyControlShowsThatItHasTheKeyboard_data();
    void everyControlShowsThatItHasTheKeyboard();
    void nothingShowsAFocusThatIsElsewhere();
    void spaceAfterTheStartDoesNothing();
    void spaceAfterTheSettingsOpenDoesNothing();
    void theFirstTabGoesToTheFirstControl();
};

void KeyboardFocusTest::everyControlShowsThatItHasTheKeyboard_data()
{
    QTest::addColumn<QString>("window");
    QTest::addColumn<int>("controls");
    QTest::newRow("main window") << "AppMainWin" << 22;
    QTest::newRow("settings") << "AppSettingWin" << 10;
}

void KeyboardFocusTest::everyControlShowsThatItHasTheKeyboard()
{
    QFETCH(QString, window);
    QFETCH(int, controls);
    Desk desk({{"isstartuppreset", true}});
    QWidget* shown = desk.program->app.mainWin;
    if (window == "AppSettingWin") {
        desk.find<QPushButton>("settingsBtn")->click();
        shown = desk.find<QWidget>("AppSettingWin");
    }
    QTRY_VERIFY(shown->isActiveWindow());
    const QImage without = pictureOf(shown);

    const auto shownControls = controlsOf(shown);
    QCOMPARE(shownControls.size(), controls);
    for (QWidget* control : shownControls) {
        control->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(control->hasFocus());
        const QImage with = pictureOf(shown);
        const QRect area(control->mapTo(shown, QPoint(0, 0)), control->size());

        for (int distance = 1; distance <= RingWidth; ++distance) {
            const auto ring = frameAround(area, distance);
            for (const QPoint& point : ring) {
                QCOMPARE(with.pixel(point), qRgb(255, 255, 255));
                QVERIFY2(contrast(with.pixel(point), without.pixel(point)) >= LeastContrast,
                         qPrintable(control->objectName()));
            }
        }
        const auto outside = frameAround(area, RingWidth + 1);
        for (const QPoint& point : outside) {
            QCOMPARE(with.pixel(point), without.pixel(point));
            QVERIFY2(contrast(qRgb(255, 255, 255), with.pixel(point)) >= LeastContrast,
                     qPrintable(control->objectName()));
        }
    }
}

void KeyboardFocusTest::nothingShowsAFocusThatIsElsewhere()
{
    Desk desk;
    QWidget* window = desk.program->app.mainWin;
    QTRY_VERIFY(window->isActiveWindow());
    const QImage before = pictureOf(window);

    desk.find<QPushButton>("leftBtn")->setFocus(Qt::TabFocusReason);
    QTRY_VERIFY(pictureOf(window) != before);
    desk.find<QWidget>("centralWidget")->setFocus();

    QTRY_COMPARE(pictureOf(window), before);
}

void KeyboardFocusTest::spaceAfterTheStartDoesNothing()
{
    Desk desk;
    QWidget* window = desk.program->app.mainWin;
    QTRY_VERIFY(window->isActiveWindow());

    QVERIFY(QApplication::focusWidget());
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_5})
        QTest::keyClick(QApplication::focusWidget(), key);

    QVERIFY(!desk.find<QWidget>("AppSettingWin")->isVisible());
    QVERIFY(desk.link()->isConnected());
    QCOMPARE(desk.find<QLineEdit>("presetEdit")->text(), QString());
    QCOMPARE(desk.profile.log(), QStringList());
    QCOMPARE(desk.user.texts(), QStringList());
}

void KeyboardFocusTest::spaceAfterTheSettingsOpenDoesNothing()
{
    Desk desk;
    desk.find<QPushButton>("settingsBtn")->click();
    const auto* settings = desk.find<QWidget>("AppSettingWin");
    QTRY_VERIFY(settings->isActiveWindow());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);

    QVERIFY(!desk.settings()->getRunOnStartUp());
    QCOMPARE(desk.profile.osascriptRuns().size(), 0);
}

void KeyboardFocusTest::theFirstTabGoesToTheFirstControl()
{
    Desk desk;
    QTRY_VERIFY(desk.program->app.mainWin->isActiveWindow());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->objectName(), QString("settingsBtn"));

    desk.find<QPushButton>("settingsBtn")->click();
    QTRY_VERIFY(desk.find<QWidget>("AppSettingWin")->isActiveWindow());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->objectName(), QString("runOnStartUpCheck"));
}

QTEST_APPLESS_MAIN(KeyboardFocusTest)

#include "KeyboardFocusTest.moc"
