"""A virtual machine under QEMU with USB sockets for adapters."""

import json
import os
import pathlib
import socket
import subprocess
import time

KVM = ["-accel", "kvm", "-cpu", "host"]
MEMORY_MB = 1024
# An emulated machine is slow, and more so on a busy computer.
BOOT_S = 300
ANSWER_S = 120
PATIENCE_S = 60


class Failure(Exception):
    """A story did not see what it expected; the text says what."""


def wait_for(condition, what):
    """Returns the first true value of `condition`; a Failure naming `what` if there is none in time."""
    end = time.monotonic() + PATIENCE_S
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Failure(f"not within {PATIENCE_S} s: {what}")
        time.sleep(0.05)


class JsonLine:
    """JSON values over a local socket, one a line: with QEMU, and with the agent inside."""

    def __init__(self, path, seconds):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(seconds)
        wait_for(lambda: path.exists(), f"{path.name} of QEMU")
        self.socket.connect(str(path))
        self.lines = self.socket.makefile("r")

    def send(self, value):
        self.socket.sendall(json.dumps(value).encode() + b"\n")

    def receive(self):
        try:
            line = self.lines.readline()
        except TimeoutError:
            line = ""
        if not line:
            raise Failure("the virtual machine does not answer")
        return json.loads(line)


class Machine:
    """A virtual machine, booted by the constructor.

    `folder` has the sockets and logs, `guest` the disk; `host` is /host inside.
    """

    def __init__(self, guest, host, folder):
        self.folder = folder
        for name in ("control", "agent"):
            (folder / name).unlink(missing_ok=True)
        self.is_emulated = not self.has_kvm()
        processor = ["-accel", "tcg,thread=multi"] if self.is_emulated else KVM
        self.process = subprocess.Popen(
            ["qemu-system-x86_64", *processor, "-machine", "q35", "-smp", "2", "-m", str(MEMORY_MB),
             "-nodefaults", "-no-reboot", "-display", "none", "-nic", "none", "-snapshot",
             "-serial", f"file:{folder / 'console.log'}",
             "-kernel", guest / "kernel", "-initrd", guest / "initrd",
             "-append", "root=/dev/vda console=ttyS0 quiet mitigations=off systemd.journald.forward_to_console=1",
             "-drive", f"file={guest / 'disk.img'},format=raw,if=virtio",
             "-virtfs", f"local,path={host},mount_tag=host,security_model=none,readonly=on",
             "-device", "qemu-xhci", "-device", "virtio-serial",
             "-chardev", f"socket,id=agent,path={folder / 'agent'},server=on,wait=off",
             "-device", "virtserialport,chardev=agent,name=agent",
             "-qmp", f"unix:{folder / 'control'},server=on,wait=off"],
            stdin=subprocess.DEVNULL)
        self.control = JsonLine(folder / "control", ANSWER_S)
        self.control.receive()
        self.order("qmp_capabilities")
        self.agent = JsonLine(folder / "agent", BOOT_S)
        self.run("true")
        self.agent.socket.settimeout(ANSWER_S)

    @staticmethod
    def has_kvm():
        """Whether QEMU can use KVM. That /dev/kvm exists is not enough."""
        return os.access("/dev/kvm", os.W_OK) and subprocess.run(
            ["qemu-system-x86_64", *KVM, "-display", "none", "-monitor", "stdio"], input=b"quit\n", capture_output=True,
            timeout=30, check=False).returncode == 0

    def close(self):
        self.process.kill()
        self.process.wait()

    def order(self, command, **arguments):
        """Gives QEMU a command and returns its answer."""
        answer = self.ask_qemu(command, arguments)
        if "error" in answer:
            raise Failure(f"QEMU refuses {command}: {answer['error']['desc']}")
        return answer["return"]

    def try_order(self, command, **arguments):
        """Gives QEMU a command that it may refuse; returns whether it succeeded."""
        return "return" in self.ask_qemu(command, arguments)

    def ask_qemu(self, command, arguments):
        self.control.send({"execute": command, "arguments": arguments})
        while True:
            answer = self.control.receive()
            # Anything else is an event.
            if "error" in answer or "return" in answer:
                return answer

    def ask(self, request):
        self.agent.send(request)
        return self.agent.receive()

    def run(self, command):
        """Runs a command as the user of the machine and returns its output."""
        status, output = self.ask({"run": command})
        if status != 0:
            raise Failure(f"{command}: exit status {status}, {output.strip()}")
        return output.strip()

    def try_run(self, command):
        """Runs a command that may fail; returns whether it succeeded."""
        return self.ask({"run": command})[0] == 0

    def suspend_and_wake(self):
        self.run("sudo sh -c '(sleep 1; echo mem >/sys/power/state) >/dev/null 2>&1 &'")
        wait_for(lambda: self.order("query-status")["status"] == "suspended", "the machine sleeps")
        self.order("system_wakeup")

    def windows(self):
        return self.ask({"windows": True})
