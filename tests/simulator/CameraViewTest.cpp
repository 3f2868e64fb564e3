#include "view/CameraView.h"
#include "support/Frames.h"
#include "support/PaintCounter.h"

#include <QPaintEngine>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QtMath>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

using namespace std::chrono_literals;

namespace {

constexpr QSize pictureSize(800, 450);
const QColor amber(0xff, 0xb0, 0x2e);
constexpr QChar degree(0xB0);

// From a command to the moment when the camera acts on it.
constexpr ViscaCamera::Time untilAction = 25ms;

// The focal length in pixels at the wide end: 60 degrees over 800 pixels.
const double wideFocus = 400 / std::tan(qDegreesToRadians(30.0));

double tangent(double degrees)
{
    return std::tan(qDegreesToRadians(degrees));
}

// A camera with a clock that only the test moves, and its view.
class ViewedCamera
{
public:
    ViewedCamera()
        : view([this]() -> const ViscaCamera& { return present(); })
    {
        view.resize(pictureSize);
        view.show();
    }

    void send(const QByteArray& hex)
    {
        for (const auto& event : camera.receive(QByteArray::fromHex(hex), now))
            view.take(event);
    }

    // Sends a command, lets the camera act on it and reply, and waits.
    void carryOut(const QByteArray& hex, ViscaCamera::Time patience = 0ms)
    {
        send(hex);
        now += 50ms + patience;
        present();
    }

    // Stops the camera, waits until the window shows that, and takes its picture.
    QImage pictureAtRest()
    {
        for (const char* const stop : {Stop, ZoomStop})
            carryOut(stop);
        if (!QTest::qWaitFor([this] { return !isAwake(); }))
            return {};
        return view.grab().toImage();
    }

    bool isAwake() const
    {
        const auto timers = view.findChildren<QTimer*>();
        return std::any_of(timers.begin(), timers.end(),
                           [](const QTimer* timer) { return timer->isActive(); });
    }

    ViscaCamera camera;
    ViscaCamera::Time now{0};
    CameraView view;

private:
    const ViscaCamera& present()
    {
        for (const auto& event : camera.advance(now))
            view.take(event);
        return camera;
    }
};

// Whether a preset's mark is there: amber left of its number.
bool hasMarkAt(const QImage& picture, const QPointF& point)
{
    return picture.pixelColor((point - QPointF(7, 0)).toPoint()) == amber;
}

// The hall as the camera sees it, without what the window draws over it.
QImage hallFrom(const ViscaCamera::Position& position)
{
    QImage picture(pictureSize, QImage::Format_RGB32);
    picture.fill(Qt::magenta);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    Scene().draw(painter, Projection(position, pictureSize));
    return picture;
}

// The share of pixels that differ clearly. An edge between two pixels may be drawn in either.
double difference(const QImage& one, const QImage& other)
{
    constexpr int tolerance = 64;
    int count = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x)
            count += std::abs(qGray(one.pixel(x, y)) - qGray(other.pixel(x, y))) > tolerance;
    }
    return count / (1.0 * one.width() * one.height());
}

// Records which texts a widget draws, and where. Draws nothing.
class TextRecorder : public QImage, private QPaintEngine
{
public:
    explicit TextRecorder(QWidget& widget)
        : QImage(widget.size(), QImage::Format_RGB32)
        , QPaintEngine(AllFeatures)
    {
        widget.render(this);
    }

    // Whether the middle of the text is within three pixels of the point: letters are drawn at whole pixels.
    bool hasAround(const QPointF& point, const QString& text) const
    {
        return std::any_of(texts.begin(), texts.end(), [&](const std::pair<QString, QRectF>& drawn) {
            return drawn.first == text && QLineF(drawn.second.center(), point).length() < 3;
        });
    }

    std::vector<std::pair<QString, QRectF>> texts;

private:
    QPaintEngine* paintEngine() const override { return const_cast<TextRecorder*>(this); }

    bool begin(QPaintDevice*) override { return true; }

    bool end() override { return true; }

