"""The trials in the emulated computer: "serial" the 16550A, "usb" an adapter that is pulled and plugged in again, and
"paced" another adapter at the speed of the line, "cli" the part of "usb" without a screen. scripts/tryAdapter names the
units."""
import traceback
from contextlib import contextmanager

from operate import *

usbDevice = "/dev/ttyUSB1"
notEffective = r"現在の通信ポート\(COM{}\)は有効ではありません"
doesNotOpen = r"通信ポートが開けません。通信ポートを使用するアプリケーションを終了して再度起動して下さい。"
timeOut = r"It is a receiving timeout error\."
wrongSetup = r"An error is in a setup of a COM port\.Please check\."
question = r"I could not check that it communicate[^|]*"
lostText = rf"Application error\. RES : COM6 \({usbDevice}\): the device has gone away"
# A packet that cannot be written has its own box, and the report after it has no detail.
packetLostText = rf"COM6 \({usbDevice}\): the device has gone away \| Application error\. RES :"


def startAtClosedPort(driver, tried, number, box):
    startProgram("release", number)
    expect(driver, tried, "a box says so, then port choice", answerBoxes("Please check.", "choice"),
           rf"{box} \| {timeOut} \| {wrongSetup}")


@contextmanager
def heldPort(device):
    holder = openDevice(device)
    fcntl.ioctl(holder, termios.TIOCEXCL)
    yield
    os.close(holder)


def tryPort(driver, device, off, on):
    """From port choice to the main window with a file."""
    def refused(tried):
        press(see("choice"), "Set")
        expect(driver, tried, "a box says so", answerBoxes("再度起動して下さい。", "choice"), doesNotOpen)
    expect(driver, "low latency before", off, latency(device))
    with heldPort(device):
        refused("a port that another program holds")
    os.chmod(device, 0o600)
    refused("a port without permission")
    os.chmod(device, 0o660)
    press(see("choice"), "Set")
    see("main")
    expect(driver, "low latency while the port is open", on, latency(device))
    expect(driver, "line settings and modem lines",
           "38400 -parenb cs8 -cstopb -crtscts -ixon -ixoff -opost -isig -icanon -echo DTR RTS", lineState(device))
    load()


def load():
    chooseFile("Loading file", "sample.bin", "Open")
    until("the file", lambda: has(find(see("main"), "push button", "Start upgrade"), Atspi.StateType.ENABLED))


def startWrite():
    press(see("main"), "Start upgrade")


def upgrade(driver, tried, unit, afterPull=False):
    """After a pull the unit may still be in its transfer mode: then the program asks whether to continue. If the unit
    refuses the start, the next press works."""
    image = work / f"{unit}.bin"
    image.unlink(missing_ok=True)
    startWrite()
    ends = ("Succeed", "Failed")
    boxes = answerBoxes(ends)
    if afterPull and boxes.endswith("Failed"):
        startWrite()
        boxes += " | " + answerBoxes(ends)
    same = image.exists() and image.read_bytes() == (home / "sample.bin").read_bytes()
    request = rf"({question} \| ((Application error\. RES : \| )?Failed \| )?)?" if afterPull else ""
    expect(driver, tried, "Succeed; the unit holds the file" + (", at the second press at the latest" * afterPull),
           f"{boxes}; the unit {'holds' if same else 'does not hold'} the file",
           f"{request}Succeed; the unit holds the file")


def end(driver, device, off):
    endProgram()
    expect(driver, "low latency after the end", off, latency(device))


def paced(driver, device, number, unit):
    admit(device)
    startProgram("release", number)
    load()
    upgrade(driver, "an upgrade at the speed of the line", unit)
    picture(f"{driver}-upgraded")
    end(driver, device, "off, timer 16 ms" if "USB" in device else "off")


def serial():
    driver, device = "16550A", "/dev/ttyS0"
    for port in (device, "/dev/ttyS3"):
        admit(port)
    startAtClosedPort(driver, "a port without hardware, at the start", 4, notEffective.format(4))
    press(see("choice"), "Cancel")
    with heldPort(device):
        startAtClosedPort(driver, "a port that another program holds, at the start", 1, doesNotOpen)
    tryPort(driver, device, "off", "on")
    upgrade(driver, "an upgrade", "serial")
    end(driver, device, "off")
    paced(driver, "/dev/ttyS1", 2, "serialPaced")


def failedWrite(driver, tried):
    """A command without an answer shows the box of the time limit first."""
    expect(driver, tried, "the device has gone away, with port and device; Failed",
           answerBoxes("Failed", shot=tried.replace(" ", "-")),
           rf"({timeOut} \| {question} \| )?({lostText}|{packetLostText})( \| ({timeOut}|{lostText}))* \| Failed")


def isAtBlock(number):
    journal = work / f"block{number}.journal"
    return journal.exists() and f"blocks: {number} accepted" in journal.read_text()


