"""Disks, partitions and volumes of captured trees against lsblk's and other decodes of them."""

import collections
import json
import re

from capture_comparison import namespace, sysroot

TREES = {  # archive -> (folder in it, lsblk's text with sizes in bytes)
    "ghw-i7-1270P.tar.gz": (".", "ghw-i7-1270P.lsblk.txt"),
    "ghw-xeon-L5640.tar.gz": (".", "ghw-xeon-L5640.lsblk.txt"),
    "hwloc-32em64t-2n8c+dax+nvme+mic+dimms.tar.bz2": ("32em64t-2n8c+1mic",
                                                      "hwloc-32em64t-2n8c+dax+nvme+mic+dimms.lsblk.txt"),
}
ROUNDED_TREES = ("lsblk-simple-lvm", "lsblk-simple-nvme")
# lsblk lists the volumes of a RAID adapter as plain disks.
VOLUMES = {"ghw-xeon-L5640.tar.gz": ["sda"]}
DISK_CLASSES = ("KELSG_DiskDrive", "CIM_DiskDrive")
VOLUME_CLASSES = ("KELSG_LSILogicalDisk", "KELSG_LSIIDELogicalDisk", "KELSG_srLogicalDisk")
OPTICAL_CLASSES = ("KELSG_CDROMDrive", "KELSG_DVDDrive")
NO_DISKS = ("loop", "ram", "zram", "dm-", "md", "sr", "fd", "bcache")


def parse_table(text):
    """Splits a table at the columns of its heading line; columns of numbers end below their heading."""
    header, *lines = text.splitlines()
    columns = [(match[0], match.start(), match.end()) for match in re.finditer(r"\S+", header)]
    right = {"SIZE", "RM", "RO", "ROTA", "MAJ:MIN", "LOG-SEC", "PHY-SEC"}
    rows = []
    for line in lines:
        row = {}
        for i, (name, start, end) in enumerate(columns):
            first = columns[i - 1][2] if i and name in right else start
            last = end if name in right else columns[i + 1][1] if i + 1 < len(columns) else len(line)
            if i + 1 < len(columns) and name not in right and columns[i + 1][0] in right:
                last = len(line[:columns[i + 1][2]].rstrip().rpartition(" ")[0])
            row[name] = line[first:last].strip()
        rows.append(row)
    return rows


def kernel_name(row):
    return (row.get("KNAME") or row["NAME"]).lstrip("|`-├└─ ")


def human(size):
    """Formats a size as lsblk does without --bytes, with at most one decimal; None without a size."""
    if size is None:
        return None
    for exponent, unit in enumerate("BKMGTP"):
        if size < 1024 ** (exponent + 1):
            break
    value = round(size / 1024 ** exponent, 1)
    return f"{value:g}{unit}"


def instances_of(instances, classes):
    return [instance for name in classes for instance in instances.get(name, [])]


def identity(instance, description):
    """Returns the element of OtherIdentifyingInfo with that description; None without one."""
    pairs = zip(instance.get("IdentifyingDescriptions", []), instance.get("OtherIdentifyingInfo", []))
    return next((value for name, value in pairs if name == description), None)


def partitions_by_name(instances):
    """Maps kernel names to partitions; ElementName begins with the kernel name."""
    return {partition["ElementName"].split()[0]: partition for partition in instances.get("CIM_DiskPartition", [])}


def media_sizes(disks):
    """Sorts sizes in kilobytes; None is the size of a reader without a medium."""
    sizes = [int(disk["MaxMediaSize"]) if "MaxMediaSize" in disk else None for disk in disks]
    return sorted(sizes, key=lambda size: size or 0)


