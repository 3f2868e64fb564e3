#include "view/CameraView.h"
#include "support/PaintCounter.h"

#include <QPaintEngine>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QtMath>
#include <QtTest>

#include <algorithm>
#include <cmath>

using namespace std::chrono_literals;

namespace {

const char* const driveUp = "81 01 06 01 05 05 03 01 ff";
const char* const driveDown = "81 01 06 01 05 05 03 02 ff";
const char* const driveLeft = "81 01 06 01 05 05 01 03 ff";
const char* const driveRight = "81 01 06 01 05 05 02 03 ff";
const char* const driveStop = "81 01 06 01 05 05 03 03 ff";
const char* const zoomTele = "81 01 04 07 25 ff";
const char* const zoomStop = "81 01 04 07 00 ff";
const char* const home = "81 01 06 04 ff";
const char* const store1 = "81 01 04 3f 01 01 ff";
const char* const store12 = "81 01 04 3f 01 0c ff";
const char* const reset1 = "81 01 04 3f 00 01 ff";
const char* const mirrorOn = "81 01 04 61 02 ff";
const char* const mirrorOff = "81 01 04 61 03 ff";
const char* const flipOn = "81 01 04 66 02 ff";
const char* const powerOn = "81 01 04 00 02 ff";
const char* const powerOff = "81 01 04 00 03 ff";

constexpr QSize pictureSize(800, 450);
const QColor amber(0xff, 0xb0, 0x2e);

// From a command to the moment when the camera acts on it.
constexpr ViscaCamera::Time untilAction = 25ms;

// The focal length in pixels at the wide end: 60 degrees over 800 pixels.
const double wideFocus = 400 / std::tan(qDegreesToRadians(30.0));

double tangent(double degrees)
{
    return std::tan(qDegreesToRadians(degrees));
}

// A camera, its clock, which moves only when the test says so, and a window that looks at it.
class Desk
{
public:
    Desk()
        : view([this]() -> const ViscaCamera& { return present(); })
    {
        view.resize(pictureSize);
        view.show();
    }

    void send(const char* hex)
    {
        for (const auto& event : camera.receive(QByteArray::fromHex(hex), now))
            view.take(event);
    }

    // Sends a command and lets the camera act on it and reply.
    void carryOut(const char* hex)
    {
        send(hex);
        now += 50ms;
        present();
    }

