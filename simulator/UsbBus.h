#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QMap>
#include <QString>

#include <memory>

/** The USB or PCI identifiers of vendor and product, four hexadecimal digits each. */
struct DeviceId
{
    const char* vendor;
    const char* product;
};

/**
 * Mocks the serial ports of the computer, for this process and its children: they see these ports in place of
 * the real ones. Start the process with umockdev-wrapper, and create this object before anything looks for
 * ports.
 */
class UsbBus
{
public:
    /** Begins without ports. Ends the process if it was not started with umockdev-wrapper. */
    UsbBus();
    ~UsbBus();
    Q_DISABLE_COPY(UsbBus)

    /**
     * Plugs a serial adapter into a USB socket, such as "1-2". Its port is a link to `terminal`; without one
     * it cannot be opened. Returns the port's name: `name`, or else "ttyUSB" with the lowest free number of a
     * range that only this process uses.
     */
    QString plug(const QByteArray& socket, const DeviceId& id, const QString& terminal = {},
                 const QString& name = {});

    /** Removes the adapter with this port from the bus. Does not hang up its line. */
    void unplug(const QString& port);

    /** Adds a port on a PCI card. It is listed before all adapters and cannot be opened. */
    void addPciPort(const QString& port, const DeviceId& id)
    {
        identify(addPort(port, addDevice("pci", "0000:03:00.0")), "pci", id);
    }

    /** Adds a port on the main board, without identifiers. It is listed like those and cannot be opened. */
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
