"""The prompt as its users meet it, through a pseudo-terminal.

    prompt_test.py COMMAND
"""

import os
import pty
import re
import select
import sys
import tempfile
import time

COMMAND = sys.argv[1]
CONTROLS = re.compile(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b[=>]|\r")


class Session:
    def __init__(self, state):
        self.unread = ""
        try:
            self.pid, self.terminal = pty.fork()
        except OSError as problem:
            print(f"skipped, no pseudo-terminal here: {problem}")
            sys.exit(77)
        if self.pid == 0:
            os.environ.update(XDG_STATE_HOME=state, TERM="xterm")
            os.execv(COMMAND, [COMMAND])
        self.expect("> ")

    def send(self, text):
        os.write(self.terminal, text.encode())

    def expect(self, wanted, seconds=90):
        """Waits for a text and returns what came until then."""
        until = time.monotonic() + seconds
        while wanted not in self.unread:
            if not select.select([self.terminal], [], [], max(0.0, until - time.monotonic()))[0]:
                sys.exit(f"expected {wanted!r}, saw {self.unread!r}")
            try:
                data = os.read(self.terminal, 65536).decode(errors="replace")
            except OSError:  # the command has ended
                data = ""
            if not data:
                sys.exit(f"expected {wanted!r} before the end, saw {self.unread!r}")
            self.unread += CONTROLS.sub("", data)
        seen, self.unread = self.unread.split(wanted, 1)
        return seen

    def interrupt(self, statement):
        self.send("print(1000 + 1): " + statement + "\n")
        self.expect("1001")  # it runs
        time.sleep(0.3)
        started = time.monotonic()
        self.send("\x03")
        self.expect("interrupted")
        if time.monotonic() - started > 30:
            sys.exit(f"{statement} took long to stop")
        self.send("20 + 22;\n")
        self.expect("\n42")

    def quit(self):
        self.send("quit\n")
        os.waitpid(self.pid, 0)


with tempfile.TemporaryDirectory() as state:
    first = Session(state)
    first.send("f := proc(x)\n")
    first.send("  x^2 + 1\n")
    first.send("end:\n")
    first.send("f(12);\n")
    first.expect("145")
    first.send("STATS_VexelMovingMed\t(1);\n")  # completed
    first.expect("STATS_VexelMovingMedian_HW(1)")
    first.expect("VexelMovingMedian expects 6 arguments, received: 1")
    first.send("STATS_VexelGamma\t")  # listed
    first.expect("STATS_VexelGammaDeviate_HW")
    first.send("\x15")  # the line is dropped
    first.send("maen([1]); myown(1);\n")
    if "is not defined" in first.expect("maen is not defined; ?mean explains"):
        sys.exit("a hint before its time")
    first.send("sd([1, 2]); help(mean);\n")
    first.expect("sd is not defined; ?std explains std")
    first.expect("?name explains one")
    first.send("1 + 1;\n")
    if "is not defined" in first.expect("\n2"):
        sys.exit("a hint for a name like no other")
    first.send("[seq(i, i = 1 .. 5000)];\n")
    if "4000" in first.expect("]\n"):
        sys.exit("a long list is printed whole")

    # Ctrl-C: in a loop, in a procedure of the library's, in the library's own loop, in exact
    # arithmetic, and at an empty line.
    first.interrupt("while true do 1 end:")
    first.interrupt("STATS_VexelBootstrapStatistic_HW(Array([1.0, 2.0], datatype = float[8]), "
                    "Array(1..0, datatype = float[8]), x -> x[1], 2, 2000000000);")
    first.interrupt("sum(1/i, i = 1 .. 100000000);")
    time.sleep(0.5)  # until the editor listens: at a terminal that does not, Ctrl-C drops what is on its way
    first.send("never run")
    first.expect("never run")
    time.sleep(0.3)
    first.send("\x03")
    first.expect("> ")
    first.send("printf(\"%d\", 5): for i from 1 to 2 do i end; printf(\"%s\", \"x\"); count(none);\n")
    if "NULL" in first.expect("x0"):
        sys.exit("NULL is printed for what has no value")
    first.send("MovingMedia\t(1);\n")
    first.expect("VexelMovingMedian expects 6 arguments")
    first.send("?linear regression\n")
    first.expect("STATS_VexelCovariance_HW")

    # Two prompts at once, one of which loses its terminal, share the history.
    other = Session(state)
    other.send("1000*7;\n")
    other.expect("7000")
    os.close(other.terminal)
    first.send("6*7;\n")
    first.expect("42")
    first.send("exit();\n")
    os.waitpid(first.pid, 0)

    second = Session(state)
    second.send("\x1b[A")
    second.expect("6*7;")
    second.send("\n")
    second.expect("42")
    second.quit()
    with open(os.path.join(state, "vexel", "history")) as file:
        entries = file.read().split("\n")
        if entries.count(r"1000*7;\012") != 1:
            sys.exit(f"the history of a lost terminal is lost, or there twice: {entries}")
        # Once for each time that it was not what the last statement had been.
        if entries.count(r"6*7;\012") > 2 or any(entries.count(e) > 1 for e in entries if "printf" in e):
            sys.exit(f"entries of the history are written twice: {entries}")

    # A history that has grown beyond ten thousand lines loses its oldest ones.
    with open(os.path.join(state, "vexel", "history"), "a") as file:
        file.writelines(f"{i};\\012\n" for i in range(12000))
    third = Session(state)
    third.send("\x1b[A")
    third.expect("11999;")
    third.send("\n")
    third.expect("11999")
    third.quit()
    with open(os.path.join(state, "vexel", "history")) as file:
        lines = file.read().split("\n")
    if len(lines) > 10010 or not lines[0].startswith("_H") or not lines[1][:4].isdigit():
        sys.exit(f"{len(lines)} lines of history, from {lines[:2]}")
print("ok")