    // Stops the camera, waits until the window shows that, and takes its picture.
    QImage pictureAtRest()
    {
        for (const char* const stop : {driveStop, zoomStop})
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
QImage hallFrom(const ViscaCamera::Position& position, const Projection::Turn& turn = {})
{
    QImage picture(pictureSize, QImage::Format_RGB32);
    picture.fill(Qt::magenta);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    Scene().draw(painter, Projection(position, pictureSize, turn));
    return picture;
}

// The share of the pixels that differ. An edge between two pixels may be drawn in the one or in the other.
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

// Where a widget draws its texts.
class TextRecorder : private QPaintEngine, public QPaintDevice
{
public:
    struct Text
    {
        QString text;
        QRectF area;
    };

    explicit TextRecorder(QWidget& widget)
        : QPaintEngine(AllFeatures)
        , size(widget.size())
    {
        widget.render(this);
    }

    // Whether the text is drawn around that point, give or take the rounding of letters.
    bool hasAround(const QPointF& point, const QString& text) const
    {
        return std::any_of(texts.begin(), texts.end(), [&](const Text& drawn) {
            return drawn.text == text && QLineF(drawn.area.center(), point).length() < 3;
        });
    }

    QList<Text> texts;

private:
    bool begin(QPaintDevice*) override { return true; }

    bool end() override { return true; }

    void updateState(const QPaintEngineState&) override {}

    void drawPixmap(const QRectF&, const QPixmap&, const QRectF&) override {}

    void drawPath(const QPainterPath&) override {}

    void drawPolygon(const QPointF*, int, PolygonDrawMode) override {}

    Type type() const override { return User; }

    void drawTextItem(const QPointF& baseline, const QTextItem& item) override
    {
        texts.append(
            {item.text(),
             {baseline - QPointF(0, item.ascent()), QSizeF(item.width(), item.ascent() + item.descent())}});
    }

    QPaintEngine* paintEngine() const override { return const_cast<TextRecorder*>(this); }

    int metric(PaintDeviceMetric metric) const override
    {
        switch (metric) {
        case PdmWidth:
            return size.width();
        case PdmHeight:
            return size.height();
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 96;
        }
    }

    const QSize size;
};

} // namespace

class CameraViewTest : public QObject
{
    Q_OBJECT

private slots:
    void fieldOfViewNarrowsWithTheZoom_data();
    void fieldOfViewNarrowsWithTheZoom();
    void thingsAppearWhereALensShowsThem_data();
    void thingsAppearWhereALensShowsThem();
    void thingsBehindTheCameraDoNotAppear();
    void facesAreCutOffAtTheEdgesOfThePicture();
    void pressingADirectionMovesThePictureTheOtherWay_data();
    void pressingADirectionMovesThePictureTheOtherWay();
    void zoomingInSpreadsThePicture();
    void theSceneIsDrawnAllAround_data();
    void theSceneIsDrawnAllAround();
    void aTurnedSceneIsTheSameTheOtherWayAround_data();
    void aTurnedSceneIsTheSameTheOtherWayAround();
    void mirrorAndFlipTurnTheView();
    void theViewIsDarkInStandby();
    void nothingLiesOnThePictureBeforeTheFirstCommand();
    void theRulersTellWhatIsInTheMiddle_data();
    void theRulersTellWhatIsInTheMiddle();
    void presetsAtOnePlaceShareAMark();
    void aLongListOfPresetsIsShownWhole();
    void lastCommandAndItsReplyAreShown();
    void bytesThatAreNoFrameAreShown();
    void theProtocolIsPaintedBelowTheMiddle();
    void noTextIsCut_data();
    void noTextIsCut();
    void thePositionIsAmberWhileItChanges();
    void panTiltAndZoomAreShown();
    void storedPresetsAreListed();
    void theMapShowsTheWholeRange();
    void theMapShowsWhereTheCameraPoints();
    void nothingWakesWhileTheCameraStandsStill();
    void itDrawsWhileTheCameraMovesAndRestsAfterwards();
    void itRestsAtTheEndOfTheRange();
    void theCameraRunsWithoutADisplay();
    void aViewWithoutADisplayIsAClearError();
};

void CameraViewTest::fieldOfViewNarrowsWithTheZoom_data()
{
    QTest::addColumn<double>("zoom");
    QTest::addColumn<double>("degrees");
    QTest::newRow("wide") << 0.0 << 60.0;
    QTest::newRow("middle") << double(0x2000) << 14.71;
    QTest::newRow("tele") << double(0x4000) << 3.31;
}

void CameraViewTest::fieldOfViewNarrowsWithTheZoom()
{
    QFETCH(double, zoom);
    QFETCH(double, degrees);

    QVERIFY(std::abs(Projection::fieldOfView(zoom) - degrees) < 0.005);
}

void CameraViewTest::thingsAppearWhereALensShowsThem_data()
{
    QTest::addColumn<double>("pan");
    QTest::addColumn<double>("tilt");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<QPointF>("thing");
    QTest::addColumn<QPointF>("expected");

    const double tele = 0x4000;
    QTest::newRow("straight ahead") << 0.0 << 0.0 << 0.0 << QPointF(0, 0) << QPointF(400, 225);
    QTest::newRow("30 degrees right") << 0.0 << 0.0 << 0.0 << QPointF(30, 0) << QPointF(800, 225);
    QTest::newRow("10 degrees up") << 0.0 << 0.0 << 0.0 << QPointF(0, 10)
                                   << QPointF(400, 225 - wideFocus * tangent(10));
    QTest::newRow("tilted up") << 0.0 << 10.0 << 0.0 << QPointF(0, 0)
                               << QPointF(400, 225 + wideFocus * tangent(10));
    QTest::newRow("turned left") << -20.0 << 0.0 << 0.0 << QPointF(0, 0)
                                 << QPointF(400 + wideFocus * tangent(20), 225);
    QTest::newRow("tele") << 0.0 << 0.0 << tele << QPointF(1, 0)
                          << QPointF(400 + 20 * wideFocus * tangent(1), 225);
    QTest::newRow("across the back") << 170.0 << 0.0 << 0.0 << QPointF(-170, 0)
                                     << QPointF(400 + wideFocus * tangent(20), 225);
    QTest::newRow("straight up") << 0.0 << 90.0 << 0.0 << QPointF(0, 80)
                                 << QPointF(400, 225 + wideFocus * tangent(10));
}

void CameraViewTest::thingsAppearWhereALensShowsThem()
{
    QFETCH(double, pan);
    QFETCH(double, tilt);
    QFETCH(double, zoom);
    QFETCH(QPointF, thing);
    QFETCH(QPointF, expected);

    const Projection projection({pan, tilt, zoom}, pictureSize);
    const auto point = projection.pointAt(thing.x(), thing.y());

    QVERIFY(point);
    QVERIFY2(QLineF(*point, expected).length() < 0.1,
             qPrintable(QString("at %1, %2").arg(point->x()).arg(point->y())));
}

void CameraViewTest::thingsBehindTheCameraDoNotAppear()
{
    const Projection projection({0, 0, 0}, pictureSize);

    QVERIFY(!projection.pointAt(180, 0));
    QVERIFY(!projection.pointAt(100, 0));
}

void CameraViewTest::facesAreCutOffAtTheEdgesOfThePicture()
{
    const Projection projection({0, 0, 0}, pictureSize);

    // A wall ahead that is far larger than the picture, the floor below, and a wall behind.
    const QPolygonF wall =
        projection.outlineOf({{-500, -500, 10}, {500, -500, 10}, {500, 500, 10}, {-500, 500, 10}});
    const QPolygonF floor =
        projection.outlineOf({{-500, -2, -500}, {500, -2, -500}, {500, -2, 500}, {-500, -2, 500}});
    const QPolygonF behind = projection.outlineOf({{-5, -5, -10}, {5, -5, -10}, {5, 5, -10}, {-5, 5, -10}});

    const QRectF picture({}, pictureSize);
    QVERIFY(wall.boundingRect().contains(picture));
    QVERIFY(picture.adjusted(-5, -5, 5, 5).contains(wall.boundingRect()));
    QVERIFY(picture.adjusted(-5, -5, 5, 5).contains(floor.boundingRect()));
    QVERIFY(std::abs(floor.boundingRect().top() - (225 + wideFocus * 2 / 500)) < 0.1);
    QVERIFY(behind.isEmpty());
}

void CameraViewTest::pressingADirectionMovesThePictureTheOtherWay_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QPointF>("homeAfterwards");

