"""Compares PCI functions, block devices and partitions in udev databases of many machines with a collection from
the same identifiers. Names come from each machine's own edition of the hardware database."""

import functools
import json
import pathlib
import re

from capture_comparison import namespace, sysroot, udev_tree
from capture_comparison.block import DISK_CLASSES, OPTICAL_CLASSES, instances_of, partitions_by_name

CONTROLLERS = (("KELSG_VideoController", 0x03, None), ("KELSG_USBController", 0x0C, 0x03),
               ("KELSG_IDEProtocolController", 0x01, 0x01))
BRIDGES = (0x0604, 0x0607, 0x0609)


def add_function(tree, record):
    vendor, device = record["PCI_ID"].split(":")
    attributes = {"vendor": vendor, "device": device, "class": record["PCI_CLASS"]}
    if "PCI_SUBSYS_ID" in record:
        attributes["subsystem_vendor"], attributes["subsystem_device"] = record["PCI_SUBSYS_ID"].split(":")
    for name, number in attributes.items():
        tree.add(f"/sys{record['DEVPATH']}/{name}", "0x" + number.lower())
    tree.link(f"/sys/bus/pci/devices/{record['PCI_SLOT_NAME']}", f"../../..{record['DEVPATH']}")


def add_block_device(tree, record):
    attributes = {**udev_tree.array_attributes(record), **udev_tree.mapper_attributes(record)}
    if udev_tree.is_partition(record):
        attributes["size"] = record.get("ID_PART_ENTRY_SIZE", "")
    udev_tree.add_block_device(tree, record, attributes)
    if not udev_tree.is_partition(record) and "ID_WWN" in record and "/scsi" not in record["DEVPATH"]:
        parent = record["DEVPATH"].rpartition("/block/")[0]
        wwn = record.get("ID_WWN_WITH_EXTENSION", record["ID_WWN"])
        if parent and wwn.startswith("0x"):
            tree.add(f"/sys{parent}/wwid", "naa." + wwn[2:])


def is_whole(record):
    return record.get("SUBSYSTEM") == "block" and not udev_tree.is_partition(record)


def is_numbered_partition(record):
    """True for partitions without a number: udev did not read the partition tables of such machines."""
    return record.get("SUBSYSTEM") == "block" and udev_tree.is_partition(record) and \
        ("PARTN" in record or "ID_PART_ENTRY_NUMBER" in record)


def build(tree, records):
    for record in records:
        if "PCI_SLOT_NAME" in record:
            add_function(tree, record)
        elif is_whole(record) or is_numbered_partition(record):
            add_block_device(tree, record)


def explain_name(record, theirs, ours):
    """Explains names from two editions of the database, which share the words that name a product."""
    numbers = set(re.findall(r"\w*\d\w*", theirs))
    common = set(re.findall(r"\w{3,}", theirs.lower())) & set(re.findall(r"\w{3,}", ours.lower()))
    if numbers & set(re.findall(r"\w*\d\w*", ours)) or len(common) >= 2:
        return "the name has changed between editions of the database"
    return None


def class_of(record):
    code = int(record["PCI_CLASS"], 16)
    return code >> 16, code >> 8 & 0xFF


def compare_functions(machine, records, instances, agreement):
    functions = {record["PCI_SLOT_NAME"]: record for record in records if "PCI_SLOT_NAME" in record}
    ours = {instance["DeviceID"]: instance
            for instance in instances_of(instances, ("KELSG_PCIDevice", "KELSG_PCIBridge"))}
    agreement.compare(machine, "PCI", "PCI: addresses", sorted(functions), sorted(ours))
    bridges = sorted(address for address, record in functions.items()
                     if class_of(record)[0] << 8 | class_of(record)[1] in BRIDGES)
    agreement.compare(machine, "PCI", "PCI: bridges", bridges,
                      sorted(instance["DeviceID"] for instance in instances.get("KELSG_PCIBridge", [])))
    for name, base, subclass in CONTROLLERS:
        theirs = sorted(address for address, record in functions.items()
                        if class_of(record)[0] == base and subclass in (None, class_of(record)[1]))
        collected = sorted(instance["DeviceID"] for instance in instances.get(name, [])
                           if instance["DeviceID"] in functions)
        agreement.compare(machine, "PCI", f"{name}: addresses", theirs, collected)
    for address, record in functions.items():
        instance = ours.get(address, {})
        agreement.compare(machine, address, "PCI: ClassCode", str(class_of(record)[0]), instance.get("ClassCode"))
        if "PCI_SUBSYS_ID" in record and address not in bridges:
            vendor, device = (str(int(part, 16)) for part in record["PCI_SUBSYS_ID"].split(":"))
            is_there = vendor not in ("0", "65535")
            agreement.compare(machine, address, "PCI: SubsystemVendorID", vendor if is_there else None,
                              instance.get("SubsystemVendorID"))
            agreement.compare(machine, address, "PCI: SubsystemID", device if is_there else None,
                              instance.get("SubsystemID"))
        if "ID_VENDOR_FROM_DATABASE" in record and "ID_MODEL_FROM_DATABASE" in record:
            agreement.compare(machine, address, "PCI: ElementName",
                              f"{record['ID_VENDOR_FROM_DATABASE']} {record['ID_MODEL_FROM_DATABASE']}",
                              instance.get("ElementName"), functools.partial(explain_name, record))


