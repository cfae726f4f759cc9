"""Reads the output of lspci -Dnnvv and the register dumps of lspci -xxx."""

import re

HEADER = re.compile(
    r"(?P<address>[0-9a-f]{4}:[0-9a-f]{2}:[0-9a-f]{2}\.[0-7]) (?P<class_name>.*?) \[(?P<class>[0-9a-f]{4})\]: "
    r"(?P<name>.*) \[(?P<vendor>[0-9a-f]{4}):(?P<device>[0-9a-f]{4})\](?: \(rev [0-9a-f]+\))?"
    r"(?: \(prog-if (?P<interface>[0-9a-f]{2}).*\))?")


class Function:
    """One function: its heading line, and the lines below it that are indented once."""

    def __init__(self, match):
        self.address = match["address"]
        self.class_code = int(match["class"], 16)
        self.class_name = match["class_name"]
        self.name = match["name"]
        self.vendor = match["vendor"]
        self.device = match["device"]
        self.interface = int(match["interface"] or "0", 16)
        self.lines = []

    def find(self, pattern):
        """Returns the first match at the start of a line."""
        return next(filter(None, (re.match(pattern, line) for line in self.lines)), None)

    def find_all(self, pattern):
        return list(filter(None, (re.match(pattern, line) for line in self.lines)))

    @property
    def is_bridge(self):
        return self.find(r"Bus: ") is not None


def parse(text):
    functions = []
    for line in text.splitlines():
        header = HEADER.fullmatch(line)
        if header:
            functions.append(Function(header))
        elif line.startswith("\t") and not line.startswith("\t\t"):
            functions[-1].lines.append(line[1:])
    return functions


def parse_dump(text):
    """Maps addresses to bytes of the configuration space, from lines such as "10: 0c 00 ..."."""
    functions = {}
    current = None
    for line in text.splitlines():
        header = re.match(r"((?:[0-9a-f]{4}:)?[0-9a-f]{2}:[0-9a-f]{2}\.[0-7]) ", line)
        row = re.match(r"([0-9a-f]{2,3}): ((?:[0-9a-f]{2} ?)+)\s*$", line)
        if header:
            address = header[1] if header[1].count(":") == 2 else "0000:" + header[1]
            current = functions.setdefault(address, bytearray())
        elif row and current is not None:
            current[int(row[1], 16):] = bytes.fromhex(row[2])
    return functions