    // Speed 5 for 400 milliseconds: 5 degrees of tilt, 6.6 degrees of pan.
    QTest::newRow("up") << QByteArray(driveUp) << QPointF(400, 225 + wideFocus * tangent(5));
    QTest::newRow("down") << QByteArray(driveDown) << QPointF(400, 225 - wideFocus * tangent(5));
    QTest::newRow("left") << QByteArray(driveLeft) << QPointF(400 + wideFocus * tangent(6.6), 225);
    QTest::newRow("right") << QByteArray(driveRight) << QPointF(400 - wideFocus * tangent(6.6), 225);
}

void CameraViewTest::pressingADirectionMovesThePictureTheOtherWay()
{
    QFETCH(QByteArray, command);
    QFETCH(QPointF, homeAfterwards);
    Desk desk;
    desk.carryOut(store1);
    QVERIFY(hasMarkAt(desk.pictureAtRest(), {400, 225}));

    desk.send(command);
    desk.now += 400ms;
    desk.send(driveStop);
    desk.now += untilAction;
    const QImage picture = desk.pictureAtRest();

    QVERIFY(!hasMarkAt(picture, {400, 225}));
    QVERIFY(hasMarkAt(picture, homeAfterwards));
}

void CameraViewTest::zoomingInSpreadsThePicture()
{
    Desk desk;
    desk.carryOut(driveRight);
    desk.now += 400ms;
    desk.carryOut(driveStop);
    desk.carryOut(store1);
    const double pan = desk.camera.position().pan;
    desk.carryOut(home);
    desk.now += 1s;
    QVERIFY(hasMarkAt(desk.pictureAtRest(), {400 + wideFocus * tangent(pan), 225}));

    desk.carryOut(zoomTele);
    desk.now += 600ms;
    const QImage picture = desk.pictureAtRest();

    const double magnification = std::pow(20, desk.camera.position().zoom / 0x4000);
    QVERIFY(magnification > 1.5);
    QVERIFY(hasMarkAt(picture, {400 + magnification * wideFocus * tangent(pan), 225}));
}

void CameraViewTest::theSceneIsDrawnAllAround_data()
{
    QTest::addColumn<double>("pan");
    QTest::addColumn<double>("tilt");
    for (int pan = -170; pan <= 170; pan += 34) {
        for (const int tilt : {-30, 0, 30, 90})
            QTest::addRow("pan %d, tilt %d", pan, tilt) << double(pan) << double(tilt);
    }
}

void CameraViewTest::theSceneIsDrawnAllAround()
{
    QFETCH(double, pan);
    QFETCH(double, tilt);
    const QImage picture = hallFrom({pan, tilt, 0});

    const auto* const first = reinterpret_cast<const QRgb*>(picture.constBits());
    const auto* const last = first + picture.sizeInBytes() / static_cast<qsizetype>(sizeof(QRgb));
    const auto bare = std::count(first, last, QColor(Qt::magenta).rgb());
    QCOMPARE(bare, 0);
}

void CameraViewTest::aTurnedSceneIsTheSameTheOtherWayAround_data()
{
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<bool>("flipped");
    QTest::newRow("mirrored") << true << false;
    QTest::newRow("flipped") << false << true;
    QTest::newRow("both") << true << true;
}

void CameraViewTest::aTurnedSceneIsTheSameTheOtherWayAround()
{
    QFETCH(bool, mirrored);
    QFETCH(bool, flipped);
    const ViscaCamera::Position position{20, 10, 0x1000};
    const QImage usual = hallFrom(position);
    const QImage turned = hallFrom(position, {mirrored, flipped});

    QVERIFY(difference(turned, usual.mirrored(mirrored, flipped)) < 0.001);
    QVERIFY(difference(turned, usual) > 0.01);
}

void CameraViewTest::mirrorAndFlipTurnTheView()
{
    Desk desk;
    desk.carryOut(store1);
    // Four seconds at the slowest speeds: home is 13.2 degrees to the left and 10 degrees below.
    desk.send("81 01 06 01 01 01 02 01 ff");
    desk.now += untilAction + 4s;
    const QImage usual = desk.pictureAtRest();
    const ViscaCamera::Position here = desk.camera.position();
    const auto homePoint = Projection(here, pictureSize).pointAt(0, 0);
    QVERIFY(homePoint && homePoint->x() < 400 && homePoint->y() > 225);
    QVERIFY(hasMarkAt(usual, *homePoint));

    desk.carryOut(mirrorOn);
    const QPointF mirrored(800 - homePoint->x(), homePoint->y());
    const QImage turned = desk.pictureAtRest();
    QVERIFY(hasMarkAt(turned, mirrored));
    QVERIFY(!hasMarkAt(turned, *homePoint));
    // Between rulers and panels, which stay as they are, and as far from the one edge as from the other.
    const QRect between(40, 120, 720, 235);
    QVERIFY(difference(turned.copy(between), usual.mirrored(true, false).copy(between)) < 0.02);
    QVERIFY(difference(turned.copy(between), usual.copy(between)) > 0.05);

    desk.carryOut(flipOn);
    QVERIFY(hasMarkAt(desk.pictureAtRest(), QPointF(mirrored.x(), 450 - homePoint->y())));
    desk.carryOut(mirrorOff);
    QVERIFY(hasMarkAt(desk.pictureAtRest(), QPointF(homePoint->x(), 450 - homePoint->y())));
}

void CameraViewTest::theViewIsDarkInStandby()
{
    Desk desk;
    desk.carryOut(store1);
    const QPointF homePoint(400, 225);
    const QImage bright = desk.pictureAtRest();
    QVERIFY(hasMarkAt(bright, homePoint));

    desk.carryOut(powerOff);
    const QImage dark = desk.pictureAtRest();
    // Between the panels there is nothing: no scene, no ruler, no mark.
    const QRect between(0, 140, 800, 215);
    QImage black(between.size(), dark.format());
    black.fill(Qt::black);
    QCOMPARE(dark.copy(between), black);
    QCOMPARE(desk.view.texts().reply, "not executable now, socket 1");

    desk.carryOut(powerOn);
    QCOMPARE(desk.pictureAtRest().copy(between), bright.copy(between));
}

void CameraViewTest::nothingLiesOnThePictureBeforeTheFirstCommand()
{
    Desk desk;

    const QImage picture = desk.view.grab().toImage().convertToFormat(QImage::Format_RGB32);

    // Right of the one ruler and below the other, the position and the map.
    const QRect free(40, 110, 760, 340);
    QCOMPARE(picture.copy(free), hallFrom({0, 0, 0}).copy(free));
}

void CameraViewTest::theRulersTellWhatIsInTheMiddle_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QString>("mark");
    QTest::addColumn<QPointF>("place");
    const QByteArray atHome(home);
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
    // A pan by five degrees brings it to the middle.
    QTest::newRow("beside the middle")
        << aside << "20" << QPointF(400 + wideFocus * tangent(5) * std::cos(qDegreesToRadians(30.0)), top);
}

