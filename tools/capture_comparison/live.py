"""What is collected from the running machine, against other programs that read it at the same time."""

import collections
import json
import pathlib
import re
import shutil
import subprocess

from capture_comparison import namespace
from capture_comparison.block import DISK_CLASSES, identity, instances_of, is_disk, partitions_by_name

PORT_CLASSES = ("CIM_EthernetPort", "CIM_WiFiPort", "CIM_IBPort", "CIM_NetworkPort")
MACHINE = "this machine"


class ProgramMissing(Exception):
    """A program to compare with is not installed."""


def run(*command):
    if shutil.which(command[0]) is None:
        raise ProgramMissing(f"{command[0]} is not installed")
    return subprocess.run(command, capture_output=True, check=True, timeout=60).stdout.decode()


def run_json(*command):
    return json.loads(run(*command) or "[]")


def text(value):
    return None if value in (None, "") else str(value)


def boolean(value):
    return "TRUE" if value else "FALSE"


# ---- file systems


LOCAL_TYPES = {"bcachefs", "btrfs", "erofs", "exfat", "ext2", "ext3", "ext4", "f2fs", "fuseblk", "hfs", "hfsplus",
               "iso9660", "jfs", "minix", "msdos", "nilfs2", "ntfs", "ntfs3", "reiserfs", "squashfs", "udf", "vfat", "xfs"}


def flatten(rows):
    for row in rows:
        yield row
        yield from flatten(row.get("children", []))


def explain_available(theirs, ours):
    if theirs and ours and abs(int(theirs) - int(ours)) < 2 ** 30:
        return "the space changed between the two readings"
    return None


def explain_no_record(theirs, ours):
    return "findmnt reads it from the device, because this machine lacks a udev database" \
        if theirs and ours is None and not pathlib.Path("/run/udev/data").is_dir() else None


def compare_file_systems(instances, agreement):
    columns = "TARGET,SOURCE,FSTYPE,MAJ:MIN,SIZE,AVAIL,LABEL,UUID,FS-OPTIONS"
    mounts = collections.defaultdict(dict)
    for row in flatten(run_json("findmnt", "-J", "-b", "-o", columns)["filesystems"]):
        if row["fstype"] in LOCAL_TYPES and row["source"].startswith("/dev/"):
            mounts[row["maj:min"]][row["target"]] = row
    ours = instances.get("CIM_LocalFileSystem", [])
    agreement.compare(MACHINE, "findmnt", "file system: count", len(mounts), len(ours))
    for file_system in ours:
        root = file_system["Root"]
        row = next((rows[root] for rows in mounts.values() if root in rows), {})

        def check(field, theirs, explain=None):
            agreement.compare(MACHINE, root, f"file system: {field}", text(theirs), file_system.get(field), explain)

        check("Root", row.get("target"))
        check("FileSystemType", row.get("fstype"))
        check("FileSystemSize", row.get("size"))
        check("AvailableSpace", row.get("avail"), explain_available)
        check("Label", row.get("label"), explain_no_record)
        check("UUID", row.get("uuid"), explain_no_record)
        check("ReadOnly", boolean("ro" in row.get("fs-options", "").split(",")))


# ---- disks and partitions


def explain_no_udev(theirs, ours):
    return "lsblk takes it from the udev database, which this machine lacks" \
        if theirs is None and ours and not pathlib.Path("/run/udev/data").is_dir() else None


