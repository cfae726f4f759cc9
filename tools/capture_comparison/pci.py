"""Compares PCI functions of captured machines and of register dumps with the output of lspci."""

import re

from capture_comparison import lspci_text, namespace, sysroot

TREES = {  # archive -> (folder in it, lspci's text)
    "trees/hwloc-32em64t-2n8c+dax+nvme+mic+dimms.tar.bz2": "32em64t-2n8c+1mic",
    "pci/tree-asus-p6t6.sysroot.tar.gz": ".",
}


def registers(function):
    """The base address registers that are not zero."""
    values = []
    upper_half = None  # the region whose register holds the upper half of another's address
    for region in function.find_all(r"Region (\d): (Memory at|I/O ports at) ([0-9a-f]+|<\w+>)(.*)"):
        if int(region[1]) == upper_half:
            continue
        address = int(region[3], 16) if not region[3].startswith("<") else 0
        if region[2].startswith("I/O"):
            values.append(address | 1)
            continue
        is_wide = "64-bit" in region[4]
        is_prefetchable = ", prefetchable" in region[4]
        values.append(address & 0xFFFFFFFF | is_wide * 4 | is_prefetchable * 8)
        if is_wide:
            values.append(address >> 32)
            upper_half = int(region[1]) + 1
    return [str(value) for value in values if value] or None


def rom(function):
    match = function.find(r"Expansion ROM at ([0-9a-f]+)")
    return str(int(match[1], 16)) if match and int(match[1], 16) else None


PREFETCHABLE = 8


def explain_registers(theirs, ours):
    """The flags of a resource file from before 4.1 lack the bit that lspci looks for."""
    def without_kind(values):
        return [int(value) & ~PREFETCHABLE for value in values or []]
    return "the register says that the memory is prefetchable, the kernel's flags of that time do not" \
        if without_kind(theirs) == without_kind(ours) else None


def explain_rom(_, ours):
    is_sizing = ours is not None and int(ours) >= 0xFFF00000
    return "the register of a ROM that is off keeps what finding its size has left; lspci asks the kernel" \
        if is_sizing else None


def window(function, name):
    """Returns (first address, last address, bits) of a bridge window, or None if it is closed."""
    match = function.find(rf"{name} behind bridge: ([0-9a-f]+)-([0-9a-f]+) .*\[(\d+)-bit\]")
    return (int(match[1], 16), int(match[2], 16), int(match[3])) if match else None


def timing(function):
    match = function.find(r"Status: .*DEVSEL=(\w+)")
    return {"fast": "2", "medium": "3", "slow": "4"}.get(match[1]) if match else None


def explain_timing(theirs, ours):
    return "PCI Express functions have no select timing; lspci shows their zeros as \"fast\"" \
        if theirs == "2" and ours is None else None


PORT_TYPES = {"Root Port": "10", "Upstream Port": "10", "Downstream Port": "10",
              "PCI-Express to PCI/PCI-X Bridge": "11", "PCI/PCI-X to PCI-Express Bridge": "10"}


def bridge_type(function):
    if function.class_code != 0x0604:
        return str(function.class_code & 0xFF) if function.class_code >> 8 == 6 else None
    express = function.find(r"Capabilities: \[\w+\] Express \(v\d\) ([^(,]*)")
    return PORT_TYPES.get(express[1].strip(), "4") if express else "4"


def pin(function):
    match = function.find(r"Interrupt: pin (\w) ")
    return str("ABCD".index(match[1]) + 1) if match and match[1] in "ABCD" else "0"


INTERFACES = {0x00: "2", 0x10: "3"}  # UHCI, OHCI; all others are "other"


def explain_name(theirs, ours):
    if re.search(r" Device$", theirs) and re.search(r"[0-9a-f]{4}:[0-9a-f]{4}$", ours):
        return "a function that the database does not know is named by its class and numbers"
    if " ".join(theirs.split()) == ours:
        return "blanks in a row are one"
    if theirs.partition("#")[0].strip() == ours:
        return "names of the compiled database end at \"#\""
    if "RTL8111/8168/8211/8411" in ours and "RTL8111/8168/8411" in theirs:
        return "the name has changed between editions of the database"
    return None


def expected_name(function, ours):
    """lspci prints the card's name in a line of its own after the name of its maker. A card that is missing in the
    database is a "Device" there, or has the name of its chip."""
    subsystem = function.find(r"Subsystem: (.*) \[[0-9a-f]{4}:[0-9a-f]{4}\]")
    if not subsystem or subsystem[1].split()[-1] == "Device":
        return function.name
    card = (ours or "").removeprefix(f"{function.name} (").removesuffix(")")
    if ours == f"{function.name} ({card})" and subsystem[1].endswith(f" {card}"):
        return ours
    if subsystem[1].split()[-2:] == function.name.split()[-2:]:
        return function.name
    return f"{function.name} ({subsystem[1]})"


# Names from two editions of the database may differ.
SYNONYMS = {
    "Co-processor": "Coprocessor",
    "Non-Essential Instrumentation": "Non-essential instrumentation",
    "PIC": "Programmable interrupt controller",
    "SMBus": "SMBus controller",
}


def explain_class(theirs, ours):
    return "classes have names of their own here" if SYNONYMS.get(theirs) == ours else None


