"""Compares chassis, caches, memory slots, power supplies and batteries of captured SMBIOS tables with the output of
dmidecode."""

import re

from capture_comparison.dmidecode_values import (
    boolean, check_keys, code, explain_locator, explain_text, number, size, squeezed)

SOLDERED = {"Chip", "Row Of Chips", "Die"}
CORRECTIONS = {"None": "None", "Parity": "Parity", "Single-bit ECC": "Single-bit ECC",
               "Multi-bit ECC": "Multi-bit ECC", "CRC": "CRC"}


def is_populated(device):
    return device.fields.get("Size") not in (None, "No Module Installed")


def compare_memory_slots(machine, records, instances, agreement):
    slots = [record for record in records if record.kind == 17 and record.fields.get("Form Factor") not in SOLDERED]
    ours = instances.get("CIM_PhysicalConnector", [])
    agreement.compare(machine, "memory slots", "memory slot: count", len(slots), len(ours))
    check_keys(machine, "memory slot", "Tag", ours, agreement)
    contents = {content["Antecedent"]: content["Dependent"] for content in instances.get("CIM_ElementInConnector", [])}
    agreement.compare(machine, "memory slots", "memory slot: count of modules",
                      sum(is_populated(slot) for slot in slots), len(contents))
    if len(slots) != len(ours):
        return
    for device, slot in zip(slots, ours):
        place = f"memory slot {device.handle:#06x}"
        agreement.compare(machine, place, "memory slot: ElementName", device.text("Locator"), slot.get("ElementName"),
                          explain_slot_name)
        agreement.compare(machine, place, "memory slot: BankLabel", device.text("Bank Locator"),
                          slot.get("BankLabel"), explain_text)
        agreement.compare(machine, place, "memory slot: is empty", not is_populated(device),
                          slot["Description"].startswith("Empty"))


def explain_slot_name(theirs, ours):
    if theirs is not None and ours is not None and squeezed(theirs) == ours:
        return "runs of blanks are one blank in names"
    return explain_locator(theirs, ours)


def compare_module_details(machine, records, instances, agreement):
    arrays = {f"0x{record.handle:04X}": record for record in records if record.kind == 16}
    devices = [record for record in records if record.kind == 17 and is_populated(record)]
    ours = instances.get("KELSG_SPDData", [])
    if len(devices) != len(ours):
        return
    for device, module in zip(devices, ours):
        def check(field, theirs, device=device, module=module):
            agreement.compare(machine, f"memory device {device.handle:#06x}", f"memory: {field}", theirs,
                              module.get(field))

        check("ConfiguredMemoryClockSpeed", number(device.fields.get("Configured Memory Speed"), "MT/s"))
        volts = re.fullmatch(r"([\d.]+) V", device.fields.get("Configured Voltage") or "")
        check("ConfiguredVoltage", str(round(float(volts[1]) * 1000)) if volts else None)
        rank = device.fields.get("Rank")
        check("Rank", rank if rank and rank.isdigit() else None)
        array = arrays.get(device.fields.get("Array Handle"))
        check("ErrorMethodology", expected_correction(device, array))


def expected_correction(device, array):
    correction = CORRECTIONS.get(array.fields.get("Error Correction Type")) if array else None
    total = number(device.fields.get("Total Width"), "bits")
    data = number(device.fields.get("Data Width"), "bits")
    has_check_bits = total is not None and data is not None and int(total) > int(data) > 0
    return correction if correction == "None" or has_check_bits else None


