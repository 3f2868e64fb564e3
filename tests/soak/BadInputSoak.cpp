#include "soak/Soak.h"
#include "support/Desk.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>

#include <limits>

namespace {

/** A random text: letters of any script, control characters, halves of surrogate pairs. */
class Texts
{
public:
    QString any()
    {
        QString text;
        for (int size = random.bounded(40); size > 0; --size) {
            const int limits[] = {0x80, 0x20, 0x3000, 0x10000};
            text += QChar(static_cast<ushort>(random.bounded(1, limits[random.bounded(4)])));
        }
        return text;
    }

    int anyNumber() { return static_cast<int>(random.generate()); }

private:
    QRandomGenerator random{1};
};

} // namespace

/** Preset numbers out of range, and random texts in the number field. */
class BadInputSoak : public QObject
{
    Q_OBJECT

private slots:

    void anyPresetNumberGoesOutAsItsRemainder()
    {
        Desk desk;
        Texts texts;
        QVector<int> numbers{
            0, -1, 255, 256, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
        for (int count = rounds(1000, 100000); count > 0; --count)
            numbers.append(texts.anyNumber());
        for (const int number : std::as_const(numbers)) {
            desk.link()->callPreset(number);
            const auto byte = static_cast<char>(number % 255);
            QCOMPARE(desk.camera.nextFrame().left(17), "81 01 04 3f 02 " + QByteArray(1, byte).toHex());
            // -1 is sent as FF, so the frame ends one byte early.
            if (byte == '\xFF')
                QCOMPARE(desk.camera.nextFrame(), QByteArray("ff"));
        }
        qInfo("presets called by any number: %lld", static_cast<qint64>(numbers.size()));
    }

    void anyTextInTheNumberFieldIsANumberOrIsRefused()
    {
        Desk desk;
        Texts texts;
        const int count = rounds(100, 5000);
        for (int round = 0; round < count; ++round) {
            const QString text = texts.any();
            desk.find<QLineEdit>("presetEdit")->setText(text);
            const int number = desk.find<QLineEdit>("presetEdit")->text().toInt();
            const auto boxes = desk.user.texts().size();

            desk.find<QPushButton>("callBtn")->click();
            const bool isRefused = desk.user.texts().size() > boxes;
            QCOMPARE(isRefused, number < 1 || number > 64);
            if (isRefused)
                QCOMPARE(desk.user.texts().constLast(), QString("Please enter number between 1 and 64."));
            else
                QVERIFY(desk.camera.nextFrame().startsWith("81 01 04 3f 02"));
        }
        QCOMPARE(desk.camera.pending(), QByteArray());
        qInfo("texts in the number field: %d", count);
    }
};

QTEST_APPLESS_MAIN(BadInputSoak)
#include "BadInputSoak.moc"
