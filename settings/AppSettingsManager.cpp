#include "settings/AppSettingsManager.h"

#include "settings/AppLoginEntry.h"
#include "settings/AppSettingsFile.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>

namespace {

constexpr char SettingsFileName[] = "setting.ini";
constexpr char LogFileName[] = "app.log";

constexpr char ComPortKey[] = "comport";
constexpr char BaudRateKey[] = "baudrate";
constexpr char PanSpeedKey[] = "panspeed";
constexpr char TiltSpeedKey[] = "tiltspeed";
constexpr char ZoomSpeedKey[] = "zoomspeed";
constexpr char InvertPanKey[] = "invertpan";
constexpr char InvertTiltKey[] = "inverttilt";
constexpr char StartUpPresetKey[] = "startuppreset";
constexpr char IsStartUpPresetKey[] = "isstartuppreset";
constexpr char RunOnStartUpKey[] = "runonstartup";
constexpr char RunAsAdminKey[] = "runasadmin";

constexpr int DefaultSpeed = 5;
constexpr int DefaultStartUpPreset = 1;

// osascript gets exactly this text: the option and the script in one argument, and no blank before the name
// of the item to delete.
constexpr char LoginItemTool[] = "osascript";
constexpr char AddLoginItemBegin[] =
    "-e tell application \"System Events\" to make login item at end with properties {path:\"";
constexpr char AddLoginItemEnd[] = "\", hidden:false}";
constexpr char DeleteLoginItemBegin[] = "-e tell application \"System Events\" to delete login item\"";
constexpr char DeleteLoginItemEnd[] = "\"";

QString presetNameKey(const QString& port, int preset)
{
    return port + '_' + QString::number(preset);
}

} // namespace

QString defaultPresetName(int preset)
{
    return "Preset" + QString::number(preset);
}

AppSettingsManager::AppSettingsManager()
{
    const QString path = getDefaultPath() + SettingsFileName;
    [[maybe_unused]] const bool isUtf8 = prepareSettingsFile(path);
    settings = new QSettings(path, QSettings::IniFormat);
#if QT_VERSION_MAJOR < 6
    // Qt 6 writes UTF-8, and Qt 5 writes escape sequences, which both can read. Read the whole file as UTF-8
    // here, then remove the codec: with one, Qt 5 would spoil characters that take two QChar when it writes.
    if (isUtf8)
        settings->setIniCodec("UTF-8");
    settings->allKeys();
    settings->setIniCodec(static_cast<QTextCodec*>(nullptr));
#endif

    qDebug() << getDefaultPath();
}

AppSettingsManager::~AppSettingsManager()
{
    delete settings;
}

QString AppSettingsManager::getDefaultPath()
{
    return QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + '/');
}

QString AppSettingsManager::getApplicationPath()
{
    return QDir::toNativeSeparators(QCoreApplication::applicationFilePath() + '/');
}

QString AppSettingsManager::getCOMPort()
{
    return settings->value(ComPortKey, FallbackPort).toString();
}

void AppSettingsManager::setCOMPort(QString port)
{
    settings->setValue(ComPortKey, port);
}

int AppSettingsManager::getBaudRate()
{
    return settings->value(BaudRateKey, DefaultBaudRate).toInt();
}

void AppSettingsManager::setBaudRate(int baudRate)
{
    settings->setValue(BaudRateKey, baudRate);
}

int AppSettingsManager::getPanSpeed()
{
    return settings->value(PanSpeedKey, DefaultSpeed).toInt();
}

void AppSettingsManager::setPanSpeed(int speed)
{
    settings->setValue(PanSpeedKey, speed);
}

int AppSettingsManager::getTiltSpeed()
{
    return settings->value(TiltSpeedKey, DefaultSpeed).toInt();
}

void AppSettingsManager::setTiltSpeed(int speed)
{
    settings->setValue(TiltSpeedKey, speed);
}

int AppSettingsManager::getZoomSpeed()
{
    return settings->value(ZoomSpeedKey, DefaultSpeed).toInt();
}

void AppSettingsManager::setZoomSpeed(int speed)
{
    settings->setValue(ZoomSpeedKey, speed);
}

bool AppSettingsManager::getInvertPan()
{
    return settings->value(InvertPanKey, false).toBool();
}

void AppSettingsManager::setInvertPan(bool invert)
{
    settings->setValue(InvertPanKey, invert);
}

bool AppSettingsManager::getInvertTilt()
{
    return settings->value(InvertTiltKey, false).toBool();
}

void AppSettingsManager::setInvertTilt(bool invert)
{
    settings->setValue(InvertTiltKey, invert);
}

int AppSettingsManager::getStartUpPreset()
{
    return settings->value(StartUpPresetKey, DefaultStartUpPreset).toInt();
}

void AppSettingsManager::setStartUpPreset(int preset)
{
    settings->setValue(StartUpPresetKey, preset);
}

bool AppSettingsManager::getIsStartUpPreset()
{
    return settings->value(IsStartUpPresetKey, false).toBool();
}

void AppSettingsManager::setIsStartUpPreset(bool enabled)
{
    settings->setValue(IsStartUpPresetKey, enabled);
}

bool AppSettingsManager::getRunOnStartUp()
{
    return settings->value(RunOnStartUpKey, false).toBool();
}

void AppSettingsManager::setRunOnStartUp(bool enabled)
{
    settings->setValue(RunOnStartUpKey, enabled);

    const QString script = enabled ? AddLoginItemBegin + macOSXAppBundlePath() + AddLoginItemEnd
                                   : DeleteLoginItemBegin + macOSXAppBundleName() + DeleteLoginItemEnd;
    QProcess::execute(LoginItemTool, {script});
#ifdef Q_OS_LINUX
    setLoginEntry(enabled);
#endif
}

bool AppSettingsManager::getRunAsAdmin()
{
    return settings->value(RunAsAdminKey, false).toBool();
}

void AppSettingsManager::setRunAsAdmin(bool enabled)
{
    settings->setValue(RunAsAdminKey, enabled);
}

QString AppSettingsManager::getPresetName(int preset)
{
    return settings->value(presetNameKey(getCOMPort(), preset), defaultPresetName(preset)).toString();
}

void AppSettingsManager::setPresetName(int preset, QString name)
{
    settings->setValue(presetNameKey(getCOMPort(), preset), name);
}

QString AppSettingsManager::macOSXAppBundleName()
{
    return QFileInfo(macOSXAppBundlePath()).baseName();
}

QString AppSettingsManager::macOSXAppBundlePath()
{
    QDir folder(QCoreApplication::applicationDirPath());
    folder.cdUp();
    folder.cdUp();

    QString path = folder.absolutePath();
    if (path.endsWith('/'))
        path.chop(1);
    return path;
}

void AppSettingsManager::log(QString message)
{
    QFile file(getDefaultPath() + LogFileName);
    if (!file.open(QIODevice::Append))
        return;

    file.write((message + '\n').toUtf8());
    file.flush();
    file.close();
}
