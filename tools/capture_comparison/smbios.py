"""Compares slots, memory, boards and processors of captured SMBIOS tables with the output of dmidecode."""

import pathlib
import re
import tarfile
import tempfile

from capture_comparison import dmidecode_text, namespace, smbios_parts
from capture_comparison.dmidecode_values import (
    FILLERS, boolean, check_keys, code, explain_locator, explain_text, number, size, squeezed)


def find_text(folder, tree):
    """Finds the decode of the tree "GROUP-NAME": GROUP/NAME*.dmidecode.txt, or GROUP/NAME/dmidecode.txt."""
    for group in sorted(path for path in folder.iterdir() if path.is_dir()):
        if not tree.startswith(group.name + "-"):
            continue
        name = tree[len(group.name) + 1:]
        found = sorted(group.glob(f"{name}.*dmidecode.txt")) + sorted(group.glob(f"{name}/dmidecode.txt"))
        if len(found) == 1:
            return found[0]
    raise FileNotFoundError(f"no decode of {tree}")


# ---- memory

FORM_FACTORS = {
    "Other": 1, "Unknown": 0, "SIMM": 7, "SIP": 2, "Chip": 1, "DIP": 3, "ZIP": 4, "Proprietary Card": 6, "DIMM": 8,
    "TSOP": 9, "Row Of Chips": 1, "RIMM": 11, "SODIMM": 12, "SRIMM": 13, "FB-DIMM": 1, "Die": 1,
}
MEMORY_TYPES = {
    "Other": 1, "Unknown": 0, "DRAM": 2, "EDRAM": 6, "VRAM": 7, "SRAM": 8, "RAM": 9, "ROM": 10, "Flash": 11,
    "EEPROM": 12, "FEPROM": 13, "EPROM": 14, "CDRAM": 15, "3DRAM": 16, "SDRAM": 17, "SGRAM": 18, "RDRAM": 19,
    "DDR": 20, "DDR2": 21, "DDR2 FB-DIMM": 23, "DDR3": 24, "FBD2": 25, "DDR4": 26, "LPDDR": 27, "LPDDR2": 28,
    "LPDDR3": 29, "LPDDR4": 30, "Logical non-volatile device": 1, "HBM": 1, "HBM2": 1, "DDR5": 1, "LPDDR5": 1,
}


def position(values, absent):
    """Returns the number that all structures of a device agree on."""
    distinct = set(values)
    value = distinct.pop() if len(distinct) == 1 else None
    return None if value in absent else value


def compare_memory(machine, records, instances, agreement):
    devices = [record for record in records
               if record.kind == 17 and record.fields.get("Size") not in (None, "No Module Installed")]
    ours = instances.get("KELSG_SPDData", [])
    agreement.compare(machine, "memory", "memory: count", len(devices), len(ours))
    check_keys(machine, "memory", "Tag", ours, agreement)
    if len(devices) != len(ours):
        return
    mapped = [record for record in records if record.kind == 20]
    for device, module in zip(devices, ours):
        place = f"memory device {device.handle:#06x}"

        def check(field, theirs, explain=None, module=module, place=place):
            agreement.compare(machine, place, f"memory: {field}", theirs, module.get(field), explain)

        # The key is the locator; a duplicate gets its position appended.
        locator = device.text("Locator")
        tag = module.get("Tag", "")
        agreement.compare(machine, place, "memory: Tag", squeezed(locator),
                          squeezed(tag.partition("@")[0]), explain_locator)
        check("BankLabel", device.text("Bank Locator"), explain_text)
        check("Manufacturer", device.text("Manufacturer"), explain_text)
        check("SerialNumber", device.text("Serial Number"), explain_text)
        check("PartNumber", device.text("Part Number"), explain_text)
        check("Capacity", size(device.fields["Size"]))
        check("Speed", number(device.fields.get("Speed"), "MT/s"))
        check("TotalWidth", number(device.fields.get("Total Width"), "bits"))
        check("DataWidth", number(device.fields.get("Data Width"), "bits"))
        check("FormFactor", code(FORM_FACTORS, device.fields.get("Form Factor")))
        check("MemoryType", code(MEMORY_TYPES, device.fields.get("Type")))
        of_device = [record for record in mapped
                     if record.fields.get("Physical Device Handle") == f"0x{device.handle:04X}"]
        check("PositionInRow", position([record.fields.get("Partition Row Position") for record in of_device],
                                        {None, "Unknown", "<OUT OF SPEC>"}))
        check("InterleavePosition", position([record.fields.get("Interleave Position", "0") for record in of_device],
                                             {None, "Unknown"}))