def usb():
    driver = "ftdi_sio"
    startAtClosedPort(driver, "a missing port, at the start", 6, notEffective.format(6))
    plug("usb", usbDevice)
    press(see("choice"), "Set")
    answerBoxes("有効ではありません", "choice")  # the unit refuses; the port stays open
    pull(usbDevice)
    press(see("choice"), "Set")
    expect(driver, "a pull at port choice, then \"Set\"", "the port is not effective",
           answerBoxes("有効ではありません", "choice"), notEffective.format(6))
    plug("usb", usbDevice)
    tryPort(driver, usbDevice, "off, timer 16 ms", "on, timer 1 ms")
    upgrade(driver, "an upgrade", "usb")

    pull(usbDevice)
    startWrite()
    failedWrite(driver, "a pull while idle")
    plug("usb", usbDevice)
    upgrade(driver, "plugged in again: the next upgrade", "usb")
    # At the first three the unit does not answer, so the program waits for it.
    for tried, unit, moment in (("the third block", "block3", lambda: isAtBlock(3)),
                                ("the middle block", "block960", lambda: isAtBlock(960)),
                                ("the last block", "block1920", lambda: isAtBlock(1920)),
                                ("full speed", "usb", lambda: barIsAt(30))):
        pull(usbDevice)
        plug(unit, usbDevice)
        startWrite()
        until(tried, moment)
        pull(usbDevice)
        failedWrite(driver, f"a pull at {tried}")
        plug(unit, usbDevice)
        upgrade(driver, f"plugged in again after {tried}: the next upgrade", unit, afterPull=True)
    for _ in range(3):
        pull(usbDevice)
        plug("usb", usbDevice)
    upgrade(driver, "plugged in and out three times: the next upgrade", "usb")

    holder = openDevice(usbDevice)  # as long as it is open, the adapter gets another name
    pull(usbDevice, held=True)
    plug("usb", "/dev/ttyUSB2")
    startWrite()
    failedWrite(driver, "plugged in again under another name")
    os.close(holder)
    pull("/dev/ttyUSB2")
    plug("usb", usbDevice)
    upgrade(driver, "under its own name again: the next upgrade", "usb")
    end(driver, usbDevice, "off, timer 16 ms")
    service(driver)
    killProgram()
    withoutScreen()


def withoutScreen():
    driver = "ftdi_sio"
    written = r"0: Succeed \| QT-MVR: version .* was replaced by .*\.; the unit holds the file"

    def upgrade():
        image = work / "cli.bin"
        image.unlink(missing_ok=True)
        seen = runWithoutScreen(usbDevice, "upgrade", "sample.bin")
        same = image.exists() and image.read_bytes() == (home / "sample.bin").read_bytes()
        return f"{seen}; the unit {'holds' if same else 'does not hold'} the file"
    pull(usbDevice)
    seen = runWithoutScreen(usbDevice, "identify")
    expect(driver, "without a screen: a missing port", "exit code 3 and the cause", seen,
           rf"3: .*The port {usbDevice} cannot be used: No such file or directory\..*")
    plug("cli", usbDevice)
    expect(driver, "without a screen: an upgrade", "exit code 0; the unit holds the file", upgrade(), written)
    seen = runWithoutScreen(usbDevice, "upgrade", "sample.bin", atPercent=30, action=lambda: pull(usbDevice, held=True))
    expect(driver, "without a screen: a pull in a write", "exit code 1; the port and the cause", seen,
           rf"1: Application error\. RES : {usbDevice}: the device has gone away \| .*The transfer failed\.")
    plug("cli", usbDevice)
    waits = []  # the unit is in its transfer mode until it has waited long enough for a block

    def upgraded():
        waits.append(upgrade())
        return waits[-1].startswith("0:")
    until("the unit", upgraded)
    seen = " || ".join(dict.fromkeys(waits))
    expect(driver, "without a screen: plugged in again", "exit code 4 until the unit is ready; then an upgrade", seen,
           rf"(4: [^|]*( \| [^|]*)*; the unit does not hold the file \|\| )*{written}")


def service(driver):
    pull(usbDevice)
    plug("silent", usbDevice)
    startProgram("service", 6)
    until("the program to open the port", lambda: isHeld(usbDevice))
    time.sleep(1)
    pull(usbDevice)
    expect(driver, "a pull in the start's wait", "the box of the time limit, then port choice",
           answerBoxes("Please check.", "choice"), rf"{timeOut} \| {wrongSetup}")
    plug("silent", usbDevice)
    press(see("choice"), "Set")
    read = ("Save the present firmware", "saved.bin", "Save")
    chooseFile(*read)
    until("the bar", lambda: barIsAt(1))
    pull(usbDevice)
    boxes = answerBoxes("Failed", shot="a-pull-in-a-read")
    saved = "a file" if (home / "saved.bin").exists() else "no file"
    expect(driver, "a pull in a read", "the device has gone away, with port and device; Failed; no file",
           f"{boxes}; {saved}", rf"{lostText}( \| ({timeOut}|{lostText}))* \| Failed; no file")
    plug("silent", usbDevice)
    chooseFile(*read)
    until("the bar of the next read", lambda: barIsAt(1))  # a whole read takes three minutes
    expect(driver, "plugged in again after a read: the next read", "the bar moves", "the bar moves")


try:
    {"serial": serial, "usb": usb, "cli": withoutScreen, "paced": lambda: paced("ftdi_sio", "/dev/ttyUSB0", 5, "usbPaced")}[trial]()
except Exception as error:
    traceback.print_exc()
    expect(trial, "all of it", "no failure of the trial itself", f"{error!r}; see the last picture and the logs")
    picture(f"{trial}-broke-off")