void CameraViewTest::theRulersTellWhatIsInTheMiddle()
{
    QFETCH(QByteArray, command);
    QFETCH(QString, mark);
    QFETCH(QPointF, place);
    Desk desk;
    desk.send(command);
    desk.now += 20s;
    QVERIFY(!desk.pictureAtRest().isNull());

    QVERIFY(TextRecorder(desk.view).hasAround(place, mark + QChar(0xB0)));
}

void CameraViewTest::presetsAtOnePlaceShareAMark()
{
    Desk desk;
    desk.carryOut(store1);
    desk.carryOut(store12);
    desk.send(driveRight);
    desk.now += 1s;
    desk.carryOut(driveStop);
    desk.carryOut("81 01 04 3f 01 02 ff");
    QVERIFY(!desk.pictureAtRest().isNull());

    const TextRecorder recorder(desk.view);

    const auto homePoint = Projection(desk.camera.position(), pictureSize).pointAt(0, 0);
    QVERIFY(homePoint);
    QVERIFY(recorder.hasAround(*homePoint, "1 12"));
    QVERIFY(recorder.hasAround({400, 225}, "2"));
}

void CameraViewTest::aLongListOfPresetsIsShownWhole()
{
    Desk desk;
    desk.view.resize(desk.view.minimumSize());
    QString list = "Presets:";
    for (int preset = 1; preset <= 64; ++preset) {
        desk.carryOut(qPrintable(QString("81 01 04 3f 01 %1 ff").arg(preset, 2, 16, QChar('0'))));
        list += QString(" %1").arg(preset);
    }
    QVERIFY(!desk.pictureAtRest().isNull());

    const TextRecorder recorder(desk.view);

    QStringList lines;
    for (const auto& [text, area] : recorder.texts) {
        QVERIFY2(QRectF(desk.view.rect()).contains(area), qPrintable(text));
        if (area.left() > desk.view.mapPointAt(-Mechanics::panLimit, 0).x() - 1)
            lines += text.trimmed();
    }
    QVERIFY2(lines.join(' ').contains(list), qPrintable(lines.join(' ')));
}

