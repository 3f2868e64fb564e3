#include "support/Desk.h"
#include "support/OrdinaryUser.h"

#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QSerialPort>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// The messages of the table in README.md, in its order.
QStringList documentedMessages()
{
    QFile readme(SOURCE_DIR "/README.md");
    if (!readme.open(QIODevice::ReadOnly))
        qFatal("there is no README.md");
    const QString text = QString::fromUtf8(readme.readAll());
    const QString table = text.section("| A box says | It means |", 1).section("\n\n", 0, 0);
    QStringList messages;
    static const QRegularExpression row("^\\| `([^`]*)` \\|", QRegularExpression::MultilineOption);
    for (auto match = row.globalMatch(table); match.hasNext();)
        messages.append(match.next().captured(1));
    return messages;
}

void disconnectAndChoose(Desk& desk, const QString& port)
{
    desk.find<QPushButton>("connectBtn")->click();
    desk.settings()->setCOMPort(port);
}

void connect(Desk& desk)
{
    desk.find<QPushButton>("connectBtn")->click();
}

void aMissingPort(Desk& desk)
{
    disconnectAndChoose(desk, desk.profile.folder() + "/adapter");
    connect(desk);
}

void aPortThatOthersMayNotOpen(Desk& desk)
{
    const CameraEnd other;
    QCOMPARE(chmod(qPrintable(other.portName()), 0), 0);
    disconnectAndChoose(desk, other.portName());
    const OrdinaryUser user;
    connect(desk);
}

void aPortThatASecondControllerHolds(Desk& desk)
{
    const CameraEnd other;
    QSerialPort holder(other.portName());
    QVERIFY(holder.open(QIODevice::ReadWrite));
    disconnectAndChoose(desk, other.portName());
    connect(desk);
}

void aPortThatAnotherProgramHasClaimed(Desk& desk)
{
    const CameraEnd other;
    QCOMPARE(chmod(qPrintable(other.portName()), 0666), 0);
    const int holder = open(qPrintable(other.portName()), O_RDWR | O_NOCTTY);
    QCOMPARE(ioctl(holder, TIOCEXCL), 0);
    disconnectAndChoose(desk, other.portName());
    {
        const OrdinaryUser user;
        connect(desk);
    }
    close(holder);
}

void aPulledAdapter(Desk& desk)
{
    desk.camera.pull();
    QTRY_COMPARE(desk.user.boxes().size(), 1);
}

void aNumberThatIsNoPreset(Desk& desk)
{
    desk.find<QLineEdit>("presetEdit")->setText("65");
    desk.find<QPushButton>("callBtn")->click();
}

void aStoredPreset(Desk& desk)
{
    desk.find<QLineEdit>("presetEdit")->setText("5");
    desk.find<QPushButton>("setBtn")->click();
}

} // namespace

/** The README explains every message that a user can meet. */
class MessagesTest : public QObject
{
    Q_OBJECT

private slots:

    void theReadmeExplainsEveryMessageAndNoOther()
    {
        QStringList shown;
        for (const auto situation :
             {aMissingPort, aPortThatOthersMayNotOpen, aPortThatASecondControllerHolds,
              aPortThatAnotherProgramHasClaimed, aPulledAdapter, aNumberThatIsNoPreset, aStoredPreset}) {
            Desk desk;
            situation(desk);
            shown += desk.user.texts();
        }
        QCOMPARE(shown, documentedMessages());
    }
};

QTEST_APPLESS_MAIN(MessagesTest)
#include "MessagesTest.moc"
