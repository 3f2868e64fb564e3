"""USB serial adapters for the virtual machine, and the simulated camera at the end of their wire.

QEMU has one FTDI adapter of its own (0403:6001). The two that AUTO takes are simulated here. They are plugged in by
usbredir, QEMU's network protocol for remote USB devices; the kernel inside sees them on its bus.
"""

import os
import select
import socket
import struct
import subprocess
import threading

from machine import wait_for


class Camera:
    """The simulated camera. `frames` is what it has received so far, as "81 01 06 04 FF"."""

    def __init__(self, program, *options):
        self.frames = []
        self.process = subprocess.Popen([program, *options], stdout=subprocess.PIPE, text=True)
        path = self.process.stdout.readline().removeprefix("Camera at ").strip()
        self.line = os.open(path, os.O_RDWR | os.O_NOCTTY)
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        for line in self.process.stdout:
            if line.startswith("<- "):
                self.frames.append(line[3:].split("  ")[0].strip())

    def close(self):
        self.process.kill()
        self.process.wait()


class Adapter:
    """An adapter with a camera at its far end. What the camera sends while the adapter is unplugged is lost."""

    count = 0

    def __init__(self, machine, camera):
        self.machine = machine
        self.camera = camera
        Adapter.count += 1
        self.identifier = f"adapter{Adapter.count}"
        path = machine.folder / self.identifier
        path.unlink(missing_ok=True)
        self.path = str(path)
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(self.path)
        self.listener.listen()
        self.connection = None
        # Stories call say() while the thread of this adapter serves the machine.
        self.lock = threading.RLock()
        threading.Thread(target=self.serve, daemon=True).start()

    def plug(self):
        backend = {"type": "socket", "data": {"server": False,
                                              "addr": {"type": "unix", "data": {"path": self.path}}}}
        self.machine.order("chardev-add", id=self.identifier, backend=backend)
        self.machine.order("device_add", driver=self.driver, id="usb-" + self.identifier, chardev=self.identifier)

    def pull(self):
        self.machine.order("device_del", id="usb-" + self.identifier)
        # QEMU releases the backend a little later; some it removes by itself.
        wait_for(lambda: self.machine.try_order("chardev-remove", id=self.identifier) or not self.is_in(),
                 "the adapter is out")

    def is_in(self):
        return any(backend["label"] == self.identifier for backend in self.machine.order("query-chardev"))

    def send_break(self):
        self.machine.order("chardev-send-break", id=self.identifier)

    def serve(self):
        while True:
            source = self.connection or self.listener
            ready = select.select([source, self.camera.line], [], [])[0]
            with self.lock:
                if self.listener in ready:
                    self.connection = self.listener.accept()[0]
                    self.connected()
                if self.connection in ready:
                    self.take_from_machine()
                if self.camera.line in ready and not self.take_from_camera():
                    return

    def take_from_camera(self):
        try:
            data = os.read(self.camera.line, 4096)
        except OSError:
            # The camera has ended.
            return False
        self.say(data)
        return bool(data)

    def take_from_machine(self):
        try:
            data = self.connection.recv(65536)
        except OSError:
            data = b""
        if data:
            self.arrived(data)
        else:
            self.connection.close()
            self.connection = None

    def write(self, data):
        """Sends to QEMU, if the adapter is plugged in."""
        try:
            if self.connection:
                self.connection.sendall(data)
        except OSError:
            # It was pulled in the meantime.
            pass


class FtdiOfQemu(Adapter):
    """0403:6001, which AUTO does not take."""

    driver = "usb-serial"

    def connected(self):
        pass

    def arrived(self, data):
        os.write(self.camera.line, data)

    def say(self, data):
        """Sends from the camera's end of the wire."""
        with self.lock:
            self.write(data)


