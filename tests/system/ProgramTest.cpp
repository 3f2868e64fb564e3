#include "support/CameraEnd.h"
#include "support/Frames.h"
#include "support/PrivateProfile.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtTest>

#include <csignal>

namespace {

// The built program as the user starts it.
class ProgramProcess
{
public:
    explicit ProgramProcess(const QStringList& arguments = {}, const QString& executable = VANTREL_PATH)
    {
        // Qt then reports every window that it draws.
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_LOGGING_RULES", "qt.widgets.painting=true");
        process.setProcessEnvironment(environment);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(executable, arguments);
        if (!process.waitForStarted())
            qFatal("cannot start %s", qPrintable(executable));
    }

    ~ProgramProcess()
    {
        process.kill();
        process.waitForFinished();
    }

    Q_DISABLE_COPY(ProgramProcess)

    QString output()
    {
        text += QString::fromUtf8(process.readAll());
        return text;
    }

    bool hasDrawn(const QString& window) { return output().contains(" of " + window + '('); }

    QProcess process;

private:
    QString text;
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void printsItsDataFolderOnce();
    void dataFolderIsNamedAfterTheExecutable();
    void connectsAndSendsTheStartUpPreset();
    void logsRepliesWhileItRuns();
    void showsOnlyItsWindowWhereTheCameraIsThere();
    void showsOnlyABoxWhereTheCameraIsMissing();
    void leavesAFreshAccountUntouched();
    void endsOrderlyOnASignal_data();
    void endsOrderlyOnASignal();
    void endsOrderlyOnASignalWithABoxOpen();
    void handsItsArgumentsToQt();
    void takesNoArgumentsOfItsOwn();
};

void ProgramTest::printsItsDataFolderOnce()
{
    const PrivateProfile profile;
    const CameraEnd camera;
    profile.store("comport", camera.portName());
    ProgramProcess program;

    const QString folder = '"' + QDir::toNativeSeparators(profile.folder() + '/') + '"';
    QTRY_VERIFY(program.hasDrawn("AppMainWin"));
    QCOMPARE(program.output().count(folder), 1);
}

void ProgramTest::dataFolderIsNamedAfterTheExecutable()
{
    const PrivateProfile profile;
    const QTemporaryDir folder;
    QVERIFY(QFile::copy(VANTREL_PATH, folder.filePath("Stage")));
    ProgramProcess program({}, folder.filePath("Stage"));

    const QString expected = QFileInfo(profile.folder()).path() + "/Stage/";
    QTRY_VERIFY2(program.output().contains('"' + QDir::toNativeSeparators(expected) + '"'),
                 qPrintable(program.output()));
}

void ProgramTest::connectsAndSendsTheStartUpPreset()
{
    const PrivateProfile profile;
    CameraEnd camera;
    profile.store("comport", camera.portName());
    profile.store("isstartuppreset", true);
    profile.store("startuppreset", 7);

    const ProgramProcess program;

    QCOMPARE(camera.nextFrame(), recallPreset(7));
    QCOMPARE(profile.log(), QStringList("Call Preset7"));
}

void ProgramTest::logsRepliesWhileItRuns()
{
    const PrivateProfile profile;
    CameraEnd camera;
    profile.store("comport", camera.portName());
    profile.store("isstartuppreset", true);
    const ProgramProcess program;
    camera.nextFrame();

    camera.reply("90 41 ff");

    QTRY_COMPARE(profile.log(), QStringList({"Call Preset1", "9041ff", "Analyze Buffer", "-90-41-ff-3"}));
}

void ProgramTest::showsOnlyItsWindowWhereTheCameraIsThere()
{
    const PrivateProfile profile;
    const CameraEnd camera;
    profile.store("comport", camera.portName());
    ProgramProcess program;

    QTRY_VERIFY(program.hasDrawn("AppMainWin"));
    QVERIFY(!program.hasDrawn("QMessageBox"));
}

void ProgramTest::showsOnlyABoxWhereTheCameraIsMissing()
{
    const PrivateProfile profile;
    ProgramProcess program;

    QTRY_VERIFY(program.hasDrawn("QMessageBox"));
    QVERIFY(!program.hasDrawn("AppMainWin"));
    QCOMPARE(program.process.state(), QProcess::Running);
}

void ProgramTest::leavesAFreshAccountUntouched()
{
    const PrivateProfile profile;
    ProgramProcess program;

    QTRY_VERIFY(program.hasDrawn("QMessageBox"));
    QVERIFY(!QFile::exists(profile.folder()));
}

void ProgramTest::endsOrderlyOnASignal_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("hang up") << SIGHUP;
}

void ProgramTest::endsOrderlyOnASignal()
{
    QFETCH(int, number);
    const PrivateProfile profile;
    const CameraEnd camera;
    profile.store("comport", camera.portName());
    ProgramProcess program;
    QTRY_VERIFY(program.hasDrawn("AppMainWin"));

    QCOMPARE(kill(static_cast<pid_t>(program.process.processId()), number), 0);

    QVERIFY(program.process.waitForFinished());
    QCOMPARE(program.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.process.exitCode(), 0);
}

void ProgramTest::endsOrderlyOnASignalWithABoxOpen()
{
    const PrivateProfile profile;
    ProgramProcess program;
    QTRY_VERIFY(program.hasDrawn("QMessageBox"));

    program.process.terminate();

    QVERIFY(program.process.waitForFinished());
    QCOMPARE(program.process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.process.exitCode(), 0);
}

void ProgramTest::handsItsArgumentsToQt()
{
    const PrivateProfile profile;
    ProgramProcess program({"-platform", "nowhere"});

    QVERIFY(program.process.waitForFinished());
    QCOMPARE(program.process.exitStatus(), QProcess::CrashExit);
    QVERIFY(program.output().contains("nowhere"));
}

void ProgramTest::takesNoArgumentsOfItsOwn()
{
    const PrivateProfile profile;
    CameraEnd camera;
    profile.store("comport", camera.portName());
    profile.store("isstartuppreset", true);
    profile.store("startuppreset", 7);
    const QByteArray settings = contentOf(profile.settingsFile());

    const ProgramProcess program({"--help", "--preset=3", "COM9", "-v"});

    QCOMPARE(camera.nextFrame(), recallPreset(7));
    QCOMPARE(program.process.state(), QProcess::Running);
    QCOMPARE(contentOf(profile.settingsFile()), settings);
}

QTEST_GUILESS_MAIN(ProgramTest)

#include "ProgramTest.moc"