void CameraViewTest::lastCommandAndItsReplyAreShown()
{
    Desk desk;
    QCOMPARE(desk.view.texts().command, QString());

    desk.send(driveUp);
    QCOMPARE(desk.view.texts().command, "drive up, speeds 5 and 5");
    QCOMPARE(desk.view.texts().commandBytes, "81 01 06 01 05 05 03 01 FF");
    QCOMPARE(desk.view.texts().reply, QString());

    desk.now += untilAction;
    QTRY_COMPARE(desk.view.texts().reply, "ACK, socket 1");
    QCOMPARE(desk.view.texts().replyBytes, "90 41 FF");
    desk.now += 11ms;
    QTRY_COMPARE(desk.view.texts().reply, "completion, socket 1");

    desk.send(driveStop);
    QCOMPARE(desk.view.texts().command, "drive stop, speeds 5 and 5");
    QCOMPARE(desk.view.texts().reply, QString());
    QCOMPARE(desk.view.texts().replyBytes, QString());
}

void CameraViewTest::bytesThatAreNoFrameAreShown()
{
    Desk desk;

    desk.send("12 34");

    QCOMPARE(desk.view.texts().command, "no frame, ignored");
    QCOMPARE(desk.view.texts().commandBytes, "12 34");
}

void CameraViewTest::theProtocolIsPaintedBelowTheMiddle()
{
    Desk desk;
    const QImage before = desk.view.grab().toImage();

    const QImage after = desk.pictureAtRest();

    const QRect protocol(0, 360, 500, 90);
    const QRect middle(0, 100, 800, 255);
    QVERIFY(after.copy(protocol) != before.copy(protocol));
    QCOMPARE(after.copy(middle), before.copy(middle));
}