def compare_function(machine, function, ours, agreement):
    def check(field, theirs, explain=None):
        agreement.compare(machine, function.address, field, theirs, ours.get(field), explain)

    check("ElementName", expected_name(function, ours.get("ElementName")), explain_name)
    check("Description", function.class_name, explain_class)
    check("ClassCode", str(function.class_code >> 8))
    check("InterruptPin", pin(function))
    check("BaseAddress", registers(function), explain_registers)
    check("ExpansionROMBaseAddress", rom(function), explain_rom)
    check("DeviceSelectTiming", timing(function), explain_timing)
    check("SelfTestEnabled", "TRUE" if function.find(r"BIST ") else "FALSE")
    latency = function.find(r"Latency: (\d+)(?: \((?:(\d+)ns min)?(?:, )?(?:(\d+)ns max)?\))?"
                            r"(?:, Cache Line Size: (\d+) bytes)?$")
    if latency:  # shown of functions that may be bus masters
        check("LatencyTimer", latency[1])
        check("CacheLineSize", str(int(latency[4] or "0") // 4))
        if not function.is_bridge:
            check("MinGrantTime", str(int(latency[2] or "0") // 250))
            check("MaxLatency", str(int(latency[3] or "0") // 250))
    if function.is_bridge:
        compare_bridge(check, ours, machine, function, agreement)
    else:
        subsystem = function.find(r"Subsystem: .*\[([0-9a-f]{4}):([0-9a-f]{4})\]")
        check("SubsystemVendorID", str(int(subsystem[1], 16)) if subsystem else None)
        check("SubsystemID", str(int(subsystem[2], 16)) if subsystem else None)


def compare_bridge(check, ours, machine, function, agreement):
    buses = function.find(r"Bus: primary=(\w\w), secondary=(\w\w), subordinate=(\w\w)")
    for field, bus in zip(("PrimaryBusNumber", "SecondaryBusNumber", "SubordinateBusNumber"), buses.groups()):
        check(field, str(int(bus, 16)))
    check("BridgeType", bridge_type(function))
    for name, base, limit, shift in (("I/O", "IOBase", "IOLimit", 8), ("Memory", "MemoryBase", "MemoryLimit", 16)):
        mask = 0xF0 if shift == 8 else 0xFFF0
        passed = window(function, name)
        if passed:
            kind = 1 if shift == 8 and passed[2] == 32 else 0  # the width of I/O addresses stands in the register
            check(base, str(passed[0] >> shift & mask | kind))
            check(limit, str(passed[1] >> shift & mask | kind))
        else:
            is_closed = int(ours[base]) & mask > int(ours[limit]) & mask
            agreement.compare(machine, function.address, f"{name} window closed",
                              function.find(rf"{name} behind bridge: \[disabled\]") is not None, is_closed,
                              lambda theirs, _: "lspci leaves out windows of bridges whose decoding is off"
                              if not theirs else None)


def compare_controllers(machine, functions, instances, agreement):
    """Display, USB and IDE controllers are the functions of their classes."""
    for class_name, is_one in (("KELSG_VideoController", lambda code: code >> 8 == 0x03),
                               ("KELSG_USBController", lambda code: code == 0x0C03),
                               ("KELSG_IDEProtocolController", lambda code: code == 0x0101)):
        theirs = [function.address for function in functions if is_one(function.class_code)]
        ours = [instance["DeviceID"] for instance in instances.get(class_name, [])]
        agreement.compare(machine, "controllers", f"{class_name}: addresses", theirs, ours)
    by_address = {instance["DeviceID"]: instance for instance in instances.get("KELSG_USBController", [])}
    for function in functions:
        if function.class_code == 0x0C03 and function.address in by_address:
            agreement.compare(machine, function.address, "USB controller: InterfaceType",
                              INTERFACES.get(function.interface, "1"),
                              by_address[function.address].get("InterfaceType"))


def compare_machine(machine, text, instances, agreement):
    functions = lspci_text.parse(text)
    for class_name, is_bridge in (("KELSG_PCIDevice", False), ("KELSG_PCIBridge", True)):
        theirs = [function for function in functions if function.is_bridge == is_bridge]
        ours = instances.get(class_name, [])
        agreement.compare(machine, class_name, f"{class_name}: addresses",
                          [function.address for function in theirs], [instance["DeviceID"] for instance in ours])
        by_address = {instance["DeviceID"]: instance for instance in ours}
        for function in theirs:
            if function.address in by_address:
                compare_function(machine, function, by_address[function.address], agreement)
    compare_controllers(machine, functions, instances, agreement)


def text_of(captures, archive):
    name = re.sub(r"(\.sysroot)?\.tar\.\w+$", ".lspci-Dnnvv.txt", archive)
    return (captures / name).read_text(encoding="utf-8")


def compare(captures, noxinfo, agreement):
    for archive, root in TREES.items():
        with agreement.attempt(archive), sysroot.unpacked(captures / archive, root) as tree:
            compare_machine(archive, text_of(captures, archive), namespace.collect(noxinfo, tree), agreement)
    for dump in sorted((captures / "pci").glob("*.lspci-Dnnvv.txt")):
        source = dump.with_name(dump.name.replace(".lspci-Dnnvv", ""))
        with agreement.attempt(source.name), sysroot.assembled() as tree:
            for address, config in lspci_text.parse_dump(source.read_text(encoding="utf-8")).items():
                tree.add(f"/sys/bus/pci/devices/{address}/config", bytes(config))
            compare_machine(source.name, dump.read_text(encoding="utf-8"), namespace.collect(noxinfo, tree.root),
                            agreement)
