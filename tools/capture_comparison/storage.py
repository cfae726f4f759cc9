"""Disks, partitions, arrays and volumes as other probes saw them, against what is collected from the same
properties: partitions against the tables that sfdisk and parted read from the disk, arrays and volumes against
what mdadm and LVM said."""

import json
import pathlib
import re
import xml.etree.ElementTree as ElementTree

from capture_comparison import namespace, sysroot, udev_tree
from capture_comparison.block import (
    DISK_CLASSES, OPTICAL_CLASSES, instances_of, is_disk, kilobytes, logical_volume_name, media_sizes,
    partitions_by_name)


class Machine:
    def __init__(self, name):
        self.name = name
        self.disk_sizes = []  # bytes
        self.partitions = {}  # kernel name -> {property: text}
        self.volumes = {}  # element's name -> {property: text}
        self.optical = 0


DOS_EXTENDED = {0x05, 0x0F, 0x85}
EFI_SYSTEM = "c12a7328-f81f-11d2-ba4b-00a0c93ec93b"


def dos_partition(number, code, is_bootable):
    kind = "3" if number >= 5 else "2" if code in DOS_EXTENDED else "1"
    return {"PartitionType": kind, "PartitionSubtype": str(code),
            "PrimaryPartition": "TRUE" if kind == "1" else "FALSE", "Bootable": "TRUE" if is_bootable else "FALSE"}


def array_uuid(text):
    digits = text.replace(":", "")
    return "-".join((digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]))


def explain_mapped(theirs, ours):
    """True for device-mapper devices on a firmware RAID set and on top of it, which are not collected."""
    return "partitions of a firmware RAID set are listed on the disk that has its table, not on the set" \
        if [name for name in theirs if not name.startswith("dm-")] == ours else None


def compare_machine(machine, instances, agreement):
    def check(place, field, theirs, ours, explain=None):
        agreement.compare(machine.name, place, field, theirs, ours, explain)

    ours = media_sizes(instances_of(instances, DISK_CLASSES))
    theirs = kilobytes(machine.disk_sizes)
    check("disks", "disk: count", len(theirs), len(ours))
    for size, collected in zip(theirs, ours):
        check("disks", "disk: MaxMediaSize", size, collected)
    check("optical drives", "optical drive: count", machine.optical,
          len(instances_of(instances, OPTICAL_CLASSES)))
    partitions = partitions_by_name(instances)
    check("partitions", "partition: names", sorted(machine.partitions), sorted(partitions), explain_mapped)
    for name, properties in machine.partitions.items():
        if name.startswith("dm-") and name not in partitions:
            continue
        for field, value in properties.items():
            check(name, f"partition: {field}", value, partitions.get(name, {}).get(field))
    volumes = {volume["ElementName"]: volume for volume in instances.get("KELSG_LogicalDisk", [])}
    check("volumes", "volume: names", sorted(machine.volumes), sorted(volumes))
    for name, properties in machine.volumes.items():
        for field, value in properties.items():
            check(name, f"volume: {field}", value, volumes.get(name, {}).get(field))


def size_of(record):
    """Returns the size in bytes, 0 if the probe has none, as for a reader without a medium."""
    return int(record["attrs"].get("size") or 0)