void CameraViewTest::noTextIsCut_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QByteArray>("command");
    const Desk desk;
    for (const QSize& size : {desk.view.minimumSize(), desk.view.sizeHint()}) {
        const QByteArray width = QByteArray::number(size.width());
        QTest::addRow("at home, %s wide", width.constData()) << size << QByteArray(home);
        QTest::addRow("in a corner, %s wide", width.constData())
            << size << QByteArray("81 01 06 02 18 14 0F 06 03 01 0F 0B 02 00 FF");
    }
}

void CameraViewTest::noTextIsCut()
{
    QFETCH(QSize, size);
    QFETCH(QByteArray, command);
    Desk desk;
    desk.view.resize(size);

    desk.send(command);
    desk.now += 20s;
    QVERIFY(!desk.pictureAtRest().isNull());
    desk.send(command);

    const TextRecorder recorder(desk.view);
    QVERIFY(recorder.texts.size() > 10);
    for (const auto& [text, area] : recorder.texts) {
        QVERIFY2(QRectF(desk.view.rect()).contains(area), qPrintable(text));
        QVERIFY2(!text.contains(QChar(0x2026)), qPrintable(text));
    }
}

void CameraViewTest::thePositionIsAmberWhileItChanges()
{
    Desk desk;
    const auto isAmber = [&desk] {
        const QImage panel = desk.view.grab({48, 30, 280, 44}).toImage();
        for (int y = 0; y < panel.height(); ++y) {
            for (int x = 0; x < panel.width(); ++x) {
                if (panel.pixelColor(x, y) == amber)
                    return true;
            }
        }
        return false;
    };
    QVERIFY(!isAmber());

    desk.carryOut(driveUp);
    QTRY_VERIFY(isAmber());

    desk.pictureAtRest();
    QVERIFY(!isAmber());
}

void CameraViewTest::panTiltAndZoomAreShown()
{
    Desk desk;
    const QString degree(QChar(0xB0));
    const QString times(QChar(0xD7));
    QCOMPARE(desk.view.texts().pan, "0.0" + degree);
    QCOMPARE(desk.view.texts().tilt, "0.0" + degree);
    QCOMPARE(desk.view.texts().zoom, "1.0" + times + " 0000");

    desk.send(driveLeft);
    desk.now += untilAction + 1s;
    QTRY_COMPARE(desk.view.texts().pan, "-16.7" + degree);
    desk.send(driveUp);
    desk.now += untilAction + 1s;
    QTRY_COMPARE(desk.view.texts().tilt, "+12.5" + degree);
    desk.send(zoomTele);
    desk.now += 60s;
    QTRY_COMPARE(desk.view.texts().zoom, "20.0" + times + " 4000");
}

void CameraViewTest::storedPresetsAreListed()
{
    Desk desk;
    QCOMPARE(desk.view.texts().presets, QString());

    desk.send(store12);
    desk.now += untilAction;
    QTRY_COMPARE(desk.view.texts().presets, "12");
    desk.send(store1);
    desk.now += 50ms;
    QTRY_COMPARE(desk.view.texts().presets, "1 12");

    desk.send(reset1);
    desk.now += 50ms;
    QTRY_COMPARE(desk.view.texts().presets, "12");
}

