#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"
#include "support/ReplyModel.h"

#include <QDeadlineTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>

namespace {

constexpr const char* Directions[] = {"up", "down", "left", "right"};
constexpr const char* DirectionNames[] = {"Up", "Down", "Left", "Right"};
constexpr const char* DirectionBytes[] = {"03 01", "03 02", "01 03", "02 03"};
constexpr int ConnectEvery = 50;
constexpr int ActionsPerTurn = 20;
constexpr int LineTimeoutMs = 10000;

constexpr int MeasuredHomes = 256;

/** An operator at work. Notes which frames the camera and which entries the log must get. */
class Operator
{
public:
    /** Presses this many buttons, disconnects and connects now and then, changes settings. */
    void work(int presses)
    {
        for (; presses > 0; --presses) {
            press();
            if (++pressed % ConnectEvery == 0)
                reconnect();
            if (random.bounded(10) == 0)
                changeSettings();
        }
    }

    /** The memory that a press of Home keeps until the program ends, since its timer belongs to the link. */
    qint64 heapPerHome()
    {
        const Memory before = Memory::now();
        for (int home = 0; home < MeasuredHomes; ++home)
            goHome();
        return trouble().isEmpty() && allHomeViewsCome()
                   ? (Memory::now().heapBytes - before.heapBytes) / MeasuredHomes
                   : 0;
    }

    /** How the camera's frames and the log's entries differ from what they must be, or "". */
    QString trouble()
    {
        QString frameTrouble = checkFrames();
        if (!frameTrouble.isEmpty())
            return frameTrouble;

        const QStringList found = log.newLines();
        if (found != lines)
            return "logged \"" + found.join('|') + "\" instead of \"" + lines.join('|') + '"';
        lineCount += lines.size();
        lines.clear();
        return hearReplies();
    }

    /** Waits for the second command of the last presses of Home. */
    bool allHomeViewsCome()
    {
        return QTest::qWaitFor([this] { return checkFrames().isEmpty() && homeViews == homes; });
    }

    Desk desk;
    int pressed = 0;
    int connects = 0;
    int homes = 0;
    qint64 frameCount = 0;
    qint64 lineCount = 0;

private:
    void press()
    {
        const int kind = random.bounded(100);
        if (kind < 50)
            return steer(random.bounded(4));
        if (kind < 75)
            return changeZoom(random.bounded(2) == 0);
        if (kind < 77)
            return goHome();
        if (kind < 97)
            return recallByButton(random.bounded(1, 10));
        recallByNumber(random.bounded(1, 65));
    }

    void goHome()
    {
        click("homeBtn");
        expect("Home", "81 01 06 04 ff");
        ++homes;
    }

    void steer(int direction)
    {
        click(QString(Directions[direction]) + "Btn");
        const bool inverted = direction < 2 ? invertTilt : invertPan;
        const int sent = inverted ? direction ^ 1 : direction;
        expect(QString("Move") + DirectionNames[sent], drive(DirectionBytes[sent]));
        expect("MoveStop", drive("03 03"));
    }

    QByteArray drive(const char* direction) const
    {
        return "81 01 06 01 " + hex(panSpeed) + ' ' + hex(tiltSpeed) + ' ' + direction + " ff";
    }

    void changeZoom(bool in)
    {
        click(in ? "zoomInBtn" : "zoomOutBtn");
        expect(in ? "ZoomIn" : "ZoomOut", "81 01 04 07 " + hex((in ? 0x20 : 0x30) + zoomSpeed) + " ff");
        expect("ZoomStop", "81 01 04 07 00 ff");
    }

    void recallByButton(int preset)
    {
        click(QString("preset%1Btn").arg(preset));
        expectRecall(preset);
    }

    void recallByNumber(int preset)
    {
        desk.find<QLineEdit>("presetEdit")->setText(QString::number(preset));
        click("callBtn");
        expectRecall(preset);
    }

    void expectRecall(int preset)
    {
        expect("Call Preset" + QString::number(preset), "81 01 04 3f 02 " + hex(preset) + " ff");
    }

    // Connects again at once: the second command of Home needs the open port.
    void reconnect()
    {
        click("connectBtn");
        click("connectBtn");
        ++connects;
    }

