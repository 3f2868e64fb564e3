#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"

#include <QAbstractEventDispatcher>
#include <QPushButton>

#include <cerrno>
#include <ctime>

namespace {

clock_t processorMs()
{
    return clock() / (CLOCKS_PER_SEC / 1000);
}

QString connectText(const Desk& desk)
{
    return desk.find<QPushButton>("connectBtn")->text();
}

} // namespace

/** What a pulled adapter costs: processor time, files and memory. */
class DeviceLossSoak : public QObject
{
    Q_OBJECT

private slots:

    void theBoxOfAPulledAdapterTakesNoProcessorTime_data()
    {
        QTest::addColumn<int>("staleError");
        for (const int error : {0, EAGAIN})
            QTest::addRow("errno %d", error) << error;
    }

    void theBoxOfAPulledAdapterTakesNoProcessorTime()
    {
        QFETCH(int, staleError);
        Desk desk;
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
                [staleError] { errno = staleError; });
        clock_t used = -1;
        desk.user.whenOpen([&used] {
            const clock_t before = processorMs();
            QTest::qWait(1000);
            used = processorMs() - before;
        });

        desk.camera.pull();
        QTRY_COMPARE(connectText(desk), QString("Connect"));
        qInfo("box of a pulled adapter open for 1000 ms: %ld ms of processor time", used);
        QVERIFY(used >= 0 && used < 100);
    }

    void pluggingInAndConnectingWorksEveryTime()
    {
        Desk desk;
        desk.find<QPushButton>("connectBtn")->click();
        const int warmUp = rounds(10, 100);
        const int count = rounds(50, 1000);
        Memory before = Memory::now();
        qint64 descriptors = 0;
        for (int round = 0; round < warmUp + count; ++round) {
            if (round == warmUp) {
                before = Memory::now();
                descriptors = openDescriptors();
            }
            CameraEnd camera;
            desk.settings()->setCOMPort(camera.portName());
            desk.find<QPushButton>("connectBtn")->click();
            QCOMPARE(connectText(desk), QString("Disconnect"));
            QTest::mouseClick(desk.find<QPushButton>("upBtn"), Qt::LeftButton);
            QCOMPARE(camera.nextFrame(), QByteArray(Up));
            QCOMPARE(camera.nextFrame(), QByteArray(Stop));

            camera.pull();
            QTRY_COMPARE(connectText(desk), QString("Connect"));
            QCOMPARE(desk.user.texts().size(), 1);
            desk.user.forget();
        }
        QCOMPARE(openDescriptors(), descriptors);
        const Memory after = Memory::now();
        qInfo("plugged in, connected and pulled %d times: %s, one box each", count,
              qPrintable(after.growthSince(before)));
        QVERIFY(after.heapBytes - before.heapBytes < LeakAllowance);
    }
};

QTEST_APPLESS_MAIN(DeviceLossSoak)
#include "DeviceLossSoak.moc"
