"""The controller inside the virtual machine: operated with a pointer, and read as a screen reader does."""

from machine import Failure, wait_for

MAIN, SETTINGS, BOX = "Vantrel Controller", "Settings", "Vantrel"
PROFILE = "~/.local/share/Vantrel"
LOG = PROFILE + "/app.log"
PULLED = "Input/output error"
# The controller may use this much of a processor while nothing happens. If it misses a lost adapter, it uses 100 %.
CALM_PERCENT = 10


class Controller:
    """A controller, started by the constructor, with settings of its own and an empty log."""

    def __init__(self, machine, port, baud=9600, **settings):
        self.machine = machine
        lines = [f"comport={port}", f"baudrate={baud}", *(f"{key}={value}" for key, value in settings.items())]
        machine.run(f"mkdir -p {PROFILE} && >{LOG} && "
                    f"printf '%s\\n' '[General]' {' '.join(lines)} >{PROFILE}/setting.ini")
        # As after a new login: with the groups that the user has now.
        self.pid = int(machine.run("sudo -E -u user Vantrel >/tmp/Vantrel.log 2>&1 </dev/null & "
                                   "until pgrep -P $! -x Vantrel; do test -d /proc/$! || exit; sleep 0.1; done"))

    def end(self):
        self.machine.run(f"kill {self.pid}; timeout 10 tail --pid {self.pid} -f /dev/null || kill -9 {self.pid}")

    def window(self, title):
        """The parts of the window with this title; empty if there is none."""
        return next((window["contents"] for window in self.machine.windows() if window["title"] == title), [])

    def boxes(self):
        """The text of each box on the screen."""
        return [next((part["name"] for part in window["contents"] if part["role"] == "label" and part["name"]), None)
                for window in self.machine.windows() if window["title"] == BOX]

    def status(self):
        """The text of the connect button, and that of the status bar."""
        names = [part["name"] or "" for part in self.window(MAIN)]
        button = next((name for name in names if name in ("Connect", "Disconnect")), None)
        line = next((name for name in names if name.startswith(("Connected to", "Device "))), None)
        return button, line

    def place(self, name, title=MAIN):
        """The middle of a control, once the control no longer moves: a new text may change the layout a little later."""
        seen = []

        def stands_still():
            seen.append([part["place"] for part in self.window(title) if part["name"] == name])
            return seen[-1] and seen[-2:] == 2 * seen[-1:]

        wait_for(stands_still, f'"{name}" in the window "{title}"')
        x, y, width, height = seen[-1][0]
        return f"{x + width // 2} {y + height // 2}"

    def point(self, name, title=MAIN, then=""):
        self.machine.run(f"xdotool mousemove {self.place(name, title)} {then}")

    def press(self, name):
        self.point(name, then="mousedown 1")

    def click(self, name, title=MAIN):
        self.point(name, title, then="click 1")

    def release(self):
        self.machine.run("xdotool mouseup 1")

    def type(self, text, field):
        self.click(field)
        self.machine.run(f"xdotool type '{text}'")

    def choose(self, text, list_name, title=SETTINGS):
        """Opens a list and chooses an entry by typing it."""
        self.click(list_name, title)
        self.machine.run(f"xdotool type '{text}'; xdotool key Return")

    def answer_box(self):
        self.click("OK", BOX)

    def log(self):
        return self.machine.run(f"cat {LOG}").splitlines()

    def open_ports(self):
        """The serial ports that the controller has open, even if their adapter is gone."""
        return self.machine.run(f"ls -l /proc/{self.pid}/fd | grep -o '/dev/tty[A-Z].*' || true").splitlines()

    def descriptors(self):
        return int(self.machine.run(f"ls /proc/{self.pid}/fd | wc -l"))

    def locks(self):
        """Its lock files of ports."""
        return self.machine.run(f"grep -lsw {self.pid} /run/lock/LCK..* /tmp/LCK..* || true").split()

    def expect_connected(self, port, setting=None, baud=9600):
        wait_for(lambda: self.status() == ("Disconnect", f"Connected to Port: {setting or port}\tBaudRate: {baud}"),
                 f"connected to {port}, and not {self.status()} with {self.boxes()}")
        if self.open_ports() != [f"/dev/{port}"]:
            raise Failure(f"open are {self.open_ports()}, and not {port}")

    def expect_box(self, text):
        wait_for(self.boxes, f"a box that says {text}")
        self.expect_calm()
        if self.boxes() != [text]:
            raise Failure(f"the boxes say {self.boxes()}, and not once {text}")

    def expect_calm(self):
        used = float(self.machine.run(
            "ticks() { set -- $(sed 's/.*) //' /proc/%d/stat); echo $(($12 + $13)); }; before=$(ticks); sleep 1; "
            "echo $(($(ticks) - before))" % self.pid))
        if used > CALM_PERCENT:
            raise Failure(f"the controller takes {used} % of a processor")

    def expect_disconnected(self):
        wait_for(lambda: self.status() == ("Connect", "Device disconnected"), f"disconnected, and not {self.status()}")
        if self.open_ports() or self.locks():
            raise Failure(f"still open or locked: {self.open_ports()} {self.locks()}")

    def expect_loss(self):
        """Expects one box about a pulled adapter, answers it, and expects the controller to be disconnected."""
        self.expect_box(PULLED)
        self.answer_box()
        self.expect_disconnected()
        if self.boxes():
            raise Failure(f"more boxes: {self.boxes()}")