    // Never zoom speed 7: zooming out would have the frame of Home's second command.
    void changeSettings()
    {
        desk.settings()->setPanSpeed(panSpeed = random.bounded(1, 19));
        desk.settings()->setTiltSpeed(tiltSpeed = random.bounded(1, 15));
        desk.settings()->setZoomSpeed(zoomSpeed = random.bounded(1, 7));
        desk.settings()->setInvertPan(invertPan = random.bounded(2) == 0);
        desk.settings()->setInvertTilt(invertTilt = random.bounded(2) == 0);
        desk.settings()->setPresetName(random.bounded(1, 10), "Name " + QString::number(random.bounded(100)));
    }

    void click(const QString& button)
    {
        QTest::mouseClick(desk.find<QPushButton>(qPrintable(button)), Qt::LeftButton);
    }

    static QByteArray hex(int byte) { return QByteArray(1, static_cast<char>(byte)).toHex(); }

    void expect(const QString& line, const QByteArray& frame)
    {
        lines.append(line);
        frames.append(frame);
    }

    QString checkFrames()
    {
        while (!frames.isEmpty()) {
            const QByteArray frame = desk.camera.nextFrame();
            if (frame == FullWide) {
                ++homeViews;
                continue;
            }
            if (frame != frames.constFirst())
                return "sent \"" + frame + "\" instead of \"" + frames.constFirst() + '"';
            frames.removeFirst();
            ++frameCount;
        }
        // Only the second commands of Home may come now.
        while (!desk.camera.pending().isEmpty()) {
            const QByteArray frame = desk.camera.nextFrame();
            if (frame != FullWide)
                return "sent \"" + frame + "\" without a press";
            ++homeViews;
        }
        return {};
    }

    // The camera answers, and there is noise on the line.
    QString hearReplies()
    {
        QByteArray bytes = QByteArray::fromHex("9041ff9051ff").repeated(random.bounded(5));
        for (int noise = random.bounded(40); noise > 0; --noise)
            bytes += static_cast<char>(random.bounded(256));
        bytes += '\xFF';
        model.sent(bytes);
        desk.camera.reply(bytes.toHex());
        for (const QDeadlineTimer deadline(LineTimeoutMs); !model.isComplete();) {
            if (deadline.hasExpired())
                return "replies are missing in the log";
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            const QStringList added = log.newLines();
            lineCount += added.size();
            QString difference = model.check(added);
            if (!difference.isEmpty())
                return difference;
        }
        return {};
    }

    QRandomGenerator random{1};
    LogTail log{desk.profile.logFile()};
    ReplyModel model;
    QStringList lines;
    QByteArrayList frames;
    int homeViews = 0;
    int panSpeed = 5;
    int tiltSpeed = 5;
    int zoomSpeed = 5;
    bool invertPan = false;
    bool invertTilt = false;
};

} // namespace

/** The button presses of a working day, without pauses. */
class WorkingDaySoak : public QObject
{
    Q_OBJECT

private slots:

    void everyFrameArrivesOnceAndEveryEntryIsLogged()
    {
        const int presses = rounds(1000, 100 * 1000);
        const int warmUp = presses / 10;
        Operator user;
        qint64 heapPerHome = 0;
        int homesBefore = 0;
        Memory before = Memory::now();
        while (user.pressed < warmUp + presses) {
            if (user.pressed == warmUp) {
                QVERIFY(user.allHomeViewsCome());
                heapPerHome = user.heapPerHome();
                homesBefore = user.homes;
                before = Memory::now();
            }
            user.work(ActionsPerTurn);
            QCOMPARE(user.trouble(), QString());
        }
        QVERIFY(user.allHomeViewsCome());
        const Memory after = Memory::now();
        const qint64 timers = (user.homes - homesBefore) * heapPerHome;

        QCOMPARE(user.desk.user.texts(), QStringList());
        qInfo("%d presses, %d connects: %lld frames in order and once, %lld log lines; %s, of which the "
              "timers of %d presses of Home take %lld bytes, %lld each",
              user.pressed, user.connects, user.frameCount, user.lineCount,
              qPrintable(after.growthSince(before)), user.homes - homesBefore, timers, heapPerHome);
        QVERIFY(after.heapBytes - before.heapBytes - timers < LeakAllowance);
    }
};

QTEST_APPLESS_MAIN(WorkingDaySoak)
#include "WorkingDaySoak.moc"
