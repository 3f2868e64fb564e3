// Include it before Qt: GLib has members named "signals", which is a macro in Qt.
#include <umockdev.h>

#include "UsbBus.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {

// More adapters than any test plugs in.
constexpr qint64 PortNumbersPerProcess = 100;

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};

QByteArray taken(gchar* text)
{
    QByteArray copy(text);
    g_free(text);
    return copy;
}

QByteArray devicePath(const QString& port)
{
    return "/dev/" + port.toLatin1();
}

// Passes ioctl() calls on to the terminal behind the port. By itself the mocked bus refuses those that
// QSerialPort needs, such as exclusive use.
gboolean askTerminal(UMockdevIoctlBase* /*handler*/, UMockdevIoctlClient* client, gpointer /*data*/)
{
    int error = 0;
    const int result = umockdev_ioctl_client_execute(client, &error, nullptr);
    umockdev_ioctl_client_complete(client, result, error);
    return TRUE;
}

} // namespace

struct UsbBus::Testbed
{
    std::unique_ptr<UMockdevTestbed, Unref> devices{umockdev_testbed_new()};
    std::unique_ptr<UMockdevIoctlBase, Unref> requests{umockdev_ioctl_base_new()};
    const QString root = QString::fromLocal8Bit(taken(umockdev_testbed_get_root_dir(devices.get())));
};

UsbBus::UsbBus()
    : testbed(new Testbed)
{
    if (!umockdev_in_mock_environment())
        qFatal("the computer's own serial ports are in sight: run this under umockdev-wrapper");

    QDir(testbed->root).mkdir("dev");
    g_signal_connect_data(testbed->requests.get(), "handle-ioctl", reinterpret_cast<GCallback>(askTerminal),
                          nullptr, nullptr, GConnectFlags{});
}

UsbBus::~UsbBus() = default;

QString UsbBus::plug(const QByteArray& socket, const DeviceId& id, const QString& terminal,
                     const QString& name)
{
    QString port = name;
    qint64 number = QCoreApplication::applicationPid() * PortNumbersPerProcess;
    while (port.isEmpty() || adapters.contains(port))
        port = "ttyUSB" + QString::number(number++);

    const QByteArray adapter = addDevice("usb", socket);
    const QByteArray interface = addDevice("usb", socket + ":1.0", adapter);
    const QByteArray device = addPort(port, interface);
    identify(device, "usb", id);
    adapters.insert(port, {device, interface, adapter});
    if (terminal.isEmpty())
        return port;

    if (!QFile::link(terminal, node(port)))
        qFatal("cannot make the device %s", qPrintable(node(port)));
    umockdev_testbed_attach_ioctl(testbed->devices.get(), devicePath(port).constData(),
                                  testbed->requests.get(), nullptr);
    return port;
}

void UsbBus::unplug(const QString& port)
{
    const QByteArrayList devices = adapters.take(port);
    for (const QByteArray& device : devices)
        umockdev_testbed_remove_device(testbed->devices.get(), device.constData());
    if (QFile::remove(node(port)))
        umockdev_testbed_detach_ioctl(testbed->devices.get(), devicePath(port).constData(), nullptr);
}

QByteArray UsbBus::addDevice(const char* subsystem, const QByteArray& name, const QByteArray& parent)
{
    return taken(umockdev_testbed_add_device(testbed->devices.get(), subsystem, name.constData(),
                                             parent.isEmpty() ? nullptr : parent.constData(), nullptr,
                                             nullptr));
}

void UsbBus::setProperty(const QByteArray& device, const char* name, const QByteArray& value)
{
    umockdev_testbed_set_property(testbed->devices.get(), device.constData(), name, value.constData());
}

QByteArray UsbBus::addPort(const QString& port, const QByteArray& parent)
{
    QByteArray device = addDevice("tty", port.toLatin1(), parent);
    setProperty(device, "DEVNAME", devicePath(port));
    return device;
}

void UsbBus::identify(const QByteArray& device, const char* bus, const DeviceId& id)
{
    setProperty(device, "ID_BUS", bus);
    setProperty(device, "ID_VENDOR_ID", id.vendor);
    setProperty(device, "ID_MODEL_ID", id.product);
}

QString UsbBus::node(const QString& port) const
{
    return testbed->root + devicePath(port);
}