# usbredir: the types of its packets.
HELLO, CONNECT, INTERFACES, ENDPOINTS = 0, 1, 4, 5
SET_CONFIGURATION, CONFIGURATION = 6, 8
SET_ALTERNATIVE, ALTERNATIVE = 9, 11
START_INTERRUPT, STOP_INTERRUPT, INTERRUPT_STATUS = 15, 16, 17
CANCEL = 21
CONTROL, BULK = 100, 101
# The first packet in each direction is the greeting. The later ones have longer numbers in their headers.
GREETING_HEADER, HEADER = struct.Struct("<III"), struct.Struct("<IIQ")
CONTROL_HEADER = struct.Struct("<BBBBHHH")
BULK_HEADER = struct.Struct("<BBHIH")
# Send the device's version and packet sizes, numbers of 64 bits and lengths of 32. QEMU requires the last three at a
# USB 3 socket.
CAPABILITIES = 1 << 1 | 1 << 4 | 1 << 5 | 1 << 6
FULL_SPEED = 1
CANCELLED = 1
BULK_TYPE, INTERRUPT_TYPE, NO_ENDPOINT = 2, 3, 255
ENDPOINT_COUNT = 32

# USB: the requests that every device answers.
TO_HOST = 0x80
GET_DESCRIPTOR = 6
DEVICE_DESCRIPTOR, CONFIGURATION_DESCRIPTOR = 1, 2
VENDOR_CLASS = 0xFF


class PlayedAdapter(Adapter):
    """An adapter whose chip is simulated here. `baud_rate` is the rate that the driver has set."""

    driver = "usb-redir"
    # The first bytes of each packet to the machine.
    packet_begin = b""
    baud_rate = 0

    def connected(self):
        self.header = GREETING_HEADER
        self.unread = b""
        self.to_machine = b""
        self.waiting = []
        greeting = b"adapter".ljust(64, b"\0") + struct.pack("<I", CAPABILITIES)
        self.write(GREETING_HEADER.pack(HELLO, len(greeting), 0) + greeting)
        first_only = bytes(ENDPOINT_COUNT)
        self.send(INTERFACES, 0, struct.pack("<I", 1) + first_only + bytes([VENDOR_CLASS]).ljust(ENDPOINT_COUNT, b"\0")
                  + first_only + first_only)
        types = bytearray([NO_ENDPOINT] * ENDPOINT_COUNT)
        # The control endpoint, in both directions.
        types[0] = types[16] = 0
        sizes = [0] * ENDPOINT_COUNT
        for address, kind, size in self.endpoints:
            index = (address & TO_HOST) >> 3 | address & 0x0F
            types[index] = kind
            sizes[index] = size
        intervals = b"\1" * ENDPOINT_COUNT
        self.send(ENDPOINTS, 0, bytes(types) + intervals + first_only + struct.pack("<32H", *sizes))
        self.send(CONNECT, 0, struct.pack("<BBBBHHH", FULL_SPEED, VENDOR_CLASS, 0, 0, *self.identity))

    def send(self, kind, number, body):
        self.write(HEADER.pack(kind, len(body), number) + body)

    def arrived(self, data):
        self.unread += data
        while len(self.unread) >= self.header.size:
            kind, length, number = self.header.unpack_from(self.unread)
            end = self.header.size + length
            if len(self.unread) < end:
                return
            body = self.unread[self.header.size:end]
            self.unread = self.unread[end:]
            self.header = HEADER
            self.answer(kind, number, body)

    def answer(self, kind, number, body):
        if kind == CONTROL:
            self.answer_command(number, body)
        elif kind == BULK:
            self.answer_bulk(number, body)
        elif kind == CANCEL:
            self.waiting = [waiting for waiting in self.waiting if waiting[0] != number]
            self.send(BULK, number, BULK_HEADER.pack(self.bulk_in, CANCELLED, 0, 0, 0))
        elif kind == SET_CONFIGURATION:
            self.send(CONFIGURATION, number, b"\0" + body)
        elif kind == SET_ALTERNATIVE:
            self.send(ALTERNATIVE, number, b"\0" + body)
        elif kind in (START_INTERRUPT, STOP_INTERRUPT):
            self.send(INTERRUPT_STATUS, number, b"\0" + body)

    def answer_command(self, number, body):
        endpoint, request, kind, _, value, index, length = CONTROL_HEADER.unpack_from(body)
        if kind & TO_HOST:
            data = self.descriptor(value >> 8) if request == GET_DESCRIPTOR else self.register(request)
            data = data[:length]
        else:
            self.command(request, value, index)
            data = b""
        size = len(data) if kind & TO_HOST else length
        self.send(CONTROL, number, CONTROL_HEADER.pack(endpoint, request, kind, 0, value, index, size) + data)

    def descriptor(self, kind):
        if kind == DEVICE_DESCRIPTOR:
            return struct.pack("<BBHBBBBHHHBBBB", 18, DEVICE_DESCRIPTOR, 0x0110, 0, 0, 0, 8, *self.identity, 0, 0, 0, 1)
        if kind != CONFIGURATION_DESCRIPTOR:
            return b""
        interface = struct.pack("<BBBBBBBBB", 9, 4, 0, 0, len(self.endpoints), VENDOR_CLASS, 0, 0, 0)
        ends = b"".join(struct.pack("<BBBBHB", 7, 5, address, kind, size, 1) for address, kind, size in self.endpoints)
        return struct.pack("<BBHBBBBB", 9, CONFIGURATION_DESCRIPTOR, 9 + len(interface + ends), 1, 1, 0, 0x80, 50) \
            + interface + ends

    def answer_bulk(self, number, body):
        endpoint, _, length, stream, _ = BULK_HEADER.unpack_from(body)
        if endpoint & TO_HOST:
            self.waiting.append((number, length))
            self.feed_machine()
        else:
            os.write(self.camera.line, body[BULK_HEADER.size:])
            self.send(BULK, number, BULK_HEADER.pack(endpoint, 0, length, stream, 0))

    def say(self, data):
        """Sends from the camera's end of the wire."""
        with self.lock:
            if self.connection:
                self.to_machine += data
                self.feed_machine()

    def feed_machine(self):
        while self.waiting and self.to_machine:
            number, length = self.waiting.pop(0)
            size = min(length, self.packet_size) - len(self.packet_begin)
            data = self.packet_begin + self.to_machine[:size]
            self.to_machine = self.to_machine[size:]
            self.send(BULK, number, BULK_HEADER.pack(self.bulk_in, 0, len(data), 0, 0) + data)