    void updateState(const QPaintEngineState&) override {}

    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}

    void drawPath(const QPainterPath&) override {}

    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}

    Type type() const override { return User; }

    void drawTextItem(const QPointF& baseline, const QTextItem& item) override
    {
        const QSizeF size(item.width(), item.ascent() + item.descent());
        texts.push_back({item.text(), {baseline - QPointF(0, item.ascent()), size}});
    }
};

} // namespace

class CameraViewTest : public QObject
{
    Q_OBJECT

private slots:

    void thingsAppearWhereALensShowsThem_data()
    {
        QTest::addColumn<QVector3D>("panTiltZoom");
        QTest::addColumn<QPointF>("thing");
        QTest::addColumn<QPointF>("expected");

        const auto row = [](const char* name, const QVector3D& panTiltZoom, const QPointF& thing,
                            const QPointF& fromTheMiddle) {
            QTest::newRow(name) << panTiltZoom << thing << QPointF(400, 225) + fromTheMiddle;
        };
        row("straight ahead", {0, 0, 0}, {0, 0}, {0, 0});
        row("30 degrees right", {0, 0, 0}, {30, 0}, {400, 0});
        row("10 degrees up", {0, 0, 0}, {0, 10}, {0, -wideFocus * tangent(10)});
        row("tilted up", {0, 10, 0}, {0, 0}, {0, wideFocus * tangent(10)});
        row("turned left", {-20, 0, 0}, {0, 0}, {wideFocus * tangent(20), 0});
        row("half way to tele", {0, 0, 0x2000}, {1, 0}, {std::sqrt(20) * wideFocus * tangent(1), 0});
        row("tele", {0, 0, 0x4000}, {1, 0}, {20 * wideFocus * tangent(1), 0});
        row("across the back", {170, 0, 0}, {-170, 0}, {wideFocus * tangent(20), 0});
        row("straight up", {0, 90, 0}, {0, 80}, {0, wideFocus * tangent(10)});
    }

    void thingsAppearWhereALensShowsThem()
    {
        QFETCH(QVector3D, panTiltZoom);
        QFETCH(QPointF, thing);
        QFETCH(QPointF, expected);
        const Projection projection(
            {double(panTiltZoom.x()), double(panTiltZoom.y()), double(panTiltZoom.z())}, pictureSize);
        const auto point = projection.pointAt(thing.x(), thing.y());
        QVERIFY(point);
        QVERIFY2(QLineF(*point, expected).length() < 0.1,
                 qPrintable(QString("at %1, %2").arg(point->x()).arg(point->y())));
    }

    void whatIsBehindOrBesideTheCameraDoesNotAppear()
    {
        const Projection projection({0, 0, 0}, pictureSize);
        QVERIFY(!projection.pointAt(180, 0));
        QVERIFY(!projection.pointAt(89, 0));
        QVERIFY(projection.outlineOf({{-5, -5, -10}, {5, -5, -10}, {5, 5, -10}, {-5, 5, -10}}).isEmpty());

        // The floor, on all sides far beyond the picture.
        const QRectF floor =
            projection.outlineOf({{-500, -2, -500}, {500, -2, -500}, {500, -2, 500}, {-500, -2, 500}})
                .boundingRect();
        QVERIFY(QRectF({}, pictureSize).adjusted(-5, -5, 5, 5).contains(floor));
        QVERIFY(std::abs(floor.top() - (225 + wideFocus * 2 / 500)) < 0.1);
    }

    void theHallIsDrawnAllAround()
    {
        for (int pan = -168; pan <= 168; pan += 56) {
            for (const int tilt : {-30, 0, 30, 90}) {
                const QImage picture = hallFrom({1.0 * pan, 1.0 * tilt, 0});
                const auto* const first = reinterpret_cast<const QRgb*>(picture.constBits());
                const auto* const last = first + std::ptrdiff_t(picture.width()) * picture.height();
                QVERIFY2(std::count(first, last, QColor(Qt::magenta).rgb()) == 0,
                         qPrintable(QString("pan %1, tilt %2").arg(pan).arg(tilt)));
            }
        }
    }

    void pressingADirectionMovesThePictureTheOtherWay_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QPointF>("homeAfterwards");