def compare_disk(row, disk, agreement):
    def check(field, theirs, ours):
        agreement.compare(MACHINE, row["name"], f"disk: {field}", text(theirs), ours, explain_no_udev)

    check("MaxMediaSize", row["size"] // 1000 or None, disk.get("MaxMediaSize"))
    check("DefaultBlockSize", row["log-sec"], disk.get("DefaultBlockSize"))
    check("PhysicalBlockSize", row["phy-sec"], disk.get("PhysicalBlockSize"))
    check("serial number", row["serial"], identity(disk, "Serial number"))
    if row["tran"] not in ("ata", "sata"):  # lsblk prints the last four characters
        check("firmware revision", row["rev"], identity(disk, "Firmware revision"))
    if row["wwn"]:
        ours = (identity(disk, "World-wide name") or "").split(".")[-1]
        check("world-wide name", row["wwn"].removeprefix("0x").split(".")[-1][:len(ours)], ours)


def compare_disks(instances, agreement):
    columns = "NAME,TYPE,SIZE,LOG-SEC,PHY-SEC,SERIAL,REV,WWN,TRAN"
    rows = list(flatten(run_json("lsblk", "-J", "-b", "-o", columns)["blockdevices"]))
    disks = sorted((row for row in rows if row["type"] == "disk" and is_disk(row["name"])),
                   key=lambda row: (row["size"] // 1000, row["serial"] or ""))
    ours = sorted(instances_of(instances, DISK_CLASSES),
                  key=lambda disk: (int(disk.get("MaxMediaSize", 0)), identity(disk, "Serial number") or ""))
    agreement.compare(MACHINE, "lsblk", "disk: count", len(disks), len(ours))
    for row, disk in zip(disks, ours):
        compare_disk(row, disk, agreement)
    partitions = partitions_by_name(instances)
    theirs = {row["name"]: row for row in rows if row["type"] == "part"}
    agreement.compare(MACHINE, "lsblk", "partition: names", sorted(theirs), sorted(partitions))
    for name, row in theirs.items():
        agreement.compare(MACHINE, name, "partition: Size", text(row["size"]), partitions.get(name, {}).get("Size"))


# ---- network ports


def hexadecimal(address):
    digits = (address or "").replace(":", "").upper()
    return digits if digits.strip("0") else None


STATES = {"UP": ["2"], "DOWN": ["10"], "UNKNOWN": ["0"], "LOWERLAYERDOWN": ["16"], "DORMANT": ["15"], "TESTING": ["11"],
          "NOTPRESENT": ["1"]}


def compare_port(link, port, agreement):
    def check(field, theirs, ours):
        agreement.compare(MACHINE, link["ifname"], f"port: {field}", theirs, ours)

    check("Name", link["ifname"], port.get("Name"))
    address = hexadecimal(link.get("address"))
    check("NetworkAddresses", [address] if address else None, port.get("NetworkAddresses"))
    if "permaddr" in link and "PermanentAddress" in port:
        check("PermanentAddress", hexadecimal(link["permaddr"]), port["PermanentAddress"])
    check("ActiveMaximumTransmissionUnit", text(link["mtu"]), port.get("ActiveMaximumTransmissionUnit"))
    check("OperationalStatus", STATES.get(link["operstate"]), port.get("OperationalStatus"))
    check("master", link.get("master"),
          identity(port, "Bond") or identity(port, "Bridge") or identity(port, "Upper port"))
    if link.get("linkinfo", {}).get("info_kind") == "vlan":
        check("VLANID", text(link["linkinfo"]["info_data"]["id"]), port.get("VLANID"))


def references(instances):
    """Returns the pairs of a port's name and an address that CIM_DeviceSAPImplementation has."""
    names = {(name, port["DeviceID"]): port["Name"] for name in PORT_CLASSES for port in instances.get(name, [])}
    return sorted((names.get(pair["Antecedent"]), pair["Dependent"][1])
                  for pair in instances.get("CIM_DeviceSAPImplementation", []))


def compare_ports(instances, agreement):
    links = [link for link in run_json("ip", "-j", "-d", "link") if link["link_type"] != "loopback"]
    ports = {port["Name"]: port for port in instances_of(instances, PORT_CLASSES)}
    agreement.compare(MACHINE, "ip link", "port: names", sorted(link["ifname"] for link in links), sorted(ports))
    for link in links:
        compare_port(link, ports.get(link["ifname"], {}), agreement)
    addresses = [(link["ifname"], row["local"]) for link in run_json("ip", "-j", "addr")
                 for row in link.get("addr_info", []) if "local" in row]
    ours = [endpoint["ElementName"] for endpoint in instances.get("KELSG_IPProtocolEndpoint", [])]
    agreement.compare(MACHINE, "ip addr", "addresses", sorted(f"{name} {address}" for name, address in addresses),
                      sorted(ours))
    names = {link["ifname"] for link in links}
    agreement.compare(MACHINE, "ip addr", "addresses of ports",
                      sorted((name, f"{name} {address}") for name, address in addresses if name in names),
                      references(instances))


def compare_link_rates(instances, agreement):
    for port in instances_of(instances, PORT_CLASSES):
        name = port["Name"]
        if port.get("Description") in ("Bridge", "Tunnel of a program", "Network port", "VXLAN tunnel"):
            continue  # the speed is a constant of the driver
        printed = run("ethtool", name)
        speed = re.search(r"Speed: (\d+)Mb/s", printed)
        duplex = re.search(r"Duplex: (Full|Half)", printed)
        agreement.compare(MACHINE, name, "port: Speed", text(speed and int(speed[1]) * 1_000_000), port.get("Speed"))
        agreement.compare(MACHINE, name, "port: FullDuplex", duplex and boolean(duplex[1] == "Full"),
                          port.get("FullDuplex"))


# ---- processors


def compare_processors(instances, agreement):
    fields = {row["field"].rstrip(":"): row["data"] for row in flatten(run_json("lscpu", "-J")["lscpu"])}
    ours = instances.get("KELSG_Processor", [])
    agreement.compare(MACHINE, "lscpu", "processor: count", int(fields["Socket(s)"]), len(ours))
    for processor in ours:
        place = processor["DeviceID"]
        agreement.compare(MACHINE, place, "processor: ElementName", fields.get("Model name"),
                          processor.get("ElementName"))
        agreement.compare(MACHINE, place, "processor: NumberOfEnabledCores", fields.get("Core(s) per socket"),
                          processor.get("NumberOfEnabledCores"))
        agreement.compare(MACHINE, place, "processor: Stepping", fields.get("Stepping"), processor.get("Stepping"))


def compare_caches(instances, agreement):
    rows = run_json("lscpu", "-J", "-B", "-C")["caches"]
    theirs = sum(int(row["all-size"]) for row in rows)
    ours = sum(int(cache["NumberOfBlocks"]) * int(cache["BlockSize"])
               for cache in instances.get("CIM_CacheMemory", []) if "NumberOfBlocks" in cache)
    agreement.compare(MACHINE, "lscpu", "caches: bytes of all", theirs, ours)


COMPARISONS = {
    "findmnt": compare_file_systems,
    "lsblk": compare_disks,
    "ip": compare_ports,
    "ethtool": compare_link_rates,
    "lscpu": compare_processors,
    "lscpu caches": compare_caches,
}


def compare(noxinfo, agreement):
    instances = namespace.collect_live(noxinfo)
    for name, comparison in COMPARISONS.items():
        with agreement.attempt(name):
            comparison(instances, agreement)
