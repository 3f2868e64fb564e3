#include "support/CameraEnd.h"
#include "support/Frames.h"
#include "support/PrivateProfile.h"
#include "system/RunningProgram.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtTest>

#include <csignal>

namespace {

/**
 * The built program as the user starts it. Qt's log names each window that it draws. Warnings do not end it:
 * without a screen Qt warns about size hints.
 */
class Started : public RunningProgram
{
public:
    explicit Started(const QStringList& arguments = {}, const QString& executable = VANTREL_PATH)
        : RunningProgram(executable, arguments,
                         {{"QT_FATAL_WARNINGS", "0"}, {"QT_LOGGING_RULES", "qt.widgets.painting=true"}})
    {
    }

    bool hasDrawn(const QString& window) { return output().contains(" of " + window + '('); }
};

} // namespace

class ProgramTest : public QObject
{
    Q_OBJECT

private slots:

    void printsItsDataFolderOnce()
    {
        const PrivateProfile profile;
        const CameraEnd camera;
        profile.store("comport", camera.portName());
        Started program;

        const QString folder = '"' + QDir::toNativeSeparators(profile.folder() + '/') + '"';
        QTRY_VERIFY(program.hasDrawn("AppMainWin"));
        QCOMPARE(program.output().count(folder), 1);
    }

    void dataFolderIsNamedAfterTheExecutable()
    {
        const PrivateProfile profile;
        const QTemporaryDir folder;
        QVERIFY(QFile::copy(VANTREL_PATH, folder.filePath("Stage")));
        Started program({}, folder.filePath("Stage"));

        const QString expected = QFileInfo(profile.folder()).path() + "/Stage/";
        QTRY_VERIFY2(program.output().contains('"' + QDir::toNativeSeparators(expected) + '"'),
                     qPrintable(program.output()));
        QTRY_VERIFY(program.hasDrawn("QMessageBox"));
    }

    void logsRepliesWhileItRuns()
    {
        const PrivateProfile profile;
        CameraEnd camera;
        profile.store("comport", camera.portName());
        profile.store("isstartuppreset", true);
        const Started program;
        camera.nextFrame();

        camera.reply("90 41 ff");

        QTRY_COMPARE(profile.log(), QStringList({"Call Preset1", "9041ff", "Analyze Buffer", "-90-41-ff-3"}));
    }

    void showsOnlyItsWindowWhereTheCameraIsThere()
    {
        const PrivateProfile profile;
        const CameraEnd camera;
        profile.store("comport", camera.portName());
        Started program;

        QTRY_VERIFY(program.hasDrawn("AppMainWin"));
        QVERIFY(!program.hasDrawn("QMessageBox"));
    }

    void showsOnlyABoxWhereTheCameraIsMissing()
    {
        const PrivateProfile profile;
        Started program;

        QTRY_VERIFY(program.hasDrawn("QMessageBox"));
        QVERIFY(!program.hasDrawn("AppMainWin"));
    }

    void leavesAFreshAccountUntouched()
    {
        const PrivateProfile profile;
        Started program;

        QTRY_VERIFY(program.hasDrawn("QMessageBox"));
        QVERIFY(!QFile::exists(profile.folder()));
    }

    void endsWithSuccessOnASignalWhileABoxIsOpen()
    {
        const PrivateProfile profile;
        Started program;
        QTRY_VERIFY(program.hasDrawn("QMessageBox"));

        QCOMPARE(kill(static_cast<pid_t>(program.id()), SIGTERM), 0);

        QCOMPARE(program.troubleAtExit(), QString());
    }

    void handsItsArgumentsToQt()
    {
        const PrivateProfile profile;
        QProcess program;
        program.start(VANTREL_PATH, {"-platform", "nowhere"});

        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::CrashExit);
        QVERIFY(program.readAllStandardError().contains("nowhere"));
    }

    void ignoresArgumentsThatQtDoesNotTake()
    {
        const PrivateProfile profile;
        CameraEnd camera;
        profile.store("comport", camera.portName());
        profile.store("isstartuppreset", true);
        profile.store("startuppreset", 7);
        const QByteArray settings = fileContent(profile.settingsFile());

        const Started program({"--help", "--preset=3", "COM9", "-v"});

        QCOMPARE(camera.nextFrame(), recallPreset(7));
        QCOMPARE(fileContent(profile.settingsFile()), settings);
    }
};

QTEST_GUILESS_MAIN(ProgramTest)

#include "ProgramTest.moc"