class Ch340(PlayedAdapter):
    """WCH CH340, for the kernel's ch341."""

    identity = (0x1A86, 0x7523, 0x0264)
    bulk_in = 0x82
    packet_size = 32
    endpoints = ((bulk_in, BULK_TYPE, packet_size), (0x02, BULK_TYPE, packet_size), (0x81, INTERRUPT_TYPE, 8))

    READ_VERSION, WRITE_REGISTER = 0x5F, 0x9A
    DIVISOR_REGISTERS = 0x1312
    CLOCK_HZ = 48000000

    def register(self, request):
        return b"\x31\x00" if request == self.READ_VERSION else b"\x00\x00"

    def command(self, request, value, index):
        if request == self.WRITE_REGISTER and value == self.DIVISOR_REGISTERS:
            prescaler, factor = index & 3, index >> 2 & 1
            self.baud_rate = round(self.CLOCK_HZ / (1 << 12 - 3 * prescaler - factor) / (256 - (index >> 8)))


class FtdiX(PlayedAdapter):
    """FTDI FT-X, for the kernel's ftdi_sio."""

    identity = (0x0403, 0x6015, 0x1000)
    bulk_in = 0x81
    packet_size = 64
    endpoints = ((bulk_in, BULK_TYPE, packet_size), (0x02, BULK_TYPE, packet_size))
    # The status of modem and line.
    packet_begin = b"\x01\x60"

    SET_BAUD_RATE, GET_STATES = 3, 5
    CLOCK_HZ = 3000000
    EIGHTHS = (0, 4, 2, 1, 3, 5, 6, 7)

    def register(self, request):
        # Say that everything is sent; otherwise the driver waits for it when the port closes.
        return self.packet_begin if request == self.GET_STATES else b"\x10\x00"

    def command(self, request, value, index):
        if request == self.SET_BAUD_RATE:
            eighths = self.EIGHTHS[value >> 14 | (index & 1) << 2]
            self.baud_rate = round(self.CLOCK_HZ / ((value & 0x3FFF) + eighths / 8))
