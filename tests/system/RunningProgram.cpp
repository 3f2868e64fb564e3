#include "system/RunningProgram.h"

#include <QDir>
#include <QFileInfo>
#include <QProcessEnvironment>
#include <QtTest>

#include <algorithm>

RunningProgram::RunningProgram(const QString& path, const QStringList& arguments,
                               const Variables& environment)
{
    QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
    all.insert("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    all.insert("QT_FATAL_WARNINGS", "1");
    // Qt warns that it cannot activate windows on Wayland.
    all.insert("QT_LOGGING_RULES", "qt.qpa.wayland.warning=false");
    for (auto variable = environment.begin(); variable != environment.end(); ++variable)
        all.insert(variable.key(), variable.value());
    process.setProcessEnvironment(all);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(path, QStringList({"-style", "fusion"}) + arguments);
}

RunningProgram::~RunningProgram()
{
    process.terminate();
    const QString trouble = troubleAtExit();
    if (!trouble.isEmpty())
        QTest::qFail(qPrintable(trouble), __FILE__, __LINE__);
}

QString RunningProgram::troubleAtExit()
{
    if (process.state() != QProcess::NotRunning && !process.waitForFinished())
        return "the program still runs";
    if (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0)
        return {};
    return QString("exit code %1: %2").arg(process.exitCode()).arg(output());
}

QString RunningProgram::output()
{
    said += QString::fromLocal8Bit(process.readAll());
    return said;
}

bool RunningProgram::hasOpen(const QString& path) const
{
    const QDir descriptors(QString("/proc/%1/fd").arg(process.processId()));
    const auto entries = descriptors.entryInfoList(QDir::Files | QDir::System);
    return std::any_of(entries.begin(), entries.end(),
                       [&path](const QFileInfo& entry) { return entry.symLinkTarget() == path; });
}