def kilobytes(sizes):
    """Sorts sizes in bytes; None is the size of a reader without a medium."""
    return sorted((size // 1000 or None for size in sizes), key=lambda size: size or 0)


def logical_volume_name(mapper_name):
    """Returns "group/volume", as lvs prints it. The device mapper doubles the hyphens in both names."""
    match = re.fullmatch(r"((?:[^-]|--)+)-((?:[^-]|--)+)", mapper_name)
    return "/".join(part.replace("--", "-") for part in match.groups()) if match else mapper_name


def is_disk(name):
    return not name.startswith(NO_DISKS)


def explain_container(theirs, ours):
    return "the kernel shows one or two blocks of an extended partition; its size is that of its table" \
        if ours is None and theirs in ("512", "1024") else None


def compare_exact(machine, rows, instances, agreement):
    volumes = VOLUMES.get(machine, [])
    agreement.compare(machine, "volumes", "RAID volume: count", len(volumes),
                      len(instances_of(instances, VOLUME_CLASSES)))
    disks = kilobytes(int(row["SIZE"]) for row in rows
                      if row["TYPE"] == "disk" and is_disk(kernel_name(row)) and kernel_name(row) not in volumes)
    ours = media_sizes(instances_of(instances, DISK_CLASSES))
    agreement.compare(machine, "disks", "disk: count", len(disks), len(ours))
    for theirs, size in zip(disks, ours):
        agreement.compare(machine, "disks", "disk: MaxMediaSize", theirs, size)
    drives = [row for row in rows
              if row["TYPE"] == "disk" and is_disk(kernel_name(row)) and kernel_name(row) not in volumes]
    for field, column in (("PhysicalBlockSize", "PHY-SEC"), ("DefaultBlockSize", "LOG-SEC")):
        agreement.compare(machine, "disks", f"disk: {field}", sorted(row[column] for row in drives if row[column]),
                          sorted(disk[field] for disk in instances_of(instances, DISK_CLASSES) if field in disk))
    partitions = partitions_by_name(instances)
    theirs = {kernel_name(row): row for row in rows if row["TYPE"] == "part"}
    agreement.compare(machine, "partitions", "partition: names", sorted(theirs), sorted(partitions))
    for name, row in theirs.items():
        agreement.compare(machine, name, "partition: Size", row["SIZE"], partitions.get(name, {}).get("Size"),
                          explain_container)


def compare_summary(machine, summary, instances, agreement):
    """Compares with the disks that another inventory program listed on the running machine."""
    disks = [disk for disk in summary["block"]["disks"] if is_disk(disk["name"])]
    ours = instances_of(instances, DISK_CLASSES + VOLUME_CLASSES)
    agreement.compare(machine, "disks", "disk: count", len(disks), len(ours))
    partitions = partitions_by_name(instances)
    for disk, instance in zip(disks, ours):
        if disk["name"] not in VOLUMES.get(machine, []):
            agreement.compare(machine, disk["name"], "disk: MaxMediaSize",
                              str(disk["size_bytes"] // 1000) if disk["size_bytes"] else None,
                              instance.get("MaxMediaSize"))
        for partition in disk["partitions"]:
            agreement.compare(machine, partition["name"], "partition: Size", str(partition["size_bytes"]),
                              partitions.get(partition["name"], {}).get("Size"))
    optical = [disk for disk in summary["block"]["disks"] if disk["drive_type"] == "odd"]
    agreement.compare(machine, "optical drives", "optical drive: count", len(optical),
                      len(instances_of(instances, OPTICAL_CLASSES)))


def explain_model(theirs, ours):
    return "the whole model name of an ATA disk, of which the SCSI attribute has 16 characters" \
        if len(theirs) >= 15 and ours.startswith(theirs) else None


def explain_revision(theirs, ours):
    if theirs is None and ours:
        return "this lsblk takes the revision from the SCSI attribute, which NVMe disks lack"
    return "the SCSI attribute has the last four characters of an ATA disk's revision, which is left out" \
        if theirs and ours is None else None


def number(properties, name, factor=1):
    """Returns the property as a number of units, or None if it is absent."""
    return int(properties[name]) * factor if name in properties else None


def compare_rounded(machine, basic, topology, vendor, instances, agreement):
    models = collections.defaultdict(str, {kernel_name(row): row["MODEL"] for row in vendor})
    revisions = {kernel_name(row): row["REV"] for row in vendor}
    sectors = {kernel_name(row): row["LOG-SEC"] for row in topology}
    physical_sectors = {kernel_name(row): row["PHY-SEC"] for row in topology}
    disks = sorted((row for row in basic if row["TYPE"] == "disk"), key=lambda row: models[kernel_name(row)])
    ours = sorted(instances_of(instances, DISK_CLASSES), key=lambda disk: disk["ElementName"])
    agreement.compare(machine, "disks", "disk: count", len(disks), len(ours))
    for row, disk in zip(disks, ours):
        name = kernel_name(row)
        agreement.compare(machine, name, "disk: size as lsblk rounds it", row["SIZE"],
                          human(number(disk, "MaxMediaSize", 1000)))
        agreement.compare(machine, name, "disk: ElementName", models[name], disk["ElementName"], explain_model)
        agreement.compare(machine, name, "disk: DefaultBlockSize", sectors.get(name), disk.get("DefaultBlockSize"))
        agreement.compare(machine, name, "disk: PhysicalBlockSize", physical_sectors.get(name),
                          disk.get("PhysicalBlockSize"))
        agreement.compare(machine, name, "disk: firmware revision", revisions.get(name) or None,
                          identity(disk, "Firmware revision"), explain_revision)
    partitions = partitions_by_name(instances)
    theirs = {kernel_name(row): row for row in basic if row["TYPE"] == "part"}
    agreement.compare(machine, "partitions", "partition: names", sorted(theirs), sorted(partitions))
    for name, row in theirs.items():
        agreement.compare(machine, name, "partition: size as lsblk rounds it", row["SIZE"],
                          human(number(partitions.get(name, {}), "Size")))
    volumes = {logical_volume_name(row["NAME"].lstrip("|`-")): row for row in basic if row["TYPE"] == "lvm"}
    logical = {volume["ElementName"]: volume for volume in instances.get("KELSG_LogicalDisk", [])}
    agreement.compare(machine, "volumes", "volume: names", sorted(volumes), sorted(logical))
    for name, row in volumes.items():
        volume = logical.get(name, {})
        size = number(volume, "NumberOfBlocks", number(volume, "BlockSize") or 0)
        agreement.compare(machine, name, "volume: size as lsblk rounds it", row["SIZE"], human(size))


def describe_nvme(tree, name):
    """Compares media only where the tree has the rotational attribute."""
    rotational = tree / f"sys/block/{name}/queue/rotational"
    word = {"0": "solid-state", "1": "hard disk"}.get(rotational.read_text().strip() if rotational.is_file() else "")
    return f"NVMe {word or 'disk'} drive"


def compare_nvme(machine, hosts, tree, instances, agreement):
    """Compares only which block devices are disks, for trees without /sys/block."""
    theirs = sorted(space["name"] for host in hosts for subsystem in host["subsystems"]
                    for space in subsystem["namespaces"])
    ours = instances_of(instances, DISK_CLASSES)
    agreement.compare(machine, "name spaces", "NVMe name space: count", len(theirs), len(ours))
    for name, disk in zip(theirs, sorted(ours, key=lambda disk: disk["DeviceID"])):
        agreement.compare(machine, name, "NVMe name space: description", describe_nvme(tree, name),
                          disk["Description"])


def add_block_folder(tree):
    """Adds the links to block devices that the capture left out."""
    folder = tree / "sys/block"
    folder.mkdir()
    for device in sorted((tree / "sys/devices").rglob("nvme*n[0-9]*")):
        if device.is_dir() and not device.is_symlink() and (device / "queue").is_dir():
            (folder / device.name).symlink_to(f"../{device.relative_to(tree / 'sys')}")


FOUND = {  # archive -> {folder in it: {classes: instances}}
    "pcp-tape-root-001.tgz": {".": {("KELSG_TapeDrive",): 1, DISK_CLASSES: 0}},
    "pcp-fchost-root-001.tgz": {".": {DISK_CLASSES: 0}},
    "pcp-vdo-root-001.tgz": {".": {DISK_CLASSES: 0, ("KELSG_LogicalDisk",): 0}},
    "blivet-edd.tar.gz": {"sata_usb": {DISK_CLASSES: 2}, "strawberry_mountain": {DISK_CLASSES: 4, OPTICAL_CLASSES: 1}},
}


def compare_found(archive, tree, counts, noxinfo, agreement):
    instances = namespace.collect(noxinfo, tree)
    for classes, count in counts.items():
        agreement.compare(f"{archive} {tree.name}", "drives", f"{classes[0]}: count", count,
                          len(instances_of(instances, classes)))


def compare(captures, noxinfo, agreement):
    folder = captures / "trees"
    for archive, trees in FOUND.items():
        with agreement.attempt(archive), sysroot.unpacked(folder / archive) as root:
            for name, counts in trees.items():
                compare_found(archive, root / name, counts, noxinfo, agreement)
    for archive, (root, text) in TREES.items():
        with agreement.attempt(archive), sysroot.unpacked(folder / archive, root) as tree:
            instances = namespace.collect(noxinfo, tree)
            compare_exact(archive, parse_table((folder / text).read_text(encoding="utf-8")), instances, agreement)
            summary = folder / text.replace(".lsblk.txt", ".ghw-block.json")
            if summary.is_file():
                compare_summary(archive, json.loads(summary.read_text(encoding="utf-8")), instances, agreement)
    for name in ROUNDED_TREES:
        with agreement.attempt(name), \
                sysroot.unpacked(folder / f"{name}.tar.xz", name.removeprefix("lsblk-")) as tree:
            instances = namespace.collect(noxinfo, tree)
            tables = [parse_table((folder / f"{name}.expected/{name}-{kind}.txt").read_text(encoding="utf-8"))
                      for kind in ("basic", "topo", "vendor")]
            compare_rounded(name, *tables, instances, agreement)
    with agreement.attempt("libnvme-tree-pcie"), sysroot.unpacked(folder / "libnvme-tree-pcie.tar.xz") as tree:
        add_block_folder(tree)
        hosts = json.loads((folder / "libnvme-tree-pcie.expected.out").read_text(encoding="utf-8"))["hosts"]
        compare_nvme("libnvme-tree-pcie", hosts, tree, namespace.collect(noxinfo, tree), agreement)
