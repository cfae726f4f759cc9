"""Values of the text that dmidecode prints, and reasons why collected ones may differ."""

import re

def number(text, unit):
    """Returns 2133 for "2133 MT/s" with the unit MT/s, and None for any other text."""
    match = re.fullmatch(rf"(\d+) {re.escape(unit)}", text or "")
    return match[1] if match else None


UNITS = {"bytes": 1, "kB": 2**10, "MB": 2**20, "GB": 2**30, "TB": 2**40}


def size(text):
    """Converts a size such as "16 GB" to bytes."""
    match = re.fullmatch(r"(\d+) (\w+)", text or "")
    return str(int(match[1]) * UNITS[match[2]]) if match and match[2] in UNITS else None


def boolean(value):
    return None if value is None else "TRUE" if value else "FALSE"


def squeezed(text):
    return None if text is None else " ".join(text.split())


def code(table, text):
    return str(table[text]) if text in table else None


# Placeholders of firmware; the collected property is absent for them.
FILLERS = re.compile(
    r"(no enclosure|not specified|not available|none|n/?a|null|unknown|undefined|empty|default string|default|o\.?e\.?m\.?"
    r"|to be filled by o\.e\.m\.?|fill by oem|system (manufacturer|product name|version|serial number)"
    r"|base ?board serial number|base board (asset tag|product name)|type2 - board (serial number|asset tag|chassis location)"
    r"|bsn12345678901234567|atn12345678901234567|serial number|sernum\d|manufacturer\d|partnum\d|array\d_(partnumber|serialnumber)\d|no asset tag|asset-?1234567890"
    r"|[0 ]*|[fF]+|x+|x\.x|[-.*? ]+|0?123456789(0123456789)*0?|012345678|12345678)", re.IGNORECASE)


def explain_text(theirs, ours):
    if theirs is not None and ours is None and FILLERS.fullmatch(theirs.strip()):
        return "a text that firmware leaves for want of a value counts as absent"
    if theirs is not None and ours is not None and theirs.strip() == ours.strip():
        return "blanks at both ends are the firmware's padding"
    if theirs is not None and ours is not None and _dotted(theirs) == _dotted(ours):
        return "bytes that are no characters: dmidecode shows dots, the collected text shows U+FFFD"
    return None


def _dotted(text):
    return re.sub(r"[^\x20-\x7e]", ".", text).strip()


def explain_locator(theirs, ours):
    if theirs is None or FILLERS.fullmatch(theirs):
        return "a device without a locator is known by its bank or by its place in the table"
    return explain_text(theirs, ours)


def check_keys(machine, what, key, instances, agreement):
    """Checks that the instances of a class have different keys."""
    keys = [instance.get(key) for instance in instances]
    agreement.compare(machine, what, f"{what}: distinct keys", len(keys), len(set(keys) - {None}))
