#include "support/Desk.h"
#include "support/Form.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace {

constexpr int RingWidth = 2;

// WCAG's least contrast for the parts of a control.
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

// The visible part of a control, in its window: the image in the middle of an image button, or all of it.
QRect seenPartOf(const QWidget* control)
{
    const QRect all(control->mapTo(control->window(), QPoint(0, 0)), control->size());
    QString image = control->objectName() == SettingsButton.name ? SettingsButton.image : "";
    for (const ImageButton& button : ImageButtons) {
        if (control->objectName() == button.name)
            image = button.image;
    }
    if (image.isEmpty())
        return all;
    const int side = QImage(":/assets/" + image).width();
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, {side, side}, all);
}

// A text field with the focus shows a cursor: copies the field from a picture without it.
void leaveOutCursor(QImage& picture, const QImage& other, const QWidget* control)
{
    if (qobject_cast<const QLineEdit*>(control))
        QPainter(&picture).drawImage(seenPartOf(control), other, seenPartOf(control));
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

void addWindows()
{
    QTest::addColumn<QByteArray>("window");
    QTest::newRow("main window") << QByteArray("AppMainWin");
    QTest::newRow("settings") << QByteArray("AppSettingWin");
}

// The window of that name, with the settings open beside it.
QWidget* windowOf(const Desk& desk, const QByteArray& name)
{
    desk.find<QPushButton>("settingsBtn")->click();
    return name == "AppMainWin" ? desk.program->app.mainWin : desk.find<QWidget>(name.constData());
}

} // namespace

/** The user sees which control has the focus, and no control acts on a key before it has been chosen. */
class KeyboardFocusTest : public QObject
{
    Q_OBJECT

private slots:

    void theControlWithTheFocusHasAWhiteRing_data() { addWindows(); }

    void theControlWithTheFocusHasAWhiteRing()
    {
        QFETCH(QByteArray, window);
        Desk desk({{"isstartuppreset", true}});
        QWidget* shown = windowOf(desk, window);
        shown->activateWindow();
        QTRY_VERIFY(shown->isActiveWindow());
        // Set by Tab; some styles draw no mark of the focus before.
        shown->setAttribute(Qt::WA_KeyboardFocusChange);
        const QImage without = pictureOf(shown);

        const auto shownControls = controlsOf(shown);
        QVERIFY(!shownControls.isEmpty());
        for (QWidget* control : shownControls) {
            control->setFocus(Qt::TabFocusReason);
            QTRY_VERIFY(control->hasFocus());
            const QImage with = pictureOf(shown);
            QImage withoutRing = with;
            const QRect seen = seenPartOf(control);
            const auto outside = frameAround(seen, RingWidth + 1);
            for (const QPoint& point : outside)
                QVERIFY2(contrast(qRgb(255, 255, 255), with.pixel(point)) >= LeastContrast,
                         qPrintable(control->objectName()));

            for (int distance = 1; distance <= RingWidth; ++distance) {
                const auto ring = frameAround(seen, distance);
                for (const QPoint& point : ring) {
                    QCOMPARE(with.pixel(point), qRgb(255, 255, 255));
                    QVERIFY2(contrast(with.pixel(point), without.pixel(point)) >= LeastContrast,
                             qPrintable(control->objectName()));
                    withoutRing.setPixel(point, without.pixel(point));
                }
            }
            leaveOutCursor(withoutRing, without, control);
            QVERIFY2(withoutRing == without, qPrintable(control->objectName() + " shows more than the ring"));
        }
    }

    void theRingGoesWithTheFocus()
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

    void anOpenListMarksItsChosenEntry_data()
    {
        QTest::addColumn<QByteArray>("list");
        for (const char* list : {"comPortCombo", "baudRateCombo", "startUpPresetCombo"})
            QTest::newRow(list) << QByteArray(list);
    }

