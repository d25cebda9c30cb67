#!/usr/bin/python3
"""Usage: console_session.py WIDTHxHEIGHT KERNEL INITRAMFS FOLDER MEGABYTES

Boots a device that starts Quarn on its console, has it left, crashed and kept from starting, and saves a
picture of each step in FOLDER; for scripts/try-console."""

import pathlib
import re
import sys

sys.dont_write_bytecode = True

from device import BOOT_DEADLINE, Device, Failure, try_on  # noqa: E402

UNIT = "quarn-console.service"
LOGIN = "getty@tty1.service"
# systemd takes four starts in two minutes.
STARTS = 4
# Of the user, in the shell after the login.
NAME = PASSWORD = "user"


class Console(Device):
    """A device with a shell on its serial line."""

    asked = 0

    def run(self, command):
        """What a command says, run by root on the device."""
        self.asked += 1
        number = self.asked
        self.type(f"{{ {command}; }} 2>&1 | sed 's/^/{number}| /'; echo {number}'|.'\n")
        self.wait_for_line(rf"^{number}\|\.")
        return "\n".join(line.partition("| ")[2] for line in self.lines()
                         if line.startswith(f"{number}| "))

    def is_active(self, unit):
        return self.run(f"systemctl is-active {unit}") == "active"

    def has_listed(self):
        """Whether the program that runs has listed both tabs."""
        return int(self.run(f"journalctl -o cat _PID=$(systemctl show -P MainPID {UNIT}) "
                            "| grep -c '^fb::set path'")) >= 2

    def wait_for_program(self, name):
        self.wait(lambda: not self.is_active(UNIT) or self.has_listed(), "the listings")
        if not self.is_active(UNIT):
            raise Failure(f"{UNIT} does not run")
        self.wait(lambda: not self.shows_box(), "the end of the start")
        if self.is_active(LOGIN):
            raise Failure(f"{LOGIN} runs beside the program")
        return self.picture(name)

    def wait_for_login(self, name):
        """Its cursor blinks, so it is shown as it is."""
        self.wait(lambda: self.is_active(LOGIN), LOGIN)
        if self.is_active(UNIT):
            raise Failure(f"{UNIT} runs beside the login")
        self.wait(lambda: not self.shows_program(), f"{name} on the display")
        self.keep(name)

    def shows_program(self):
        """The program has colours, the console has few."""
        pixels = re.match(rb"P6\n\d+ \d+\n\d+\n(.*)", self.screen(), re.DOTALL)[1]
        return len({pixels[place:place + 3] for place in range(0, len(pixels), 3)}) > 32

    def shows_text(self, text):
        """Whether it stands on the first console."""
        return text in self.run("echo $(cat /dev/vcs1)")

    def crash(self):
        """Ends the program as a crash does; gives its number."""
        process = self.run(f"systemctl show -P MainPID {UNIT}")
        self.run(f"kill -SEGV {process}")
        return process

    def write(self, text):
        for letter in text:
            self.press(letter)
        self.press("ret")

    def tell(self, *commands):
        for command in commands:
            print(f"  {command}:", *self.run(command).splitlines(), sep="\n    ", flush=True)

    def explain(self):
        self.tell(f"systemctl status --no-pager -l {UNIT} {LOGIN}", "journalctl -o cat -b | tail -n 60")


def starts_with_the_device(device):
    device.wait_for_line("trial: ready", deadline=BOOT_DEADLINE)
    listing = device.wait_for_program("started")
    device.tell(f"systemctl show -P ActiveState -P SubState -P User {UNIT}", "ps -o user:9,tty,args -C quarn",
                "loginctl --no-legend list-sessions", "loginctl show-session -p Type -p TTY -p Seat -p State "
                "$(loginctl --no-legend list-sessions | awk '/user/ { print $1; exit }')",
                "systemctl is-active getty@tty1", "systemctl --failed --no-legend")
    # Below what the system puts into a home.
    for _ in range(3):
        device.press("down")
    down = device.picture("down", listing)
    device.press("ret")
    device.wait(lambda: "/home/user/Documents" in device.run(f"journalctl -o cat -t quarn | tail -n 3"),
                "the folder")
    device.picture("folder", down)


def set_in_unit(device, name, text):
    """Adds lines to the unit until the device goes off."""
    folder = f"/run/systemd/system/{UNIT}.d"
    device.run(f"mkdir -p {folder}; printf '{text}' >{folder}/{name}.conf; systemctl daemon-reload")


def start_anew(device):
    device.run(f"systemctl stop {UNIT}; systemctl reset-failed {UNIT}; systemctl start {UNIT}")


