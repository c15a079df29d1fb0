"""For the trials in the emulated computer: operates the program's windows through the accessibility interface, pulls
and plugs in the adapter, and reads the state of a port from its driver."""
import fcntl
import functools
import grp
import json
import os
import re
import shutil
import struct
import subprocess
import sys
import termios
import time
from pathlib import Path

import gi
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

trial = sys.argv[1]
root = Path("/mnt")
work = root / "build/adapter"
home = Path("/tmp", trial)  # the program's folder
nobody = 65534
dialout = grp.getgrnam("dialout").gr_gid

Atspi.init()
del os.environ["AT_SPI_BUS_ADDRESS"]  # with it the program would not register
Atspi.set_timeout(30000, 30000)  # milliseconds; the program does not answer while it waits for the unit
desktop = Atspi.get_desktop(0)
desktop.set_cache_mask(Atspi.Cache.NONE)


def children(thing):
    return [thing.get_child_at_index(place) for place in range(thing.get_child_count())]


# The role does not change and is cached, because the program answers only every 20 ms during a transfer.
role = functools.cache(Atspi.Accessible.get_role_name)


@functools.cache
def parts(window):
    return [part for child in children(window) for part in (child, *parts(child))]


def has(thing, state):
    return thing.get_state_set().contains(state)


def find(window, wanted, title=None):
    return next(part for part in parts(window) if role(part) == wanted and title in (None, part.get_name()))


def kindOf(window):
    roles = [role(window), *map(role, parts(window))]
    kind = next((kind for kind in ("alert", "progress bar", "tree") if kind in roles), None)
    if kind:
        return kind
    if " ver" in window.get_name():
        return "main" if has(window, Atspi.StateType.ENABLED) else None
    return "choice" if has(find(window, "push button", "Set"), Atspi.StateType.SHOWING) else None


def front():
    """The kind of the window in front and the window; empty if there is none that can be used."""
    try:
        shown = {kindOf(window): window for application in children(desktop) if application.get_process_id() == program.pid
                 for window in children(application) if has(window, Atspi.StateType.SHOWING)}
    except (GLib.Error, StopIteration, AttributeError, TypeError):  # busy, or a window has closed meanwhile
        return {}
    kind = next((kind for kind in ("alert", "tree", "progress bar", "main", "choice") if kind in shown), None)
    return {kind: shown[kind]} if kind else {}


def until(what, condition, seconds=300):
    end = time.monotonic() + seconds
    while not (found := condition()):
        if time.monotonic() > end:
            raise TimeoutError(f"waiting for {what} took too long")
        time.sleep(0.2)  # reading the windows is slow here
    return found


def see(kind):
    return until(f"the window \"{kind}\"", lambda: front().get(kind))


def press(window, title):
    find(window, "push button", title).do_action(0)


def chooseFile(button, name, answer):
    press(see("main"), button)
    dialog = see("tree")
    find(dialog, "text").set_text_contents(str(home / name))
    press(dialog, answer)


def barIsAt(percent):
    window = front().get("progress bar")
    bar = window and find(window, "progress bar")
    return bar and bar.get_current_value() * 100 >= percent * bar.get_maximum_value()


def answerBoxes(last, back="main", shot=None):
    """Answers boxes with OK until one has ended with the text `last` and the window `back` is in front. Returns the
    texts. Saves a picture of the first box that names a port."""
    texts, answered = [], None

    def done():
        nonlocal answered, shot
        shown = front()
        window = shown.get("alert")
        if window and window != answered:
            labels = [part.get_name() for part in parts(window) if role(part) == "label"]
            texts.append(" ".join(" ".join(labels).split()))
            if shot and "COM" in texts[-1]:
                picture(shot)
                shot = None
            press(window, "OK")
            answered = window
        return back in shown and texts and texts[-1].endswith(last)

    try:
        until("the last box", done)
    except TimeoutError as error:
        texts.append(str(error))
    return " | ".join(texts)


def picture(name):
    """Of the whole screen, with the windows of this operator's program above all others."""
    subprocess.run(f"for window in $(xdotool search --onlyvisible --pid {program.pid}); do xdotool windowraise $window; done;"
                   f" import -window root {root}/screenshots/adapter/{name}.png", shell=True, check=False)


