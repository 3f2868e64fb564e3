#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>
#include <QString>

#include <memory>

/** What a device says it is: vendor and product identifier, four hexadecimal digits each. */
struct DeviceId
{
    const char* vendor;
    const char* product;
};

/**
 * The serial ports of a made-up computer, in place of the real ones, for this process and those that it
 * starts. Needs umockdev-wrapper around the process; create it before the program.
 */
class UsbBus
{
public:
    /** An empty computer; without umockdev-wrapper around it the process ends here. */
    UsbBus();
    ~UsbBus();
    Q_DISABLE_COPY(UsbBus)

    /**
     * Plugs a serial adapter into a socket, such as "1-2"; its port leads to `terminal`, with none it cannot
     * be opened. Returns its name: the lowest free "ttyUSB" number, counted from one of this process alone.
     */
    QString plug(const QByteArray& socket, const DeviceId& id, const QString& terminal = {},
                 const QString& name = {});

    /** Takes the adapter with this port off the bus. Its line is not hung up. */
    void unplug(const QString& port);

    /** Adds a port on a PCI card, listed before all adapters. It cannot be opened. */
    void addPciPort(const QString& port, const DeviceId& id)
    {
        identify(addPort(port, addDevice("pci", "0000:03:00.0")), "pci", id);
    }

    /** Adds a port on the main board, without identifiers, listed like those. It cannot be opened. */
    void addBuiltInPort(const QString& port) { addPort(port, addDevice("pnp", "00:05")); }

private:
    struct Testbed;

    QByteArray addDevice(const char* subsystem, const QByteArray& name, const QByteArray& parent = {});
    void setProperty(const QByteArray& device, const char* name, const QByteArray& value);
    QByteArray addPort(const QString& port, const QByteArray& parent);
    void identify(const QByteArray& device, const char* bus, const DeviceId& id);
    QString node(const QString& port) const;

    const std::unique_ptr<Testbed> testbed;
    QMap<QString, QByteArrayList> adapters;
};