def compare_memory_arrays(machine, records, instances, agreement):
    ranges = [record for record in records if record.kind == 19]
    theirs = []
    for record in ranges:
        start = int(record.fields["Starting Address"], 16)
        end = int(record.fields["Ending Address"], 16)
        theirs.append((start, end))
    mapped = [entry for entry in theirs if entry != (0, 0x3FF)]
    ours = instances.get("KELSG_MAS", [])
    agreement.compare(machine, "memory arrays", "memory array: count", len(theirs), len(ours),
                      lambda _, count: "an array mapped to its first KiB alone holds no memory"
                      if count == len(mapped) else None)
    check_keys(machine, "memory array", "DeviceID", ours, agreement)
    for (start, end), instance in zip(mapped, ours):
        place = f"memory array at {start:#x}"
        for field, value in (("StartingAddress", start // 1024), ("EndingAddress", end // 1024),
                             ("NumberOfBlocks", end - start + 1)):
            agreement.compare(machine, place, f"memory array: {field}", str(value), instance.get(field))


WIDTHS = {  # what dmidecode prints before the type -> MaxDataWidth
    "8-bit": 8, "16-bit": 16, "32-bit": 32, "64-bit": 64, "128-bit": 128, "x1": 1, "x2": 1, "x4": 1, "x8": 1,
    "x12": 1, "x16": 1, "x32": 1,
}
LANES = {"": 18, "x1": 19, "x2": 20, "x4": 21, "x8": 22, "x16": 23}
USAGES = {"Available": "available", "In Use": "in use", "Unavailable": "unavailable"}
SLOT_TYPES = {  # dmidecode's name -> (name in the description, ConnectorLayout, SpecialPurpose)
    "Other": ("", 1, None), "Unknown": ("", 0, None), "ISA": ("ISA", 7, False), "MCA": ("MCA", 7, False),
    "EISA": ("EISA", 7, False), "PCI": ("PCI", 16, False), "PC Card (PCMCIA)": ("PC Card", 7, False),
    "VLB": ("VESA local bus", 7, False), "Proprietary": ("Proprietary", 1, True),
    "Processor Card": ("Processor card", 1, True), "Proprietary Memory Card": ("Proprietary memory card", 1, True),
    "I/O Riser Card": ("I/O riser card", 1, True), "NuBus": ("NuBus", 7, False), "PCI-66": ("PCI 66 MHz", 16, False),
    "AGP": ("AGP", 7, False), "AGP 2x": ("AGP 2x", 7, False), "AGP 4x": ("AGP 4x", 7, False),
    "AGP 8x": ("AGP 8x", 7, False), "PCI-X": ("PCI-X", 17, False),
    "M.2 Socket 1-DP": ("M.2 Socket 1-DP", 1, False), "M.2 Socket 1-SD": ("M.2 Socket 1-SD", 1, False),
    "M.2 Socket 2": ("M.2 Socket 2", 1, False), "M.2 Socket 3": ("M.2 Socket 3", 1, False),
    "PCI Express 3 SFF-8639 (U.2)": ("PCI Express 3 U.2", 1, False),
}


def slot_type(text):
    """Returns (width, description, layout, special purpose) of a text such as "x8 PCI Express 3 x16"."""
    width, _, rest = text.partition(" ")
    if width not in WIDTHS:
        width, rest = None, text
    express = re.fullmatch(r"(PCI Express(?: [2-5])?)(?: (x\d+))?", rest)
    if express:
        return width, rest, LANES[express[2] or ""], False
    return (width, *SLOT_TYPES[rest])


def compare_slots(machine, records, instances, agreement):
    slots = [record for record in records if record.kind == 9]
    ours = instances.get("KELSG_SystemSlot", [])
    agreement.compare(machine, "slots", "slot: count", len(slots), len(ours))
    check_keys(machine, "slot", "Tag", ours, agreement)
    if len(slots) != len(ours):
        return
    for slot, instance in zip(slots, ours):
        place = f"slot {slot.handle:#06x}"

        def check(field, theirs, explain=None, instance=instance, place=place):
            agreement.compare(machine, place, f"slot: {field}", theirs, instance.get(field), explain)

        check("ElementName", slot.text("Designation"), explain_text)
        agreement.compare(machine, place, "slot: Tag", squeezed(slot.text("Designation")),
                          squeezed(instance.get("Tag", "").partition("@")[0]), explain_locator)
        width, name, layout, special = slot_type(slot.fields["Type"])
        usage = USAGES.get(slot.fields.get("Current Usage"))
        check("Description", ", ".join(part for part in ("System slot", name, usage) if part))
        check("MaxDataWidth", None if width is None else str(WIDTHS[width]), explain_width)
        check("ConnectorLayout", str(layout))
        check("SpecialPurpose", boolean(special))
        identity = slot.fields.get("ID")
        check("Number", identity,
              lambda theirs, ours, name=name: "dmidecode prints no number for M.2 sockets"
              if theirs is None and name.startswith("M.2") else explain_number(theirs, ours))
        traits = slot.lines("Characteristics")
        is_known = bool(traits) and "Unknown" not in traits
        check("SupportsHotPlug", boolean("Hot-plug devices are supported" in traits) if is_known else None,
              explain_hot_plug)


def explain_width(theirs, ours):
    if theirs is None and ours == "0":
        return "dmidecode prints no width where the firmware says Unknown"
    if theirs is None and ours == "1":
        return "dmidecode prints no width where the firmware says Other"
    return None


def explain_number(theirs, ours):
    if theirs is not None and theirs.startswith("Adapter") and ours is None:
        return "a PC Card slot has an adapter and a socket, no slot number"
    return None


def explain_hot_plug(theirs, ours):
    if theirs is None and ours == "FALSE":
        return "dmidecode prints no characteristics where no bit is set"
    return None


def compare_boards(machine, records, instances, agreement):
    boards = [record for record in records if record.kind == 2]
    ours = instances.get("KELSG_Card", [])
    agreement.compare(machine, "boards", "board: count", len(boards), len(ours))
    check_keys(machine, "board", "Tag", ours, agreement)
    if len(boards) != len(ours):
        return
    for board, card in zip(boards, ours):
        place = f"board {board.handle:#06x}"
        for field, name in (("Manufacturer", "Manufacturer"), ("Model", "Product Name"), ("Version", "Version"),
                            ("SerialNumber", "Serial Number"), ("UserTracking", "Asset Tag")):
            agreement.compare(machine, place, f"board: {field}", board.text(name), card.get(field), explain_text)
        features = board.lines("Features") if "Features" in board.fields else None
        agreement.compare(machine, place, "board: HostingBoard",
                          boolean(None if features is None else "Board is a hosting board" in features),
                          card.get("HostingBoard"))
        agreement.compare(
            machine, place, "board: RequiresDaughterBoard",
            boolean(None if features is None else "Board requires at least one daughter board" in features),
            card.get("RequiresDaughterBoard"))
        agreement.compare(machine, place, "board: RemovalConditions", removal_conditions(features),
                          card.get("RemovalConditions"))


def removal_conditions(features):
    if features is None:
        return None
    if "Board is hot swappable" in features:
        return "4"
    return "3" if {"Board is removable", "Board is replaceable"} & set(features) else "2"


FAMILIES = {
    "Other": 1, "Unknown": 2, "Pentium II": 17, "Pentium III": 17, "Pentium III Xeon": 176, "Pentium M": 185,
    "Xeon": 179, "Xeon MP": 181, "Opteron": 132, "Core 2": 191, "Core i7": 198,
    "Zen": 1,  # CIM has no number for it
}
STATUSES = {"Populated, Enabled": 2, "Populated, Disabled By User": 10, "Populated, Disabled By BIOS": 6,
            "Populated, Idle": 15, "Populated, Other": 1, "Populated, Unknown": 0}


def compare_processors(machine, records, instances, agreement):
    sockets = [record for record in records if record.kind == 4 and record.fields.get("Type") == "Central Processor"
               and str(record.fields.get("Status", "")).startswith("Populated")]
    ours = instances.get("KELSG_Processor", [])
    agreement.compare(machine, "processors", "processor: count", len(sockets), len(ours))
    check_keys(machine, "processor", "DeviceID", ours, agreement)
    if len(sockets) != len(ours):
        return
    for socket, processor in zip(sockets, ours):
        place = f"processor {socket.handle:#06x}"

        def check(field, theirs, explain=None, processor=processor, place=place):
            agreement.compare(machine, place, f"processor: {field}", theirs, processor.get(field), explain)

        agreement.compare(machine, place, "processor: DeviceID", squeezed(socket.text("Socket Designation")),
                          squeezed(processor.get("DeviceID", "").partition("@")[0]), explain_locator)
        check("Family", code(FAMILIES, socket.fields.get("Family")))
        check("MaxClockSpeed", number(socket.fields.get("Max Speed"), "MHz"))
        check("CurrentClockSpeed", number(socket.fields.get("Current Speed"), "MHz"))
        check("UniqueID", socket.text("Serial Number"), explain_text)
        check("ElementName", socket.text("Version"),
              lambda theirs, ours, key=processor["DeviceID"]: "a processor without a name goes by its socket"
              if theirs is None and ours == key else explain_text(theirs, ours))
        status = STATUSES.get(socket.fields.get("Status"))
        check("OperationalStatus", None if status is None else [str(status)])
        wide = "64" if "64-bit capable" in socket.lines("Characteristics") else None
        check("AddressWidth", wide)
        check("DataWidth", wide)


def compare_system(machine, records, instances, agreement):
    systems = [record for record in records if record.kind == 1]
    ours = instances["KELSG_ComputerSystem"][0]
    if not systems:
        return
    for field, name, explain in (("Manufacturer", "Manufacturer", explain_text),
                                 ("ProductName", "Product Name", explain_product),
                                 ("SerialNumber", "Serial Number", explain_serial), ("Name", "UUID", explain_uuid)):
        theirs = systems[0].text(name)
        theirs = theirs.upper() if field == "Name" and theirs else theirs
        agreement.compare(machine, "system", f"system: {field}", theirs, ours.get(field), explain)


def explain_serial(theirs, ours):
    if ours is not None and (theirs is None or FILLERS.fullmatch(theirs.strip())):
        return "a machine without a serial number has that of its only chassis"
    return explain_text(theirs, ours)


def explain_product(theirs, ours):
    if theirs is None or FILLERS.fullmatch(theirs.strip()):
        return "a machine without a product name is known by its board, else by its processor"
    return explain_text(theirs, ours)


SHARED_UUIDS = {"03000200-0400-0500-0006-000700080009", "NOT SETTABLE", "NOT PRESENT"}


def explain_uuid(theirs, ours):
    if theirs in SHARED_UUIDS and ours is None:
        return "a UUID that firmware ships on many machines counts as absent"
    return None


# ---- every comparison

COMPARED = (compare_system, compare_boards, compare_processors, compare_memory, compare_memory_arrays, compare_slots,
            *smbios_parts.COMPARED)


def compare(captures, noxinfo, agreement):
    folder = captures / "smbios"
    with tempfile.TemporaryDirectory(prefix="captures-") as root:
        with tarfile.open(folder / "smbios-sysroots.tar.gz") as archive:
            archive.extractall(root)
        for tree in sorted(path for path in pathlib.Path(root).iterdir() if path.is_dir()):
            with agreement.attempt(tree.name):
                text = find_text(folder, tree.name).read_text(encoding="utf-8", errors="replace")
                records = dmidecode_text.parse(text)
                instances = namespace.collect(noxinfo, tree)
                for compare_class in COMPARED:
                    compare_class(tree.name, records, instances, agreement)