def kind_of(record):
    """Returns the kind of a whole block device by udev's type or by its name; None if it is not a drive."""
    name = udev_tree.name_of(record)
    if re.match(r"fd\d", name):
        return "diskette"
    if name.startswith("sr") or record.get("ID_TYPE") in ("cd", "cd/dvd", "dvd"):
        return "optical"
    if re.fullmatch(r"sd[a-z]+|vd[a-z]+|nvme\d+n\d+|mmcblk\d+", name):
        return "disk"
    return None


def compare_drives(machine, records, instances, agreement):
    wholes = [record for record in records if is_whole(record)]
    for kind, classes in (("disk", DISK_CLASSES), ("optical", OPTICAL_CLASSES), ("diskette", ("KELSG_DisketteDrive",))):
        theirs = [record for record in wholes if kind_of(record) == kind]
        ours = instances_of(instances, classes)
        agreement.compare(machine, kind, f"{kind} drive: count", len(theirs), len(ours))
        models = [udev_tree.decode(record["ID_MODEL_ENC"]) for record in theirs if "ID_MODEL_ENC" in record]
        names = [" ".join(instance["ElementName"].split()) for instance in ours]
        for model in models:
            agreement.compare(machine, model, f"{kind} drive: model is in ElementName", True,
                              any(" ".join(model.split()) in name for name in names))
        for record in theirs:
            if record.get("ID_WWN", "").startswith("0x") and kind == "disk":
                wwn = record.get("ID_WWN_WITH_EXTENSION", record["ID_WWN"])
                agreement.compare(machine, udev_tree.name_of(record), "disk drive: DeviceID", True,
                                  "naa." + wwn[2:] in [instance["DeviceID"] for instance in ours])


def compare_partitions(machine, records, instances, agreement):
    partitions = partitions_by_name(instances)
    theirs = {udev_tree.name_of(record): record for record in records
              if is_numbered_partition(record) and "/virtual/" not in record["DEVPATH"]}
    agreement.compare(machine, "partitions", "partition: names", sorted(theirs), sorted(partitions))
    for name, record in theirs.items():
        partition = partitions.get(name, {})
        if "ID_PART_ENTRY_UUID" in record:
            agreement.compare(machine, name, "partition: DeviceID", record["ID_PART_ENTRY_UUID"],
                              partition.get("DeviceID", "").partition("@")[0])
        if "ID_PART_ENTRY_NAME" in record:
            label = udev_tree.decode(record["ID_PART_ENTRY_NAME"])
            agreement.compare(machine, name, "partition: ElementName", f"{name} ({label})",
                              partition.get("ElementName"))


# The udev text of these machines holds a few devices only, the list of lsblk all of them.
EXCERPTS = ("HP_DVDRW_WITH_ISO9660_DISC", "KIOXIA_TransMemory")


def compare_lsblk(machine, rows, instances, agreement):
    """Compares with another program's list of the same machine."""
    def explain(*_):
        return "the text is an excerpt, lsblk's list is of the whole machine" if machine in EXCERPTS else None

    drives = [row for row in rows if row["type"] == "disk" and re.match(r"sd|vd|nvme|mmcblk\d+$", row["kname"])]
    agreement.compare(machine, "lsblk", "lsblk: disks", len(drives), len(instances_of(instances, DISK_CLASSES)),
                      explain)
    optical = [row for row in rows if row["type"] == "rom"]
    agreement.compare(machine, "lsblk", "lsblk: optical drives", len(optical),
                      len(instances_of(instances, OPTICAL_CLASSES)))
    names = sorted(row["kname"] for row in rows if row["type"] == "part")
    agreement.compare(machine, "lsblk", "lsblk: partitions", names, sorted(partitions_by_name(instances)),
                      explain)


def flatten(rows):
    for row in rows:
        yield row
        yield from flatten(row.get("children", []))


def compare_machine(path, noxinfo, agreement):
    records = udev_tree.parse_records(path.read_text(encoding="utf-8", errors="replace"))
    with sysroot.assembled() as tree:
        build(tree, records)
        instances = namespace.collect(noxinfo, tree.root)
    compare_functions(path.stem, records, instances, agreement)
    compare_drives(path.stem, records, instances, agreement)
    compare_partitions(path.stem, records, instances, agreement)
    lsblk = path.with_suffix(".lsblk.json")
    if lsblk.is_file():
        rows = list(flatten(json.loads(lsblk.read_text(encoding="utf-8"))["blockdevices"]))
        compare_lsblk(path.stem, rows, instances, agreement)


def compare(captures, noxinfo, agreement):
    with sysroot.unpacked(captures / "udev/checkbox-udevadm-export-db.tar.xz") as folder:
        for path in sorted(pathlib.Path(folder).glob("*.txt")):
            with agreement.attempt(path.stem):
                compare_machine(path, noxinfo, agreement)
