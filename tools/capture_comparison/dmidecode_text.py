"""Reads the text that dmidecode prints."""

import re

HANDLE = re.compile(r"Handle (0x[0-9A-F]{4}), DMI type (\d+), (\d+) bytes")


class Record:
    """One structure: its handle, its type, and its fields; a field with a list has the list's lines."""

    def __init__(self, handle, kind):
        self.handle = handle
        self.kind = kind
        self.title = ""
        self.fields = {}

    def text(self, name):
        """Returns the field as a string of the structure, or None if the structure has no such string."""
        value = self.fields.get(name)
        return None if value in (None, "Not Specified", "<BAD INDEX>") else value

    def lines(self, name):
        value = self.fields.get(name, [])
        return value if isinstance(value, list) else [value]


def parse(text):
    """Records in the order of the table. Fields are "\\tName: value", list lines "\\t\\tvalue"."""
    records = []
    name = None
    for line in text.splitlines():
        header = HANDLE.match(line)
        if header:
            records.append(Record(int(header[1], 16), int(header[2])))
            name = None
        elif not records or not line.strip():
            continue
        elif line.startswith("\t\t"):
            if name is not None:
                records[-1].fields.setdefault(name, [])
                if isinstance(records[-1].fields[name], list):
                    records[-1].fields[name].append(line.strip())
        elif line.startswith("\t"):
            # Values keep their blanks: they are the firmware's.
            name, separator, value = line[1:].partition(":")
            records[-1].fields[name] = value[1:] if separator and value else []
        else:
            records[-1].title = line.strip()
    return records