    void anOpenListMarksItsChosenEntry()
    {
        QFETCH(QByteArray, list);
        Desk desk({{"isstartuppreset", true}});
        desk.find<QPushButton>("settingsBtn")->click();
        auto* combo = desk.find<QComboBox>(list.constData());
        // The chosen entry is neither the first nor the last, where the strips are.
        combo->addItems({"one more", "another"});
        combo->setCurrentIndex(1);

        combo->showPopup();
        QTRY_VERIFY(combo->view()->isVisible());

        QWidget* popup = combo->view()->window();
        const QImage shown = pictureOf(popup);
        const auto colourOf = [&](int row) {
            const QRect entry = combo->view()->visualRect(combo->model()->index(row, 0));
            const int leftOfTheText = 1;
            return shown.pixel(
                combo->view()->viewport()->mapTo(popup, QPoint(leftOfTheText, entry.center().y())));
        };
        QVERIFY(contrast(colourOf(1), colourOf(0)) >= LeastContrast);
        // No strip of another colour above and below the entries, except for a thin frame.
        for (const int y : {2, shown.height() - 3})
            QVERIFY(contrast(shown.pixel(shown.width() / 3, y), colourOf(0)) < LeastContrast);
        combo->hidePopup();
    }

    void aLongListHasAScrollBar()
    {
        Desk desk({{"isstartuppreset", true}});
        desk.find<QPushButton>("settingsBtn")->click();
        auto* presets = desk.find<QComboBox>("startUpPresetCombo");

        presets->showPopup();

        QTRY_VERIFY(presets->view()->verticalScrollBar()->isVisible());
        presets->hidePopup();
    }

    void keysRightAfterTheStartDoNothing()
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

    void spaceRightAfterTheSettingsOpenDoesNothing()
    {
        Desk desk;
        desk.find<QPushButton>("settingsBtn")->click();
        const auto* settings = desk.find<QWidget>("AppSettingWin");
        QTRY_VERIFY(settings->isActiveWindow());

        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);

        QVERIFY(!desk.settings()->getRunOnStartUp());
        QCOMPARE(desk.profile.osascriptRuns().size(), 0);
    }

    void theFirstTabGoesToTheFirstControl()
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

    void tabSelectsTheTextOfAField()
    {
        Desk desk;
        auto* field = desk.find<QLineEdit>("presetEdit");
        field->setText("12");
        desk.find<QPushButton>("preset9Btn")->setFocus();

        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);

        QCOMPARE(field->selectedText(), QString("12"));
    }

    void anEmptyFieldShowsTheCursorAndSelectsNothing_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::addColumn<Qt::FocusReason>("reason");
        for (const char* field : {"presetEdit", "presetNameEdit"}) {
            QTest::addRow("%s, Tab", field) << QByteArray(field) << Qt::TabFocusReason;
            QTest::addRow("%s, Shift+Tab", field) << QByteArray(field) << Qt::BacktabFocusReason;
            QTest::addRow("%s, a press", field) << QByteArray(field) << Qt::MouseFocusReason;
        }
    }

    // A screen reader does not read a field whose selection Qt reports before its focus.
    void anEmptyFieldShowsTheCursorAndSelectsNothing()
    {
        QFETCH(QByteArray, name);
        QFETCH(Qt::FocusReason, reason);
        Desk desk;
        auto* field = desk.find<QLineEdit>(name.constData());
        // The cursor does not blink.
        QApplication::setCursorFlashTime(0);
        const QImage without = pictureOf(field);
        const QSignalSpy selections(field, SIGNAL(selectionChanged()));

        if (reason == Qt::MouseFocusReason)
            QTest::mousePress(field, Qt::LeftButton);
        else
            field->setFocus(reason);
        QVERIFY(pictureOf(field) != without);
        QCOMPARE(selections.count(), 0);
        QTest::keyClicks(QApplication::focusWidget(), "7");
        QCOMPARE(field->text(), QString("7"));
    }

    void withoutTheFocusTheWindowIsDrawnInTheDesktopsStyle_data() { addWindows(); }

    void withoutTheFocusTheWindowIsDrawnInTheDesktopsStyle()
    {
        QFETCH(QByteArray, window);
        Desk desk;
        QWidget* shown = windowOf(desk, window);
        const QImage withRingStyle = pictureOf(shown);

        shown->setStyle(QApplication::style());
        const auto buttons = shown->findChildren<QPushButton*>();
        for (QPushButton* button : buttons)
            button->setStyle(QApplication::style());

        QVERIFY(pictureOf(shown) == withRingStyle);
    }
};

QTEST_APPLESS_MAIN(KeyboardFocusTest)

#include "KeyboardFocusTest.moc"
