"""What a user with an adapter does and sees. Each story is checked inside the virtual machine and at the camera.

Started by tests/system/machine/run, which says how.
"""

import contextlib
import pathlib
import sys
import threading
import time

from adapters import Camera, Ch340, FtdiOfQemu, FtdiX
from controller import PROFILE, PULLED, SETTINGS, Controller
from machine import Failure, Machine, wait_for

UP, STOP = "81 01 06 01 05 05 03 01 FF", "81 01 06 01 05 05 03 03 FF"
HOME, WIDEST = "81 01 06 04 FF", "81 01 04 07 37 FF"
ZOOM_STOP = "81 01 04 07 00 FF"
RECALL, STORE = "81 01 04 3F 02 {:02X} FF", "81 01 04 3F 01 {:02X} FF"
REPLY = bytes.fromhex("9041ff9051ff")
NO_PORT = "No such file or directory"
BAUD_RATES = (1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200)
ODD_BAUD_RATE = 14400
# How far a chip may be from the rate that was asked for.
BAUD_TOLERANCE = 0.02
MANY = 20


class Desk:
    """The machine, and what a story has plugged in and started, which ends with the story."""

    def __init__(self, machine, camera_program):
        self.machine = machine
        self.camera_program = camera_program
        self.ending = contextlib.ExitStack()

    def adapter(self, kind=FtdiOfQemu, port="ttyUSB0"):
        camera = Camera(self.camera_program)
        self.ending.callback(camera.close)
        adapter = kind(self.machine, camera)
        self.ending.callback(lambda: adapter.is_in() and adapter.pull())
        self.plug(adapter, port)
        return adapter

    def plug(self, adapter, port="ttyUSB0"):
        adapter.plug()
        wait_for(lambda: self.machine.try_run(f"test -c /dev/{port} && udevadm settle"), f"/dev/{port}")

    def controller(self, port="ttyUSB0", **settings):
        controller = Controller(self.machine, port, **settings)
        self.ending.callback(controller.end)
        return controller

    def connected(self, port="ttyUSB0", **settings):
        controller = self.controller(port, **settings)
        controller.expect_connected("ttyUSB0", setting=port)
        return controller


def expect(condition, what):
    if not condition:
        raise Failure(what)


def expect_frames(adapter, *frames):
    """Expects the camera to have received these frames, and no other, since the last call."""
    camera = adapter.camera
    wait_for(lambda: len(camera.frames) >= len(frames), f"{frames} at the camera, and not {camera.frames}")
    expect(camera.frames == list(frames), f"the camera received {camera.frames}, and not {list(frames)}")
    camera.frames.clear()


def expect_steered(controller, adapter):
    adapter.camera.frames.clear()
    controller.press("Move Up")
    expect_frames(adapter, UP)
    controller.release()
    expect_frames(adapter, STOP)


def expect_reconnected(desk, controller, adapter):
    desk.plug(adapter)
    controller.click("Connect")
    controller.expect_connected("ttyUSB0")
    expect_steered(controller, adapter)


def listed_and_connected_by_name(desk):
    adapter = desk.adapter()
    controller = desk.controller("COM9")
    controller.expect_box(NO_PORT)
    controller.answer_box()
    controller.click("Settings")
    wait_for(lambda: "ttyUSB0" in [part["name"] for part in controller.window(SETTINGS)], "the port in the list")
    controller.choose("ttyUSB0", "AUTO")
    wait_for(lambda: "comport=ttyUSB0" in desk.machine.run(f"cat {PROFILE}/setting.ini"), "the port is stored")
    controller.click("Connect")
    controller.expect_connected("ttyUSB0")
    expect_steered(controller, adapter)