void CameraViewTest::theMapShowsTheWholeRange()
{
    Desk desk;
    const QPointF upperLeft = desk.view.mapPointAt(-Mechanics::panLimit, Mechanics::tiltHighLimit);
    const QPointF lowerRight = desk.view.mapPointAt(Mechanics::panLimit, Mechanics::tiltLowLimit);

    const QRectF upperRightQuarter(400, 0, 400, 225);
    QVERIFY(upperRightQuarter.contains(upperLeft));
    QVERIFY(upperRightQuarter.contains(lowerRight));
    QVERIFY(upperLeft.x() < lowerRight.x());
    QVERIFY(upperLeft.y() < lowerRight.y());
    QCOMPARE(desk.view.mapPointAt(0, 0).x(), (upperLeft.x() + lowerRight.x()) / 2);
    QCOMPARE(desk.view.mapPointAt(0, 0).y(), upperLeft.y() + (lowerRight.y() - upperLeft.y()) * 3 / 4);
}

void CameraViewTest::theMapShowsWhereTheCameraPoints()
{
    Desk desk;
    const QPoint straightAhead = desk.view.mapPointAt(0, 0).toPoint();
    QCOMPARE(desk.pictureAtRest().pixelColor(straightAhead), amber);

    desk.send(driveRight);
    desk.now += untilAction + 4s;
    const QImage picture = desk.pictureAtRest();

    const ViscaCamera::Position there = desk.camera.position();
    QVERIFY(there.pan > 60);
    QCOMPARE(picture.pixelColor(desk.view.mapPointAt(there.pan, there.tilt).toPoint()), amber);
    QVERIFY(picture.pixelColor(straightAhead) != amber);
}

void CameraViewTest::nothingWakesWhileTheCameraStandsStill()
{
    Desk desk;
    QVERIFY(QTest::qWaitForWindowExposed(&desk.view));
    QVERIFY(!desk.isAwake());

    // A command that moves nothing shows itself and leaves it at that.
    desk.carryOut(store1);
    QTRY_VERIFY(!desk.isAwake());

    PaintCounter paints(&desk.view);
    QCoreApplication::processEvents();
    paints.count = 0;
    desk.now += 10s;
    QCoreApplication::processEvents();
    QCOMPARE(paints.count, 0);
}

void CameraViewTest::itDrawsWhileTheCameraMovesAndRestsAfterwards()
{
    Desk desk;
    QVERIFY(QTest::qWaitForWindowExposed(&desk.view));
    PaintCounter paints(&desk.view);

    desk.carryOut(driveUp);
    QTRY_VERIFY(paints.count >= 10);
    QVERIFY(desk.isAwake());

    desk.carryOut(driveStop);
    QTRY_VERIFY(!desk.isAwake());
    QVERIFY(!desk.camera.isMoving());
}

void CameraViewTest::itRestsAtTheEndOfTheRange()
{
    Desk desk;

    desk.carryOut(driveUp);
    QVERIFY(desk.camera.isMoving());
    desk.now += 60s;

    QTRY_VERIFY(!desk.isAwake());
    QCOMPARE(desk.view.texts().tilt, QString("+90.0") + QChar(0xB0));
}

void CameraViewTest::theCameraRunsWithoutADisplay()
{
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    program.setProcessEnvironment(environment);
    program.start(VANTREL_CAMERA_PATH, QStringList());

    QVERIFY(program.waitForReadyRead());
    QVERIFY(program.readAllStandardOutput().startsWith("Camera at "));
    program.terminate();
    QVERIFY(program.waitForFinished());
}

void CameraViewTest::aViewWithoutADisplayIsAClearError()
{
#ifdef Q_OS_MACOS
    QSKIP("macOS always has a display");
#endif
    QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    environment.remove("QT_FATAL_WARNINGS");
    environment.insert("QT_QPA_PLATFORM", "xcb");
    program.setProcessEnvironment(environment);
    program.start(VANTREL_CAMERA_PATH, {"--view", "--link", link});

    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 1);
    QCOMPARE(program.readAllStandardError(),
             QByteArray("vantrel-camera: --view needs a display, and there is none\n"));
    QCOMPARE(program.readAllStandardOutput(), QByteArray());
    QVERIFY(!QFileInfo(link).isSymLink());
}

QTEST_MAIN(CameraViewTest)
#include "CameraViewTest.moc"