def add_probert_device(tree, record):
    attributes = {name: value for name, value in record["attrs"].items()
                  if isinstance(value, str) and name not in ("device", "subsystem", "dev", "partition")}
    attributes["size"] = str(size_of(record) // 512)
    attributes.setdefault("queue/logical_block_size", "512")
    attributes = {**udev_tree.array_attributes(record), **udev_tree.mapper_attributes(record), **attributes}
    udev_tree.add_block_device(tree, record, attributes)


def add_table(machine, table, blockdev):
    for row in table["partitions"]:
        name = row["node"].rpartition("/")[2]
        if row["node"] not in blockdev:
            continue  # written to the disk after the kernel had read it
        size = int(row["size"]) * (table.get("sectorsize") or 512)
        properties = {"Size": str(size)}
        if table["label"] == "gpt":
            is_system = row["type"].lower() == EFI_SYSTEM
            properties |= {"DeviceID": row["uuid"].lower(), "PartitionType": None, "PartitionSubtype": None,
                           "Bootable": "TRUE" if is_system or "Legacy" in row.get("attrs", "") else "FALSE"}
        else:
            number = int(re.search(r"\d+$", name)[0])
            properties |= dos_partition(number, int(row["type"], 16), row.get("bootable", False))
        machine.partitions[name] = properties


def volume_name(record):
    """Returns "group/volume" as split by udev; other volumes have one name."""
    if "DM_VG_NAME" in record and "DM_LV_NAME" in record:
        return f"{record['DM_VG_NAME']}/{record['DM_LV_NAME']}"
    return udev_tree.decode(record["DM_NAME"])


def read_probert(path, tree):
    machine = Machine(path.name)
    probe = json.loads(path.read_text(encoding="utf-8"))
    probe = probe.get("storage", probe)
    for device, record in probe["blockdev"].items():
        name = udev_tree.name_of(record)
        size = size_of(record)
        add_probert_device(tree, record)
        if udev_tree.is_partition(record):
            if not any(record["DEVPATH"].startswith(f"{probe['blockdev'][disk]['DEVPATH']}/")
                       for disk in probe["blockdev"] if (probe["blockdev"][disk].get("partitiontable"))):
                machine.partitions[name] = {"Size": str(size)}
            continue
        if name.startswith("sr"):
            machine.optical += 1
        elif is_disk(name) and "MAJOR" in record:
            machine.disk_sizes.append(size)
        if record.get("partitiontable"):
            add_table(machine, record["partitiontable"], probe["blockdev"])
        if re.match(r"part\d+-", record.get("DM_UUID", "")):
            machine.partitions[name] = {"Size": str(size)}
        elif "DM_UUID" in record:
            machine.volumes[volume_name(record)] = {"DeviceID": record["DM_UUID"].removeprefix("LVM-")}
    for device, array in (probe.get("raid") or {}).items():
        if array["MD_LEVEL"] != "container":
            machine.volumes[device.rpartition("/")[2]] = {
                "DeviceID": array_uuid(array["MD_UUID"]),
                "Description": f"Software RAID {array['MD_LEVEL'].removeprefix('raid')} array",
                "NumberOfBlocks": str(size_of(probe["blockdev"][device]) // 512)}
    for volume in (probe.get("lvm") or {}).get("logical_volumes", {}).values():
        name = f"{volume['volgroup']}/{volume['name']}"
        machine.volumes.setdefault(name, {})["NumberOfBlocks"] = str(int(volume["size"].rstrip("B")) // 512)
    return machine


class Mockup:
    def __init__(self, path):
        root = ElementTree.parse(path).getroot()
        self.outputs = {entry.findtext("name"): [line.text or "" for line in entry if line.tag in ("stdout", "content")]
                        for entry in root.iter() if entry.tag in ("Command", "File")}

    def records(self):
        records = {}
        for name, lines in self.outputs.items():
            if name.startswith("/usr/bin/udevadm info /dev/"):
                for record in udev_tree.parse_records("\n".join(lines)):
                    records[record["DEVPATH"]] = record
        return records


def region_bytes(device):
    return int(device.findtext("region/length")) * int(device.findtext("region/block-size"))


def sizes_of(graph):
    """Maps paths below /sys to sizes in bytes."""
    return {device.findtext("sysfs-path"): region_bytes(device) for device in graph.iter()
            if device.find("region") is not None and device.find("sysfs-path") is not None}


def add_mockup(tree, mockup, graph):
    sizes = sizes_of(graph)
    for path, record in mockup.records().items():
        attributes = {**udev_tree.array_attributes(record), **udev_tree.mapper_attributes(record),
                      "queue/logical_block_size": "512"}
        size = mockup.outputs.get(f"/sys{path}/size")
        if size:
            attributes["size"] = size[0]
        elif path in sizes:
            attributes["size"] = str(sizes[path] // 512)
        udev_tree.add_block_device(tree, record, attributes)


def read_graph(path, mockup, graph):
    """Adds the UUIDs that mdadm and LVM report for arrays and volumes of the graph."""
    machine = Machine(path.name)
    records = mockup.records()
    for disk in graph.iter("Disk"):
        machine.disk_sizes.append(region_bytes(disk))
    machine.optical = sum(udev_tree.name_of(record).startswith("sr") for record in records.values())
    for partition in graph.iter("Partition"):
        record = records.get(partition.findtext("sysfs-path"))
        if record is None:
            continue
        properties = {"Size": str(region_bytes(partition))}
        if record.get("ID_PART_ENTRY_SCHEME") == "dos":
            number = int(record["ID_PART_ENTRY_NUMBER"])
            properties |= dos_partition(number, int(partition.findtext("id"), 0), partition.findtext("boot") == "true")
        elif partition.findtext("uuid"):
            properties["DeviceID"] = partition.findtext("uuid")
        machine.partitions[partition.findtext("sysfs-name")] = properties
    for array in graph.iter("Md"):
        machine.volumes[array.findtext("sysfs-name")] = {
            "DeviceID": array_uuid(array.findtext("uuid")), "NumberOfBlocks": str(region_bytes(array) // 512),
            "Description": f"Software RAID {array.findtext('md-level').removeprefix('RAID')} array"}
    for array in graph.iter("MdMember"):
        machine.volumes[array.findtext("sysfs-name")] = {
            "DeviceID": array_uuid(array.findtext("uuid")), "NumberOfBlocks": str(region_bytes(array) // 512)}
    for volume in graph.iter("LvmLv"):
        if volume.findtext("dm-table-name") and volume.findtext("sysfs-path") in records:
            name = logical_volume_name(volume.findtext("dm-table-name"))
            machine.volumes[name] = {"NumberOfBlocks": str(region_bytes(volume) // 512)}
    for encryption in graph.iter("Luks"):
        if encryption.findtext("sysfs-path") in records:
            machine.volumes[encryption.findtext("dm-table-name")] = {
                "NumberOfBlocks": str(region_bytes(encryption) // 512)}
    for multipath in graph.iter("Multipath"):
        if multipath.findtext("sysfs-path") in records:
            machine.volumes[multipath.findtext("dm-table-name")] = {
                "NumberOfBlocks": str(region_bytes(multipath) // 512), "Description": "Multipath device"}
    return machine


def compare(captures, noxinfo, agreement):
    folder = captures / "storage"
    for archive in ("subiquity-machines.tar.xz", "curtin-probert.tar.xz"):
        with sysroot.unpacked(folder / archive) as probes:
            for path in sorted(pathlib.Path(probes).glob("*.json")):
                with agreement.attempt(path.name), sysroot.assembled() as tree:
                    machine = read_probert(path, tree)
                    compare_machine(machine, namespace.collect(noxinfo, tree.root), agreement)
    with sysroot.unpacked(folder / "libstorage-ng-probe.tar.xz") as probes:
        for path in sorted(pathlib.Path(probes).glob("*-mockup.xml")):
            with agreement.attempt(path.name), sysroot.assembled() as tree:
                mockup = Mockup(path)
                graph = ElementTree.parse(path.with_name(path.name.replace("-mockup", "-devicegraph"))).getroot()
                add_mockup(tree, mockup, graph)
                compare_machine(read_graph(path, mockup, graph), namespace.collect(noxinfo, tree.root), agreement)