def start(file, *arguments, settings="", **options):
    """Starts it in a new folder as a user who may use serial ports."""
    shutil.rmtree(home, ignore_errors=True)
    home.mkdir(0o700)
    for file in (root / "build" / file, root / "packaging/TYPE.INI", work / "sample.bin"):
        shutil.copy(file, home)
    (home / "Setting.INI").write_text(settings)
    os.chown(home, nobody, nobody)
    return subprocess.Popen([home / Path(file).name, *arguments], cwd=home, user=nobody, group=nobody,
                            extra_groups=[dialout], env={**os.environ, "HOME": home, "XDG_RUNTIME_DIR": home}, **options)


def startProgram(preset, number):
    global program
    program = start(f"{preset}/app/tarnbeacon", settings=f"[IFU]\nCOM={number}\n")


def runWithoutScreen(device, *arguments, atPercent=101, action=None):
    """Performs the action as soon as the program has written so much. Returns its exit code and the texts of its messages
    and its result."""
    texts = []
    with start("release/cli/tarnbeacon-cli", "--json", "--port", device, *arguments, stdout=subprocess.PIPE,
               text=True) as program:
        for event in map(json.loads, program.stdout):
            if event.get("percent", 0) >= atPercent and action:
                action()
                action = None
            if event.get("text"):
                texts.append(" ".join(event["text"].split()))
    return f"{program.returncode}: " + " | ".join(texts)


def endProgram():
    press(see("main"), "End")
    program.wait(60)


def killProgram():
    program.kill()
    program.wait()


def isHeld(device):
    """Whether a program has the device open, even if it is gone."""
    return subprocess.run(f"ls -l /proc/[0-9]*/fd 2>/dev/null | grep -q {device}", shell=True).returncode == 0


def sendToEmulator(command):
    with open(work / "monitor", "a") as monitor:
        monitor.write(command + "\n")


def pull(device, held=False):
    sendToEmulator("device_del adapter")
    until("the device to go", lambda: not os.path.exists(device))
    until("the program to let go of it", lambda: held or not isHeld(device), 10)


def plug(unit, device):
    def present():
        # Refused until the emulator has finished the removal, and again once the adapter is there.
        sendToEmulator(f"device_add usb-serial,chardev={unit},id=adapter,bus=xhci.0,always-plugged=on")
        time.sleep(1)
        return os.path.exists(device)
    until(device, present)
    admit(device)


def admit(device):
    """Does the work of udev, which does not run here. The latency timer of an emulated adapter starts at 0."""
    os.chown(device, 0, dialout)
    os.chmod(device, 0o660)
    if "USB" in device:
        until("the latency timer", latencyTimer(device).exists)
        latencyTimer(device).write_text("16")


def latencyTimer(device):
    return Path("/sys/bus/usb-serial/devices", Path(device).name, "latency_timer")


def openDevice(device):
    return os.open(device, os.O_RDWR | os.O_NONBLOCK | os.O_NOCTTY)


def request(device, number, size):
    port = openDevice(device)
    try:
        return fcntl.ioctl(port, number, bytes(size))
    finally:
        os.close(port)


def latency(device):
    flags, = struct.unpack_from("i", request(device, termios.TIOCGSERIAL, 72), 16)
    timer = f", timer {latencyTimer(device).read_text().strip()} ms" if "USB" in device else ""
    return ("on" if flags >> 13 & 1 else "off") + timer


def lineState(device):
    lines, = struct.unpack("i", request(device, termios.TIOCMGET, 4))
    said = subprocess.run(["stty", "-F", device, "-a"], capture_output=True, text=True, check=True).stdout
    words = r"\b38400\b|\bcs8\b|-?\b(?:parenb|cstopb|crtscts|icanon|echo|isig|ixon|ixoff|opost)\b"
    on = [name for name, bit in (("DTR", termios.TIOCM_DTR), ("RTS", termios.TIOCM_RTS)) if lines & bit]
    return " ".join(re.findall(words, said) + on)


def expect(driver, tried, expected, seen, pattern=None):
    """Adds a row to the table. `seen` must be equal to `expected`, or match the pattern if there is one."""
    fits = re.fullmatch(pattern, seen) if pattern else seen == expected
    with open(work / "table", "a") as table:
        table.write("\t".join(["ok" if fits else "NO", driver, tried, expected, seen]) + "\n")
