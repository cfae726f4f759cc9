"""Monitors against edid-decode: the EDIDs of the emulated PCs, and EDIDs made from random numbers, because captures
of real machines rarely hold any."""

import random
import re
import subprocess

from capture_comparison import namespace, sysroot

MADE_MONITORS = 300
SEED = 20240301
BASE_BYTES = 128
NAMES = ["EX 2421", "U2720Q", "Sample Wide 34", "A", "LP156WF6-SPK3"]
SERIALS = ["CN-0DDT-01", "S/N 4711", "H4ZM801234", "1"]


def maker_bytes(letters):
    code = 0
    for letter in letters:
        code = code << 5 | ord(letter) - ord("@")
    return code.to_bytes(2, "big")


def text_descriptor(tag, text):
    return bytes([0, 0, 0, tag, 0]) + (text.encode() + b"\n").ljust(13, b" ")[:13]


def timing_descriptor(width, height):
    """A detailed timing of 1920x1080 whose picture has that size in millimetres."""
    return bytes.fromhex("023a801871382d40582c4500") + bytes(
        [width & 0xFF, height & 0xFF, width >> 8 << 4 | height >> 8, 0, 0, 0x1E])


def with_checksum(block):
    return block + bytes([-sum(block) & 0xFF])


def make_edid(numbers):
    """Returns a base block of version 1.3 or 1.4 with any maker, product, date, size, name and serial number."""
    letters = "".join(numbers.choices("ABCDEFGHIJKLMNOPQRSTUVWXYZ", k=3))
    serial = numbers.choice([0, 1, numbers.getrandbits(32)])
    revision = numbers.choice([3, 4])
    week = numbers.choice([0, numbers.randint(1, 53), 255 if revision == 4 else 1])
    width, height = numbers.randint(10, 120), numbers.randint(10, 100)
    descriptors = [timing_descriptor(width * 10 + numbers.randint(-4, 4), height * 10 + numbers.randint(-4, 4))]
    if numbers.random() < 0.8:
        descriptors.append(text_descriptor(0xFC, numbers.choice(NAMES)))
    if numbers.random() < 0.5:
        descriptors.append(text_descriptor(0xFF, numbers.choice(SERIALS)))
    dummy = bytes([0, 0, 0, 0x10]).ljust(18, b"\0")
    descriptors += [dummy] * (4 - len(descriptors))
    block = (bytes.fromhex("00ffffffffffff00") + maker_bytes(letters) + numbers.getrandbits(16).to_bytes(2, "little")
             + serial.to_bytes(4, "little") + bytes([week, numbers.randint(10, 34), 1, revision])
             + bytes([0x80 if revision == 3 else 0xA5, width, height, 0x78, 0x0A])
             + bytes.fromhex("ee91a3544c99260f5054") + bytes(3) + b"\x01" * 16 + b"".join(descriptors) + b"\0")
    return with_checksum(block)


def decode(edid):
    """Returns what edid-decode says, {line's label: text}; a label is that of its first line."""
    run = subprocess.run(["edid-decode"], input=edid, capture_output=True, check=False, timeout=60)
    lines = re.findall(r"^ +([A-Z][A-Za-z &]*): +(.*)$", run.stdout.decode(errors="replace"), re.MULTILINE)
    decoded = {}
    for label, text in lines:
        decoded.setdefault(label, text.strip())
    size = re.search(r"\((\d+) mm x (\d+) mm\)", run.stdout.decode(errors="replace"))
    decoded["Size"] = f"{size[1]} x {size[2]} mm" if size else None
    return decoded


def expected_date(decoded):
    """Returns the date as a description has it: ", made in week 42 of 2014", ", made in 2014", ", model of 2014"."""
    if "Model year" in decoded:
        return f", model of {decoded['Model year']}"
    return f", made in {decoded['Made in']}" if "Made in" in decoded else ""


def compare_monitor(machine, edid, monitor, agreement):
    decoded = decode(edid)
    identities = dict(zip(monitor.get("IdentifyingDescriptions", []), monitor.get("OtherIdentifyingInfo", [])))
    code = identities.get("Product code")

    def check(field, theirs, ours):
        agreement.compare(machine, "monitor", field, theirs, ours)

    check("maker", decoded.get("Manufacturer"), identities.get("Manufacturer"))
    check("product code", decoded.get("Model"), str(int(code, 16)) if code else None)
    serial = decoded.get("Display Product Serial Number") or decoded.get("Serial Number")
    serial = serial and re.sub(r" \(.*\)$", "", serial).strip("'")
    check("serial number", serial, identities.get("Serial number"))
    name = decoded.get("Display Product Name", "").strip("'") or f"{decoded.get('Manufacturer')} {code}"
    check("name", name, monitor.get("ElementName"))
    check("size and date", f"Monitor, {decoded['Size']}{expected_date(decoded)}", monitor.get("Description"))


def compare_tree(machine, root, noxinfo, agreement):
    edids = [path.read_bytes() for path in sorted(root.glob("sys/class/drm/card*-*/edid"))]
    monitors = namespace.collect(noxinfo, root).get("CIM_DesktopMonitor", [])
    edids = [edid for edid in edids if edid]
    agreement.compare(machine, "monitors", "monitor: count", len(edids), len(monitors))
    for edid, monitor in zip(edids, monitors):
        compare_monitor(machine, edid, monitor, agreement)


def compare_made(noxinfo, agreement):
    """One tree with all of them: names of connectors sort like their numbers."""
    numbers = random.Random(SEED)
    with sysroot.assembled() as tree:
        tree.folder("/proc")
        for index in range(MADE_MONITORS):
            tree.add(f"/sys/class/drm/card0-DP-{index:03}/edid", make_edid(numbers))
        compare_tree("made", tree.root, noxinfo, agreement)


def compare(captures, noxinfo, agreement):
    for archive in sorted((captures / "emulated-pc").glob("*.tar.xz")):
        with agreement.attempt(archive.name), sysroot.unpacked(archive) as root:
            compare_tree(archive.name, root, noxinfo, agreement)
    with agreement.attempt("made"):
        compare_made(noxinfo, agreement)