def every_button_reaches_the_camera(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    for button, down, up in (("Move Up", UP, STOP), ("Move Down", UP.replace("03 01 FF", "03 02 FF"), STOP),
                             ("Move Left", UP.replace("03 01 FF", "01 03 FF"), STOP),
                             ("Move Right", UP.replace("03 01 FF", "02 03 FF"), STOP),
                             ("Zoom In", "81 01 04 07 25 FF", ZOOM_STOP), ("Zoom Out", "81 01 04 07 35 FF", ZOOM_STOP)):
        controller.press(button)
        expect_frames(adapter, down)
        controller.release()
        expect_frames(adapter, up)
    for preset in range(1, 10):
        controller.click(f"Preset {preset}")
        expect_frames(adapter, RECALL.format(preset))
    controller.type("42", "Preset Number Input")
    controller.click("CALL")
    expect_frames(adapter, RECALL.format(42))
    controller.click("SET")
    expect_frames(adapter, STORE.format(42))
    controller.expect_box("Preset No42 is set.")
    controller.answer_box()
    controller.click("Move Home")
    expect_frames(adapter, HOME, WIDEST)
    wait_for(lambda: "-90-51-ff-3" in controller.log()[-4:], "the last completion in the log")
    log = controller.log()
    expect(log.count("Home") == 1 and "-90-41-ff-3" in log, f"the log says {log}")


def auto_leaves_other_adapters_alone(desk):
    desk.adapter(FtdiOfQemu)
    controller = desk.controller("AUTO")
    controller.expect_box(NO_PORT)
    controller.answer_box()
    expect(not controller.open_ports(), "the controller has a port open")


def auto_takes_an_ft_x(desk):
    auto_takes(desk, FtdiX, "ftdi_sio")


def auto_takes_a_ch340(desk):
    auto_takes(desk, Ch340, "ch341")


def auto_takes(desk, kind, driver):
    adapter = desk.adapter(kind)
    expect(desk.machine.try_run(f"readlink /sys/class/tty/ttyUSB0/device/driver/module | grep -q {driver}"),
           f"the port is not driven by {driver}")
    controller = desk.connected("AUTO")
    expect(controller.log()[0] == "ttyUSB0", f"the log begins with {controller.log()[0]}")
    expect_steered(controller, adapter)
    wait_for(lambda: "-90-51-ff-3" in controller.log(), "a reply in the log")
    adapter.pull()
    controller.expect_loss()


def every_baud_rate_reaches_an_ft_x(desk):
    every_baud_rate(desk, FtdiX)


def every_baud_rate_reaches_a_ch340(desk):
    every_baud_rate(desk, Ch340)


def every_baud_rate(desk, kind):
    adapter = desk.adapter(kind)
    for baud in (*BAUD_RATES, ODD_BAUD_RATE):
        controller = desk.controller(baud=baud)
        wait_for(lambda: abs(adapter.baud_rate - baud) < baud * BAUD_TOLERANCE,
                 f"{baud} baud at the chip, and not {adapter.baud_rate}")
        controller.end()


def pulled_while_idle(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    adapter.pull()
    controller.expect_loss()
    expect_reconnected(desk, controller, adapter)


def pulled_while_up_is_held(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    controller.press("Move Up")
    expect_frames(adapter, UP)
    adapter.pull()
    controller.expect_box(PULLED)
    controller.release()
    controller.expect_loss()
    expect_reconnected(desk, controller, adapter)


def pulled_while_replies_stream(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    streaming = threading.Event()

    def stream():
        while not streaming.wait(0.005):
            adapter.say(REPLY)

    thread = threading.Thread(target=stream, daemon=True)
    thread.start()
    wait_for(lambda: len(controller.log()) > 100, "replies in the log")
    adapter.pull()
    streaming.set()
    thread.join()
    controller.expect_loss()
    expect_reconnected(desk, controller, adapter)


def pulled_with_the_settings_open(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    controller.click("Settings")
    wait_for(lambda: controller.window(SETTINGS), "the settings")
    adapter.pull()
    controller.expect_loss()


def pulled_in_the_second_after_home(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    controller.click("Move Home")
    expect_frames(adapter, HOME)
    adapter.pull()
    controller.expect_loss()
    expect_reconnected(desk, controller, adapter)


def pulled_under_another_box(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    controller.type("5", "Preset Number Input")
    controller.click("SET")
    expect_frames(adapter, STORE.format(5))
    wait_for(controller.boxes, "the box about the preset")
    adapter.pull()
    wait_for(lambda: len(controller.boxes()) > 1, "a second box")
    controller.expect_calm()
    expect(sorted(controller.boxes()) == [PULLED, "Preset No5 is set."], f"the boxes say {controller.boxes()}")
    controller.answer_box()
    controller.answer_box()
    controller.expect_disconnected()
    expect(not controller.boxes(), "there are more boxes")


def pulled_during_the_start_up_preset(desk):
    adapter = desk.adapter()
    controller = desk.controller(isstartuppreset="true", startuppreset=3)
    expect_frames(adapter, RECALL.format(3))
    adapter.pull()
    controller.expect_loss()


def pulled_and_plugged_in_many_times(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    before = controller.descriptors()
    for _ in range(MANY):
        adapter.pull()
        wait_for(controller.boxes, "a box")
        expect(controller.boxes() == [PULLED], f"the boxes say {controller.boxes()}")
        controller.answer_box()
        controller.expect_disconnected()
        desk.plug(adapter)
        controller.click("Connect")
        controller.expect_connected("ttyUSB0")
    expect_steered(controller, adapter)
    expect(controller.descriptors() == before, f"{controller.descriptors()} open files, and {before} before")


def back_within_the_same_second(desk):
    adapter = desk.adapter(FtdiX)
    controller = desk.connected("AUTO")
    start = time.monotonic()
    adapter.pull()
    adapter.plug()
    expect(time.monotonic() - start < 1, "QEMU took more than a second")
    controller.expect_loss()
    wait_for(lambda: desk.machine.try_run("ls /dev/ttyUSB* && udevadm settle"), "the port")
    controller.click("Connect")
    controller.expect_connected(desk.machine.run("basename /dev/ttyUSB*"), setting="AUTO")
    expect_steered(controller, adapter)


def back_under_another_name(desk):
    adapter = desk.adapter(FtdiX)
    controller = desk.connected("AUTO")
    adapter.pull()
    controller.expect_loss()
    desk.adapter(FtdiOfQemu)
    desk.plug(adapter, "ttyUSB1")
    controller.click("Connect")
    controller.expect_connected("ttyUSB1", setting="AUTO")
    expect_steered(controller, adapter)


def another_adapter_pulled(desk):
    adapter = desk.adapter()
    other = desk.adapter(port="ttyUSB1")
    controller = desk.connected()
    other.pull()
    wait_for(lambda: desk.machine.try_run("test ! -e /dev/ttyUSB1"), "the other port gone")
    expect_steered(controller, adapter)
    controller.expect_calm()
    controller.expect_connected("ttyUSB0")
    expect(not controller.boxes(), f"the boxes say {controller.boxes()}")


def break_in_a_reply(desk):
    adapter = desk.adapter()
    controller = desk.connected()
    adapter.say(REPLY[:2])
    wait_for(lambda: controller.log() == ["9041"], "the first bytes")
    adapter.send_break()
    adapter.say(REPLY)
    wait_for(lambda: "-90-51-ff-3" in controller.log(), f"the completion in {controller.log()}")
    expect_steered(controller, adapter)
    controller.expect_connected("ttyUSB0")
    expect(not controller.boxes(), f"the boxes say {controller.boxes()}")


def suspended_and_woken(desk):
    adapter = desk.adapter(FtdiX)
    controller = desk.connected("AUTO")
    desk.machine.suspend_and_wake()
    # The kernel removes the adapter and adds it again, under another name: the controller still has the old port open.
    controller.expect_loss()
    port = desk.machine.run("udevadm settle; basename /dev/ttyUSB*")
    controller.click("Connect")
    controller.expect_connected(port, setting="AUTO")
    expect_steered(controller, adapter)


def without_and_with_the_group(desk):
    desk.machine.run("sudo gpasswd --delete user dialout")
    desk.ending.callback(lambda: desk.machine.run("sudo gpasswd --add user dialout"))
    adapter = desk.adapter()
    controller = desk.controller()
    controller.expect_box("Permission denied")
    controller.answer_box()
    controller.end()
    desk.machine.run("sudo gpasswd --add user dialout")
    controller = desk.connected()
    expect_steered(controller, adapter)


def second_controller_on_the_port(desk):
    adapter = desk.adapter()
    first = desk.connected()
    second = desk.controller()
    second.expect_box("Permission error while locking the device")
    second.answer_box()
    expect(not second.open_ports(), "the second controller has the port")
    second.end()
    expect_steered(first, adapter)


STORIES = [
    listed_and_connected_by_name, every_button_reaches_the_camera, auto_leaves_other_adapters_alone,
    auto_takes_an_ft_x, auto_takes_a_ch340, every_baud_rate_reaches_an_ft_x, every_baud_rate_reaches_a_ch340,
    pulled_while_idle, pulled_while_up_is_held, pulled_while_replies_stream, pulled_with_the_settings_open,
    pulled_in_the_second_after_home, pulled_under_another_box, pulled_during_the_start_up_preset,
    pulled_and_plugged_in_many_times, back_within_the_same_second, back_under_another_name, another_adapter_pulled,
    break_in_a_reply, suspended_and_woken, without_and_with_the_group, second_controller_on_the_port,
]


def tell(desk, story):
    """Runs the story. Returns what went wrong, or None."""
    try:
        with desk.ending:
            story(desk)
    except Failure as failure:
        return str(failure)
    return None


def main(folder, *names):
    unknown = set(names) - {story.__name__ for story in STORIES}
    if unknown:
        sys.exit(f"stories: there is no {', '.join(unknown)}; there are {', '.join(s.__name__ for s in STORIES)}")
    folder = pathlib.Path(folder).resolve()
    start = time.monotonic()
    machine = Machine(folder / "guest", folder / "host", folder)
    failures = 0
    try:
        machine.run("sudo dpkg --install /host/vantrel.deb >/dev/null && sudo gpasswd --add user dialout")
        print(f"{'emulated' if machine.is_emulated else 'with KVM'}, ready after {time.monotonic() - start:.0f} s\n")
        for story in STORIES:
            if names and story.__name__ not in names:
                continue
            begin = time.monotonic()
            reason = tell(Desk(machine, folder / "outside/usr/bin/vantrel-camera"), story)
            failures += reason is not None
            print(f"{story.__name__.replace('_', ' '):40} {time.monotonic() - begin:4.0f} s  "
                  f"{'ok' if reason is None else 'FAILED: ' + reason}", flush=True)
    finally:
        machine.close()
    print(f"\n{failures or 'no'} failed, {time.monotonic() - start:.0f} s in all")
    sys.exit(failures > 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
