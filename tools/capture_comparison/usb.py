"""Compares USB devices and their controllers in captured trees with the output of lsusb."""

import re

from capture_comparison import namespace, sysroot

DEVICES = ("aes3500", "fido2", "nb1010", "synaptics", "vfs301")
ROOT_HUB = ("1d6b", ("0001", "0002", "0003"))  # what the kernel calls its own hubs


class Device:
    """One device of the text."""

    def __init__(self, match):
        self.bus = int(match[1])
        self.number = int(match[2])
        self.vendor, self.product = match[3], match[4]
        self.database_name = match[5]
        self.fields = {}

    @property
    def is_root_hub(self):
        return self.vendor == ROOT_HUB[0] and self.product in ROOT_HUB[1]

    def own_text(self, field):
        """Returns the string descriptor after its number, or None if the device has no such string."""
        number, _, text = self.fields[field].partition(" ")
        return text if number != "0" and text else None

    @property
    def version(self):
        """Returns bcdUSB as a decimal number."""
        major, _, minor = self.fields["bcdUSB"].partition(".")
        return str(int(major, 16) << 8 | int(minor, 16))


def parse(text):
    devices = []
    for line in text.splitlines():
        header = re.match(r"Bus (\d{3}) Device (\d{3}): ID ([0-9a-f]{4}):([0-9a-f]{4}) (.*)", line)
        field = re.match(r"  (\w+) +(\S.*?) *$", line)
        if header:
            devices.append(Device(header))
        elif field and devices:
            devices[-1].fields.setdefault(field[1], field[2])
    return devices


def read_attribute(folder, name):
    path = folder / name
    return path.read_text(encoding="utf-8", errors="replace").strip() if path.is_file() else None


def find_folders(tree):
    """Maps (bus, device number) to the device's folder."""
    found = {}
    for folder in sorted((tree / "sys/bus/usb/devices").iterdir()):
        bus, number = read_attribute(folder, "busnum"), read_attribute(folder, "devnum")
        if bus and number:
            found[int(bus), int(number)] = folder
    return found


def port_of(name):
    """Returns the name of the port of a device: "1-2.3" is in port 3 of 1-2, "1-2" in port 2 of usb1."""
    hub, separator, number = name.rpartition(".")
    if not separator:
        bus, _, number = name.partition("-")
        hub = f"usb{bus}"
    return f"USB port {number} of {hub}"


def explain_name(theirs, ours):
    if ours.removeprefix("USB port with ") == squeezed(theirs):
        return "blanks in a row are one"
    return None


def squeezed(text):
    return " ".join(text.split())


def compare_device(machine, device, folder, ports, agreement):
    port = ports.get(port_of(folder.name), {})
    maker, product = device.own_text("iManufacturer"), device.own_text("iProduct")
    name = device.database_name if not maker and not product else None
    if maker and product:
        name = product if product.startswith(maker + " ") else f"{maker} {product}"
    if name is not None:
        agreement.compare(machine, folder.name, "USB port: what is plugged in", f"USB port with {name}",
                          port.get("Description"), explain_name)
    agreement.compare(machine, folder.name, "USB port: Speed", megabits(read_attribute(folder, "speed")),
                      port.get("Speed"))


def megabits(text):
    return str(int(float(text) * 1_000_000))


def compare_machine(machine, devices, folders, instances, agreement):
    ports = {instance["ElementName"]: instance for instance in instances.get("KELSG_USBPort", [])}
    taken = [name for name, instance in ports.items() if instance["Description"] != "USB port, empty"]
    attached = [device for device in devices if not device.is_root_hub]
    agreement.compare(machine, "ports", "USB port: those taken",
                      sorted(port_of(folders[device.bus, device.number].name) for device in attached), sorted(taken))
    hubs = [device for device in devices if device.fields["bDeviceClass"].startswith("9 ")]
    counted = sum(int(read_attribute(folders[hub.bus, hub.number], "maxchild")) for hub in hubs)
    agreement.compare(machine, "ports", "USB port: count", counted, len(ports))
    for device in attached:
        compare_device(machine, device, folders[device.bus, device.number], ports, agreement)
    controllers = {instance["DeviceID"]: instance for instance in instances.get("KELSG_USBController", [])}
    for device in devices:
        if device.is_root_hub:
            # The serial number of a root hub is the address of its controller.
            address = device.own_text("iSerial")
            agreement.compare(machine, address, "USB controller: USBVersion", device.version,
                              controllers.get(address, {}).get("USBVersion"))


def compare(captures, noxinfo, agreement):
    for name in DEVICES:
        with agreement.attempt(name), sysroot.unpacked(captures / f"usb/{name}.sysroot.tar.gz") as tree:
            devices = parse((captures / f"usb/{name}.lsusb-v.txt").read_text(encoding="utf-8"))
            compare_machine(name, devices, find_folders(tree), namespace.collect(noxinfo, tree), agreement)
