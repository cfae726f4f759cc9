"""Builds trees from udev databases, for machines whose kernel files were not captured."""

import re


def parse_records(text):
    """Returns the devices of `udevadm info` texts, each as {key: value}."""
    records = []
    for block in re.split(r"\n\s*\n", text):
        record = dict(line[3:].split("=", 1) for line in block.splitlines()
                      if line.startswith("E: ") and "=" in line)
        if "DEVPATH" in record:
            records.append(record)
    return records


def decode(text):
    """Decodes a property whose name ends in "_ENC"."""
    return re.sub(r"\\x([0-9a-f]{2})", lambda match: chr(int(match[1], 16)), text).strip()


def name_of(record):
    return record["DEVPATH"].rpartition("/")[2]


def is_partition(record):
    return record.get("DEVTYPE") == "partition"


def partition_number(record):
    """Returns the partition number, or the digits at the end of the name if udev did not read the table."""
    return record.get("PARTN") or record.get("ID_PART_ENTRY_NUMBER") or re.search(r"\d*$", name_of(record))[0]


SCSI_TYPES = {"disk": "0", "tape": "1", "cd": "5", "cd/dvd": "5", "dvd": "5", "optical": "7"}


def _add_parent(tree, record):
    """The device that a block device belongs to: its folder, subsystem and identity."""
    path = record["DEVPATH"]
    scsi = re.fullmatch(r"(.*/\d+:\d+:\d+:\d+)/block/[^/]+", path)
    other = re.fullmatch(r"(.*/(virtio\d+|nvme\d+|nvme-subsys\d+|mmc\d+:\w+|floppy\.\d+))(?:/block)?/[^/]+", path)
    match = scsi or other
    if not match:
        return
    parent = f"/sys{match[1]}"
    subsystem = "scsi" if scsi else re.match(r"[a-z-]*[a-z]", match[2])[0]
    subsystem = {"nvme-subsys": "nvme-subsystem", "floppy": "platform"}.get(subsystem, subsystem)
    depth = path[len(match[1]):].count("/")
    tree.link(f"/sys{path}/device", "/".join([".."] * depth))
    tree.link(f"{parent}/subsystem", f"/sys/bus/{subsystem}")
    if scsi:
        tree.add(f"{parent}/type", SCSI_TYPES.get(record.get("ID_TYPE", "disk"), "0"))
        tree.add(f"{parent}/vendor", "ATA" if "ID_ATA" in record else decode(record.get("ID_VENDOR_ENC", "")))
    if "ID_MODEL_ENC" in record or "ID_MODEL" in record:
        tree.add(f"{parent}/model", decode(record.get("ID_MODEL_ENC", record.get("ID_MODEL", ""))))


def add_block_device(tree, record, attributes):
    """Adds a disk, volume or partition with its udev record and its attributes."""
    path = f"/sys{record['DEVPATH']}"
    for name, value in attributes.items():
        tree.add(f"{path}/{name}", value)
    if "MAJOR" in record:
        number = f"{record['MAJOR']}:{record['MINOR']}"
        tree.add(f"{path}/dev", number)
        tree.add(f"/run/udev/data/b{number}",
                 "\n".join(f"E:{key}={value}" for key, value in record.items() if isinstance(value, str)))
    else:
        tree.add(f"{path}/hidden", "1")  # the kernel makes no node for one path of several
    if is_partition(record):
        tree.add(f"{path}/partition", partition_number(record))
    else:
        tree.link(f"/sys/block/{name_of(record)}", f"..{record['DEVPATH']}")
        _add_parent(tree, record)


def array_attributes(record):
    """Returns the md attributes of an intact array, or of a container of arrays."""
    if "MD_LEVEL" not in record:
        return {}
    if record["MD_LEVEL"] == "container":
        return {"md/level": "", "md/array_state": "inactive",
                "md/metadata_version": f"external:{record['MD_METADATA']}"}
    version = record.get("MD_METADATA", "1.2")
    if "MD_CONTAINER" in record:
        version = f"external:/md127/{record['MD_MEMBER']}"
    return {"md/level": record["MD_LEVEL"], "md/array_state": "clean", "md/degraded": "0",
            "md/raid_disks": record.get("MD_DEVICES", "0"), "md/metadata_version": version}


def mapper_attributes(record):
    return {f"dm/{name}": record[key] for name, key in (("name", "DM_NAME"), ("uuid", "DM_UUID")) if key in record}