def compare_memory_capacities(machine, records, instances, agreement):
    arrays = [record for record in records if record.kind == 16]
    ours = instances.get("CIM_MemoryCapacity", [])
    agreement.compare(machine, "memory arrays", "memory capacity: count", len(arrays), len(ours))
    for array, capacity in zip(arrays, ours):
        place = f"memory array {array.handle:#06x}"
        theirs = size(array.fields.get("Maximum Capacity"))
        agreement.compare(machine, place, "memory capacity: maximum", str(int(theirs) // 1024) if theirs else None,
                          capacity.get("MaximumMemoryCapacity"))
        devices = re.search(r", (\d+) devices?", capacity["Description"])
        agreement.compare(machine, place, "memory capacity: devices", array.fields.get("Number Of Devices"),
                          devices[1] if devices else "0")
        correction = re.search(r"error correction: (.*)", capacity["Description"])
        agreement.compare(machine, place, "memory capacity: error correction",
                          CORRECTIONS.get(array.fields.get("Error Correction Type")),
                          correction[1] if correction else None)


def compare_processor_counts(machine, records, instances, agreement):
    sockets = [record for record in records if record.kind == 4 and record.fields.get("Type") == "Central Processor"
               and str(record.fields.get("Status", "")).startswith("Populated")]
    ours = instances.get("KELSG_Processor", [])
    if len(sockets) != len(ours):
        return
    for socket, processor in zip(sockets, ours):
        for field, name in (("NumberOfProcessorCores", "Core Count"), ("NumberOfEnabledCores", "Core Enabled"),
                            ("NumberOfHardwareThreads", "Thread Count")):
            agreement.compare(machine, f"processor {socket.handle:#06x}", f"processor: {field}",
                              socket.fields.get(name), processor.get(field))


OTHER_KINDS = {"Other", "Unknown", "<OUT OF SPEC>"}


def compare_chassis(machine, records, instances, agreement):
    chassis = [record for record in records if record.kind == 3]
    ours = instances.get("CIM_Chassis", [])
    agreement.compare(machine, "chassis", "chassis: count", len(chassis), len(ours))
    check_keys(machine, "chassis", "Tag", ours, agreement)
    if len(chassis) != len(ours):
        return
    for record, instance in zip(chassis, ours):
        def check(field, theirs, explain=None, record=record, instance=instance):
            agreement.compare(machine, f"chassis {record.handle:#06x}", f"chassis: {field}", theirs,
                              instance.get(field), explain)

        for field, name in (("Manufacturer", "Manufacturer"), ("Version", "Version"),
                            ("SerialNumber", "Serial Number"), ("UserTracking", "Asset Tag"), ("SKU", "SKU Number")):
            check(field, record.text(name), explain_text)
        kind = record.fields.get("Type")
        check("ChassisTypeDescription", None if kind in OTHER_KINDS else kind, explain_kind)
        check("LockPresent", "TRUE" if record.fields.get("Lock") == "Present" else None)
        cords = record.fields.get("Number Of Power Cords")
        check("NumberOfPowerCords", cords if cords and cords.isdigit() else None)
        height = number(record.fields.get("Height"), "U")
        ours_height = instance.get("Height")
        agreement.compare(machine, f"chassis {record.handle:#06x}", "chassis: Height",
                          int(height) * 1.75 if height else None, float(ours_height) if ours_height else None,
                          lambda theirs, _, record=record: "dmidecode prints no height in records without power cords"
                          if theirs is None and "Height" not in record.fields else None)


def explain_kind(theirs, ours):
    def letters(text):
        return re.sub(r"[^a-z]", "", (text or "").lower().replace("chassis", ""))

    return "the same kind in another spelling" if theirs and ours and letters(theirs) == letters(ours) else None


def explain_cache_count(theirs, ours):
    if theirs == 0 and ours:
        return "dmidecode prints the extended size, which some firmware leaves 0 beside the size"
    return None


CACHE_KINDS = {"Other": 1, "Instruction": 3, "Data": 4, "Unified": 5}
ASSOCIATIVITIES = {"Other": 1, "Direct Mapped": 3, "2-way Set-associative": 4, "4-way Set-associative": 5,
                   "Fully Associative": 6, "8-way Set-associative": 7, "16-way Set-associative": 8,
                   "12-way Set-associative": 1, "24-way Set-associative": 1, "32-way Set-associative": 1,
                   "48-way Set-associative": 1, "64-way Set-associative": 1, "20-way Set-associative": 1}
POLICIES = {"Write Back": 3, "Write Through": 4, "Varies With Memory Address": 5}
LEVELS = {"1": 3, "2": 4, "3": 5}


def is_installed(cache):
    return size(cache.fields.get("Installed Size")) not in (None, "0") \
        and "Not Installed" not in str(cache.fields.get("Configuration"))


def compare_caches(machine, records, instances, agreement):
    caches = [record for record in records if record.kind == 7 and is_installed(record)]
    ours = instances.get("CIM_CacheMemory", [])
    agreement.compare(machine, "caches", "cache: count", len(caches), len(ours), explain_cache_count)
    check_keys(machine, "cache", "DeviceID", ours, agreement)
    if len(caches) != len(ours):
        return
    for record, cache in zip(caches, ours):
        def check(field, theirs, explain=None, record=record, cache=cache):
            agreement.compare(machine, f"cache {record.handle:#06x}", f"cache: {field}", theirs, cache.get(field),
                              explain)

        check("ElementName", record.text("Socket Designation"), explain_slot_name)
        check("NumberOfBlocks", size(record.fields["Installed Size"]))
        level = re.search(r"Level (\d)", record.fields.get("Configuration", ""))
        check("Level", str(LEVELS.get(level[1], 1)) if level else None)
        check("CacheType", code(CACHE_KINDS, record.fields.get("System Type")))
        check("Associativity", code(ASSOCIATIVITIES, record.fields.get("Associativity")))
        check("WritePolicy", code(POLICIES, record.fields.get("Operational Mode")))


def identities(instance):
    return dict(zip(instance.get("IdentifyingDescriptions", []), instance.get("OtherIdentifyingInfo", [])))


def compare_power_supplies(machine, records, instances, agreement):
    supplies = [record for record in records if record.kind == 39
                and str(record.fields.get("Status", "")).startswith("Present")]
    ours = instances.get("CIM_PowerSupply", [])
    agreement.compare(machine, "power supplies", "power supply: count", len(supplies), len(ours))
    check_keys(machine, "power supply", "DeviceID", ours, agreement)
    if len(supplies) != len(ours):
        return
    for record, supply in zip(supplies, ours):
        place = f"power supply {record.handle:#06x}"
        for field, name in (("Manufacturer", "Manufacturer"), ("Part number", "Model Part Number"),
                            ("Revision", "Revision"), ("Serial number", "Serial Number"),
                            ("Asset tag", "Asset Tag"), ("Location", "Location")):
            agreement.compare(machine, place, f"power supply: {field}", record.text(name),
                              identities(supply).get(field), explain_text)
        watts = number(record.fields.get("Max Power Capacity"), "W")
        agreement.compare(machine, place, "power supply: TotalOutputPower",
                          str(int(watts) * 1000) if watts else None, supply.get("TotalOutputPower"))
        kind = record.fields.get("Type")
        agreement.compare(machine, place, "power supply: IsSwitchingSupply",
                          boolean(kind == "Switching" if kind in ("Linear", "Switching") else None),
                          supply.get("IsSwitchingSupply"))


def compare_batteries(machine, records, instances, agreement):
    batteries = [record for record in records if record.kind == 22]
    ours = instances.get("CIM_Battery", [])
    agreement.compare(machine, "batteries", "battery: count", len(batteries), len(ours))
    check_keys(machine, "battery", "DeviceID", ours, agreement)
    if len(batteries) != len(ours):
        return
    for record, battery in zip(batteries, ours):
        place = f"battery {record.handle:#06x}"
        for field, unit in (("DesignCapacity", "mWh"), ("DesignVoltage", "mV")):
            name = re.sub(r"(?<=[a-z])(?=[A-Z])", " ", field)
            agreement.compare(machine, place, f"battery: {field}", number(record.fields.get(name), unit),
                              battery.get(field))
        serial = record.text("Serial Number") or record.text("SBDS Serial Number")
        for field, theirs in (("Manufacturer", record.text("Manufacturer")), ("Serial number", serial)):
            agreement.compare(machine, place, f"battery: {field}", theirs, identities(battery).get(field),
                              explain_text)


COMPARED = (compare_memory_slots, compare_module_details, compare_memory_capacities, compare_processor_counts,
            compare_chassis, compare_caches, compare_power_supplies, compare_batteries)