def takes_keys_by_any_means(device):
    """Without a variable libinput reads the keyboard, as before; then the toolkit itself does, and nobody."""
    inputs = f"ls -l /proc/$(systemctl show -P MainPID {UNIT})/fd | grep -o '/dev/input/.*'"
    device.tell(inputs)
    set_in_unit(device, "keys", "[Service]\\nEnvironment=QT_QPA_FB_NO_LIBINPUT=1\\n")
    start_anew(device)
    listing = device.wait_for_program("without-libinput")
    device.press("down")
    device.picture("without-libinput-down", listing)
    device.tell(inputs)
    set_in_unit(device, "keys", "[Service]\\nEnvironment=QT_QPA_FB_DISABLE_INPUT=1\\n")
    start_anew(device)
    device.wait_for_program("without-input")
    if device.run(inputs):
        raise Failure("QT_QPA_FB_DISABLE_INPUT leaves keys")
    set_in_unit(device, "keys", "")
    start_anew(device)
    return device.wait_for_program("with-libinput")


def gives_the_login_when_left(device, before):
    device.press("f1", "f2")
    device.picture("question", before)
    device.press("f9")
    device.wait_for_login("login")
    device.write(NAME)
    device.wait(lambda: device.shows_text("Password:"), "the question for the password")
    device.write(PASSWORD)
    device.wait(lambda: "bash" in device.run("ps -o comm= -t tty1"), "the user's shell")
    device.wait(lambda: device.shows_text("user@device"), "the shell on the display")
    device.keep("shell")
    device.tell("ps -o user:9,tty,args -t tty1", "ls /run/user/1000/qcop",
                f"systemctl show -P Result -P NRestarts {UNIT}")


def comes_back_after_a_crash(device):
    device.run(f"systemctl reset-failed {UNIT}; systemctl start {UNIT}")
    device.wait_for_program("started-again")
    login = f"systemctl show -P ActiveEnterTimestampMonotonic {LOGIN}"
    shown = device.run(login)
    process = device.crash()
    device.wait(lambda: device.run(f"systemctl show -P MainPID {UNIT}") not in ("0", process), "the restart")
    device.wait_for_program("after-a-crash")
    if device.run(login) != shown:
        raise Failure("the login was shown between the crash and the restart")
    device.tell(f"systemctl show -P Result -P NRestarts {UNIT}")


def gives_the_login_after_crashes(device):
    """The program that runs was started twice in the last two minutes, or the emulator is slow: it is counted
    from here."""
    device.run(f"systemctl reset-failed {UNIT}")
    set_in_unit(device, "slow", "[Unit]\\nStartLimitIntervalSec=1h\\n")
    for _ in range(STARTS + 1):
        process = device.crash()
        device.wait(lambda: device.run(f"systemctl show -P MainPID {UNIT}") not in ("0", process)  # noqa: B023
                    or device.is_active(LOGIN), "the restart or the login")
        if device.is_active(LOGIN):
            break
    device.wait_for_login("login-after-crashes")
    device.tell(f"systemctl show -P Result -P NRestarts {UNIT}", "systemctl --failed --no-legend")


def gives_the_login_when_it_cannot_start(device):
    for what, broken, mended in (
            ("no-data", "mv /usr/share/quarn/res /root/", "mv /root/res /usr/share/quarn/"),
            ("no-program", "mv /usr/bin/quarn /root/", "mv /root/quarn /usr/bin/"),
            ("no-such-user", f"sed -i s/^User=.*/User=nobody-here/ /etc/systemd/system/{UNIT}; systemctl daemon-reload",
             f"sed -i s/^User=.*/User=user/ /etc/systemd/system/{UNIT}; systemctl daemon-reload")):
        device.run(f"{broken}; systemctl reset-failed {UNIT}; systemctl stop {LOGIN}; systemctl start {UNIT}")
        device.wait_for_login(what)
        device.tell(f"systemctl show -P Result -P NRestarts {UNIT}", "journalctl -o cat -b | grep quarn | tail -n 8")
        device.run(mended)


def session(device):
    starts_with_the_device(device)
    gives_the_login_when_left(device, takes_keys_by_any_means(device))
    comes_back_after_a_crash(device)
    gives_the_login_after_crashes(device)
    gives_the_login_when_it_cannot_start(device)


def main():
    size, kernel, system, folder, memory = sys.argv[1:]
    # What is said goes to the serial line, and the console of the display is as a user finds it.
    device = Console(size, kernel, system, pathlib.Path(folder), memory,
                     options="systemd.getty_auto=0 systemd.show_status=0 vt.global_cursor_default=0")
    return try_on(device, session, "try-console", lines=40)


if __name__ == "__main__":
    sys.exit(main())