        // Speed 5 for 400 milliseconds: 5 degrees of tilt, 6.6 degrees of pan.
        QTest::newRow("up") << QByteArray(Up) << QPointF(400, 225 + wideFocus * tangent(5));
        QTest::newRow("down") << QByteArray(Down) << QPointF(400, 225 - wideFocus * tangent(5));
        QTest::newRow("left") << QByteArray(Left) << QPointF(400 + wideFocus * tangent(6.6), 225);
        QTest::newRow("right") << QByteArray(Right) << QPointF(400 - wideFocus * tangent(6.6), 225);
    }

    void pressingADirectionMovesThePictureTheOtherWay()
    {
        QFETCH(QByteArray, command);
        QFETCH(QPointF, homeAfterwards);
        ViewedCamera viewed;
        viewed.carryOut(setPreset(1));
        QVERIFY(hasMarkAt(viewed.pictureAtRest(), {400, 225}));

        viewed.send(command);
        viewed.now += 400ms;
        viewed.carryOut(Stop);
        const QImage picture = viewed.pictureAtRest();
        QVERIFY(!hasMarkAt(picture, {400, 225}));
        QVERIFY(hasMarkAt(picture, homeAfterwards));
    }

    void mirrorAndFlipTurnTheView_data()
    {
        QTest::addColumn<bool>("mirrored");
        QTest::addColumn<bool>("flipped");
        QTest::newRow("mirrored") << true << false;
        QTest::newRow("flipped") << false << true;
        QTest::newRow("both") << true << true;
    }

    void mirrorAndFlipTurnTheView()
    {
        QFETCH(bool, mirrored);
        QFETCH(bool, flipped);
        ViewedCamera viewed;
        viewed.carryOut(setPreset(1));
        // Home is 13.2 degrees to the left and 10 degrees below.
        viewed.carryOut("81 01 06 02 18 14 00 00 0b 00 00 00 08 05 ff", 1s);
        const auto homePoint = Projection(viewed.camera.position(), pictureSize).pointAt(0, 0);
        QVERIFY(homePoint && homePoint->x() < 400 && homePoint->y() > 225);
        const QImage usual = viewed.pictureAtRest();
        QVERIFY(hasMarkAt(usual, *homePoint));

        viewed.carryOut(mirrored ? "81 01 04 61 02 ff" : "81 01 04 61 03 ff");
        viewed.carryOut(flipped ? "81 01 04 66 02 ff" : "81 01 04 66 03 ff");
        const QImage turned = viewed.pictureAtRest();
        QVERIFY(!hasMarkAt(turned, *homePoint));
        QVERIFY(hasMarkAt(turned, {mirrored ? 800 - homePoint->x() : homePoint->x(),
                                   flipped ? 450 - homePoint->y() : homePoint->y()}));
        // The middle, without rulers and panels, which are not turned.
        const QRect between(40, 120, 720, 210);
        QVERIFY(difference(turned.copy(between), usual.mirrored(mirrored, flipped).copy(between)) < 0.02);
        QVERIFY(difference(turned.copy(between), usual.copy(between)) > 0.05);
    }

    void theViewIsDarkInStandby()
    {
        ViewedCamera viewed;
        viewed.carryOut(setPreset(1));
        const QImage bright = viewed.pictureAtRest();
        viewed.carryOut("81 01 04 00 03 ff");
        const QImage dark = viewed.pictureAtRest();
        // Between the panels there is nothing: no scene, no ruler, no mark.
        const QRect between(0, 140, 800, 215);
        QImage black(between.size(), dark.format());
        black.fill(Qt::black);
        QCOMPARE(dark.copy(between), black);
        QCOMPARE(viewed.view.texts().reply, "not executable now, socket 1");

        viewed.carryOut("81 01 04 00 02 ff");
        QCOMPARE(viewed.pictureAtRest().copy(between), bright.copy(between));
    }

    void onlyTheProtocolCoversThePictureAfterTheFirstCommand()
    {
        ViewedCamera viewed;
        const QImage before = viewed.view.grab().toImage().convertToFormat(QImage::Format_RGB32);
        // Right of the one ruler and below the other, the position and the map.
        const QRect free(40, 110, 760, 340);
        QCOMPARE(before.copy(free), hallFrom({0, 0, 0}).copy(free));

        const QImage after = viewed.pictureAtRest().convertToFormat(QImage::Format_RGB32);
        const QRect protocol(0, 360, 500, 90);
        const QRect middle(0, 100, 800, 255);
        QVERIFY(after.copy(protocol) != before.copy(protocol));
        QCOMPARE(after.copy(middle), before.copy(middle));
    }

    void theRulersTellWhatIsInTheMiddle_data()
    {
        QTest::addColumn<QByteArray>("command");
        QTest::addColumn<QString>("mark");
        QTest::addColumn<QPointF>("place");

        const QByteArray atHome(Home);
        // Pan 15 degrees, tilt 30 degrees.
        const QByteArray aside("81 01 06 02 18 14 00 00 0c 08 00 01 09 00 ff");
        const double left = 17;
        const double top = 8;
        QTest::newRow("straight ahead") << atHome << "0" << QPointF(400, top);
        QTest::newRow("pan") << atHome << "20" << QPointF(400 + wideFocus * tangent(20), top);
        QTest::newRow("level") << atHome << "0" << QPointF(left, 225);
        QTest::newRow("tilt") << atHome << "-10" << QPointF(left, 225 + wideFocus * tangent(10));
        QTest::newRow("pan, turned") << aside << "15" << QPointF(400, top);
        QTest::newRow("tilt, turned") << aside << "30" << QPointF(left, 225);
        // This mark is five degrees of pan from the middle.
        QTest::newRow("beside the middle")
            << aside << "20"
            << QPointF(400 + wideFocus * tangent(5) * std::cos(qDegreesToRadians(30.0)), top);
        // Half way to tele.
        QTest::newRow("zoomed in") << QByteArray("81 01 04 47 02 00 00 00 ff") << "3"
                                   << QPointF(400 + std::sqrt(20) * wideFocus * tangent(3), top);
    }

    void theRulersTellWhatIsInTheMiddle()
    {
        QFETCH(QByteArray, command);
        QFETCH(QString, mark);
        QFETCH(QPointF, place);
        ViewedCamera viewed;
        viewed.carryOut(command, 20s);
        viewed.pictureAtRest();
        QVERIFY(TextRecorder(viewed.view).hasAround(place, mark + degree));
    }

    void presetsAtOnePlaceShareAMark()
    {
        ViewedCamera viewed;
        viewed.carryOut(setPreset(1));
        viewed.carryOut(setPreset(12));
        viewed.carryOut(Right, 1s);
        viewed.carryOut(Stop);
        viewed.carryOut(setPreset(2));
        viewed.pictureAtRest();

        const TextRecorder recorder(viewed.view);
        const auto homePoint = Projection(viewed.camera.position(), pictureSize).pointAt(0, 0);
        QVERIFY(homePoint && recorder.hasAround(*homePoint, "1 12"));
        QVERIFY(recorder.hasAround({400, 225}, "2"));
    }

    void storedPresetsAreListed()
    {
        ViewedCamera viewed;
        const auto listedAfter = [&viewed](const QByteArray& command) {
            viewed.carryOut(command);
            viewed.pictureAtRest();
            return viewed.view.texts().presets;
        };
        QCOMPARE(viewed.view.texts().presets, QString());
        QCOMPARE(listedAfter(setPreset(254)), "254");
        QCOMPARE(listedAfter(setPreset(0)), "0 254");
        QCOMPARE(listedAfter("81 01 04 3f 00 00 ff"), "254");
    }

    void aLongListOfPresetsIsShownWhole()
    {
        ViewedCamera viewed;
        viewed.view.resize(viewed.view.minimumSize());
        QString list = "Presets:";
        for (int preset = 1; preset <= 64; ++preset) {
            viewed.carryOut(setPreset(preset));
            list += QString(" %1").arg(preset);
        }
        viewed.pictureAtRest();

        const TextRecorder recorder(viewed.view);
        QStringList lines;
        for (const auto& [text, area] : recorder.texts) {
            QVERIFY2(QRectF(viewed.view.rect()).contains(area), qPrintable(text));
            if (area.left() > viewed.view.mapPointAt(-Mechanics::panLimit, 0).x() - 1)
                lines += text.trimmed();
        }
        QVERIFY2(lines.join(' ').contains(list), qPrintable(lines.join(' ')));
    }

    void lastCommandAndItsReplyAreShown()
    {
        ViewedCamera viewed;
        const auto shown = [&viewed] {
            const CameraView::Texts texts = viewed.view.texts();
            return QStringList({texts.command, texts.commandBytes, texts.reply, texts.replyBytes});
        };
        const QStringList up{"drive up, speeds 5 and 5", "81 01 06 01 05 05 03 01 FF"};
        QCOMPARE(shown(), QStringList({"", "", "", ""}));
        viewed.send(Up);
        QCOMPARE(shown(), up + QStringList({"", ""}));
        viewed.now += untilAction;
        QTRY_COMPARE(shown(), up + QStringList({"ACK, socket 1", "90 41 FF"}));
        viewed.now += 11ms;
        QTRY_COMPARE(shown(), up + QStringList({"completion, socket 1", "90 51 FF"}));
        viewed.send("12 34");
        QCOMPARE(shown(), QStringList({"no frame, ignored", "12 34", "", ""}));
    }

    void noTextIsCut_data()
    {
        QTest::addColumn<bool>("isSmallest");
        QTest::addColumn<QByteArray>("command");
        for (const bool isSmallest : {true, false}) {
            const char* const size = isSmallest ? "as small as it goes" : "as it opens";
            QTest::addRow("at home, %s", size) << isSmallest << QByteArray(Home);
            QTest::addRow("in a corner, %s", size)
                << isSmallest << QByteArray("81 01 06 02 18 14 0F 06 03 01 0F 0B 02 00 FF");
        }
    }

    void noTextIsCut()
    {
        QFETCH(bool, isSmallest);
        QFETCH(QByteArray, command);
        ViewedCamera viewed;
        viewed.view.resize(isSmallest ? viewed.view.minimumSize() : viewed.view.sizeHint());
        viewed.carryOut(command, 20s);
        viewed.pictureAtRest();
        viewed.send(command);

        const TextRecorder recorder(viewed.view);
        QVERIFY(recorder.texts.size() > 10);
        for (const auto& [text, area] : recorder.texts) {
            QVERIFY2(QRectF(viewed.view.rect()).contains(area), qPrintable(text));
            QVERIFY2(!text.contains(QChar(0x2026)), qPrintable(text));
        }
    }

    void thePositionIsAmberWhileItChanges()
    {
        ViewedCamera viewed;
        const auto isAmber = [&viewed] {
            const QImage panel = viewed.view.grab({48, 30, 280, 44}).toImage();
            for (int pixel = 0; pixel < panel.width() * panel.height(); ++pixel) {
                if (panel.pixelColor(pixel % panel.width(), pixel / panel.width()) == amber)
                    return true;
            }
            return false;
        };
        QVERIFY(!isAmber());
        viewed.carryOut(Up);
        QTRY_VERIFY(isAmber());
        viewed.pictureAtRest();
        QVERIFY(!isAmber());
    }

    void panTiltAndZoomAreShown()
    {
        ViewedCamera viewed;
        const auto shown = [&viewed] {
            const CameraView::Texts texts = viewed.view.texts();
            return QStringList({texts.pan, texts.tilt, texts.zoom})
                .join(' ')
                .remove(degree)
                .remove(QChar(0xD7));
        };
        QCOMPARE(shown(), "0.0 0.0 1.0 0000");
        QVERIFY(viewed.view.texts().pan.endsWith(degree) && viewed.view.texts().tilt.endsWith(degree));
        viewed.send(Left);
        viewed.now += untilAction + 1s;
        QTRY_COMPARE(shown(), "-16.7 0.0 1.0 0000");
        viewed.send(Up);
        viewed.now += untilAction + 1s;
        QTRY_COMPARE(shown(), "-17.1 +12.5 1.0 0000");
        viewed.send(ZoomIn);
        viewed.now += 60s;
        QTRY_COMPARE(shown(), "-17.1 +90.0 20.0 4000");
    }

    void theMapShowsTheWholeRange()
    {
        const ViewedCamera viewed;
        const QPointF upperLeft = viewed.view.mapPointAt(-Mechanics::panLimit, Mechanics::tiltHighLimit);
        const QPointF lowerRight = viewed.view.mapPointAt(Mechanics::panLimit, Mechanics::tiltLowLimit);
        const QRectF upperRightQuarter(400, 0, 400, 225);
        QVERIFY(upperRightQuarter.contains(upperLeft) && upperRightQuarter.contains(lowerRight));
        QVERIFY(upperLeft.x() < lowerRight.x() && upperLeft.y() < lowerRight.y());
        QCOMPARE(viewed.view.mapPointAt(0, 0),
                 QPointF((upperLeft.x() + lowerRight.x()) / 2,
                         upperLeft.y() + (lowerRight.y() - upperLeft.y()) * 3 / 4));
    }

    void theMapShowsWhereTheCameraPoints()
    {
        ViewedCamera viewed;
        const QPoint straightAhead = viewed.view.mapPointAt(0, 0).toPoint();
        QCOMPARE(viewed.pictureAtRest().pixelColor(straightAhead), amber);

        viewed.carryOut(Right, 4s);
        const QImage picture = viewed.pictureAtRest();
        const ViscaCamera::Position there = viewed.camera.position();
        QVERIFY(there.pan > 60);
        QCOMPARE(picture.pixelColor(viewed.view.mapPointAt(there.pan, there.tilt).toPoint()), amber);
        QVERIFY(picture.pixelColor(straightAhead) != amber);
    }

    void nothingIsDrawnWhileTheCameraStandsStill()
    {
        ViewedCamera viewed;
        QVERIFY(QTest::qWaitForWindowExposed(&viewed.view));
        QVERIFY(!viewed.isAwake());

        // A command that moves nothing is shown once.
        viewed.carryOut(setPreset(1));
        QTRY_VERIFY(!viewed.isAwake());
        PaintCounter paints(&viewed.view);
        QCoreApplication::processEvents();
        paints.count = 0;
        viewed.now += 10s;
        QCoreApplication::processEvents();
        QCOMPARE(paints.count, 0);
    }

    void itDrawsOnlyWhileTheCameraMoves()
    {
        ViewedCamera viewed;
        QVERIFY(QTest::qWaitForWindowExposed(&viewed.view));
        PaintCounter paints(&viewed.view);
        viewed.carryOut(Up);
        QTRY_VERIFY(paints.count >= 10);
        QVERIFY(viewed.isAwake());
        viewed.carryOut(Stop);
        QTRY_VERIFY(!viewed.isAwake());
        QVERIFY(!viewed.camera.isMoving());
    }

    void itDrawsNoMoreAtTheEndOfTheRange()
    {
        ViewedCamera viewed;
        viewed.carryOut(Up);
        QVERIFY(viewed.camera.isMoving());
        viewed.now += 60s;
        QTRY_VERIFY(!viewed.isAwake());
        QCOMPARE(viewed.view.texts().tilt, QString("+90.0") + degree);
    }

    void withoutADisplayOnlyAViewIsAnError()
    {
#ifdef Q_OS_MACOS
        QSKIP("macOS always has a display");
#endif
        QTemporaryDir folder;
        const QString link = folder.filePath("camera");
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char* const variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_FATAL_WARNINGS"})
            environment.remove(variable);
        environment.insert("QT_QPA_PLATFORM", "xcb");
        program.setProcessEnvironment(environment);

        program.start(VANTREL_CAMERA_PATH, {"--link", link});
        QVERIFY(program.waitForReadyRead());
        QVERIFY(program.readAllStandardOutput().startsWith("Camera at "));
        program.terminate();
        QVERIFY(program.waitForFinished());

        program.start(VANTREL_CAMERA_PATH, {"--view", "--link", link});
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(program.exitCode(), 1);
        QCOMPARE(program.readAllStandardError(),
                 QByteArray("vantrel-camera: --view needs a display, and there is none\n"));
        QCOMPARE(program.readAllStandardOutput(), QByteArray());
        QVERIFY(!QFileInfo(link).isSymLink());
    }
};

QTEST_MAIN(CameraViewTest)
#include "CameraViewTest.moc"
