"""Compares processors, boards and machines of captured trees with lscpu, hwloc and other decodes."""

import json
import re
import xml.etree.ElementTree as ElementTree

from capture_comparison import namespace, sysroot

LSCPU = {  # tree -> folder in it
    "hwloc-32em64t-2n8c+dax+nvme+mic+dimms.tar.bz2": "32em64t-2n8c+1mic",
    "hwloc-20em64t-hybrid-1p6c2t+2ca4co1t.tar.bz2": "20em64t-hybrid-1p6c2t+2ca4co1t",
    "hwloc-8em64t-2s2ca2c-buggynuma.tar.bz2": "8em64t-2s2ca2c-buggynuma",
    "hwloc-64amd64-4s2n4ca2co.tar.bz2": "64amd64-4s2n4ca2co",
    "hwloc-memorysidecaches.tar.bz2": "memorysidecaches",
    "lscpu-x86_64-64cpu.tar.gz": "x86_64-64cpu",
    "lscpu-x86_64-dell_e4310.tar.gz": "x86_64-dell_e4310",
    "lscpu-vbox-win.tar.gz": "vbox-win",
    "lscpu-x86_64-epyc_7451.tar.gz": "x86_64-epyc_7451",
    "lscpu-armv7.tar.gz": "armv7",
}
HWLOC = {
    "hwloc-20em64t-hybrid-1p6c2t+2ca4co1t.tar.bz2": "20em64t-hybrid-1p6c2t+2ca4co1t",
    "hwloc-8em64t-2s2ca2c-buggynuma.tar.bz2": "8em64t-2s2ca2c-buggynuma",
    "hwloc-64amd64-4s2n4ca2co.tar.bz2": "64amd64-4s2n4ca2co",
    "hwloc-memorysidecaches.tar.bz2": "memorysidecaches",
    "hwloc-2i386-2c-nohugepage.tar.bz2": "2i386-2c-nohugepage",
    "hwloc-32em64t-2n8c+dax+nvme+mic+dimms.tar.bz2": "32em64t-2n8c+1mic",
}
MACHINE_INFO = ("nto-master.sysinfo.tgz", "nto-sno.sysinfo.tgz")


def squeezed(text):
    text = " ".join((text or "").split())
    return text or None


def stem(archive):
    return re.sub(r"\.(tar\.\w+|sysinfo\.tgz)$", "", archive)


def parse_lscpu(text):
    return dict(re.findall(r"^([^:\n#]+): +(\S.*?) *$", text, re.MULTILINE))


def explain_model(theirs, ours):
    if ours and ours.startswith("package "):
        return "processors of other architectures tell numbers, no name: they are known by their package"
    return None


def compare_lscpu(machine, facts, instances, agreement):
    processors = instances.get("KELSG_Processor", [])
    agreement.compare(machine, "processors", "processor: count", facts.get("Socket(s)"), str(len(processors)))
    fastest = facts.get("CPU max MHz")
    wide = {"32-bit": "32", "64-bit": "64"}.get(facts.get("CPU op-mode(s)", "").split(", ")[-1])
    for processor in processors:
        def check(field, theirs, explain=None, processor=processor):
            agreement.compare(machine, processor["DeviceID"], f"processor: {field}", theirs, processor.get(field),
                              explain)

        check("ElementName", squeezed(facts.get("Model name")), explain_model)
        check("MaxClockSpeed", fastest and str(int(float(fastest))))
        check("AddressWidth", wide)
        check("DataWidth", wide)
        check("NumberOfEnabledCores", facts.get("Core(s) per socket"), explain_cores)
    compare_lscpu_caches(machine, facts, instances, agreement)
    compare_lscpu_nodes(machine, facts, instances, agreement)


def explain_cores(theirs, ours):
    if ours is None:
        return "without SMBIOS the number is that of the kernel, which other architectures do not show"
    return None


# lscpu's name of a cache -> Level and CacheType.
CACHES = {"L1d": ("3", "4"), "L1i": ("3", "3"), "L2": ("4", "5"), "L2d": ("4", "4"), "L3": ("5", "5")}
UNITS = {"KiB": 2**10, "MiB": 2**20, "GiB": 2**30}


CACHE_REASONS = {
    "hwloc-64amd64-4s2n4ca2co": "shared_cpu_list and shared_cpu_map of this old kernel differ; lscpu reads the map",
    "lscpu-vbox-win": "the hypervisor lists a cache of the first level twice, and lscpu shows it once",
}
WITHOUT_CPU_LISTS = {"lscpu-x86_64-64cpu", "lscpu-x86_64-dell_e4310", "lscpu-x86_64-epyc_7451"}


def explain_nodes(machine):
    return "the tree lacks node*/cpulist, which every kernel has; lscpu reads cpumap" \
        if machine in WITHOUT_CPU_LISTS else None


def compare_lscpu_caches(machine, facts, instances, agreement):
    ours = instances.get("CIM_CacheMemory", [])
    for name, (level, kind) in CACHES.items():
        theirs = re.fullmatch(r"([\d.]+) (\w+) \((\d+) instances?\)", facts.get(f"{name} cache", ""))
        found = [cache for cache in ours if (cache.get("Level"), cache.get("CacheType")) == (level, kind)]
        agreement.compare(machine, f"{name} caches", "cache: count", theirs[3] if theirs else None,
                          str(len(found)) if found else None, lambda *_: CACHE_REASONS.get(machine))
        total = sum(int(cache["NumberOfBlocks"]) for cache in found)
        if theirs and theirs[2] in UNITS:  # lscpu prints one decimal at most
            shown = f"{int(total / UNITS[theirs[2]] * 10 + 0.5) / 10:g}"
            agreement.compare(machine, f"{name} caches", "cache: total size", theirs[1], shown,
                              lambda *_: CACHE_REASONS.get(machine))


def compare_lscpu_nodes(machine, facts, instances, agreement):
    theirs = sorted(int(match[1]) for name in facts if (match := re.fullmatch(r"NUMA node(\d+) CPU\(s\)", name)))
    ours = {int(node) for processor in instances.get("KELSG_Processor", []) for node in processor.get("NUMANodes", [])}
    agreement.compare(machine, "processors", "processor: NUMANodes", theirs or None, sorted(ours) or None,
                      lambda *_: explain_nodes(machine))


def parse_console(text):
    """Returns (facts of the machine, facts of each package) from lines of 'Name=value' and 'Name="value"'."""
    def facts(line):
        return {name: value.strip('"') for name, value in re.findall(r'(\w+)=("[^"]*"|[^ )]+)', line)}

    lines = text.splitlines()
    packages = [facts(line) for line in lines if re.match(r" *Package ", line)]
    return facts(lines[0]), packages


def parse_xml(text):
    def facts(element):
        return {info.get("name"): info.get("value") for info in element.findall("info")}

    root = ElementTree.fromstring(text)
    machine = next(element for element in root.iter("object") if element.get("type") == "Machine")
    packages = [facts(element) for element in root.iter("object") if element.get("type") in ("Package", "Socket")]
    inherited = facts(machine)  # older editions say the model once, of the machine
    return inherited, [{"CPUModel": inherited.get("CPUModel"), **package} for package in packages]


def compare_hwloc(machine, facts, packages, instances, agreement):
    system = instances["KELSG_ComputerSystem"][0]
    boards = instances.get("KELSG_Card", [])
    for field, name in (("Manufacturer", "DMISysVendor"), ("ProductName", "DMIProductName")):
        if name in facts:
            agreement.compare(machine, "system", f"system: {field}", squeezed(facts[name]), squeezed(system.get(field)))
    if boards:
        for field, name in (("Manufacturer", "DMIBoardVendor"), ("Model", "DMIBoardName"),
                            ("Version", "DMIBoardVersion"), ("UserTracking", "DMIBoardAssetTag")):
            if name in facts:
                agreement.compare(machine, "board", f"board: {field}", squeezed(facts[name]),
                                  squeezed(boards[0].get(field)), explain_filler)
    processors = instances.get("KELSG_Processor", [])
    agreement.compare(machine, "packages", "package: count", len(packages), len(processors))
    for package, processor in zip(packages, processors):
        agreement.compare(machine, processor["DeviceID"], "package: model", squeezed(package.get("CPUModel")),
                          squeezed(processor.get("ElementName")))


def explain_filler(theirs, ours):
    return "a text that firmware leaves for want of a value counts as absent" \
        if ours is None and not re.search(r"\w\w", theirs) else None


def read_hwloc(folder, archive):
    console = folder / f"{stem(archive)}.hwloc.console"
    if console.is_file():
        return parse_console(console.read_text(encoding="utf-8"))
    return parse_xml((folder / f"{stem(archive)}.hwloc.xml").read_text(encoding="utf-8"))


def compare_machine_info(machine, info, instances, agreement):
    system = instances["KELSG_OperatingSystem"][0]
    agreement.compare(machine, "processors", "processor: count", str(info["num_sockets"]),
                      str(len(instances.get("KELSG_Processor", []))))
    for field, name in (("TotalVisibleMemorySize", "memory_capacity"), ("TotalSwapSpaceSize", "swap_capacity")):
        agreement.compare(machine, "memory", f"memory: {field}", str(info[name] // 1024), system.get(field))


def compare(captures, noxinfo, agreement):
    folder = captures / "trees"
    for archive, root in LSCPU.items():
        decodes = [folder / f"{stem(archive)}.{ending}" for ending in ("lscpu.txt", "expected.txt")]
        with agreement.attempt(stem(archive)), sysroot.unpacked(folder / archive, root) as tree:
            text = next(path for path in decodes if path.is_file()).read_text(encoding="utf-8")
            compare_lscpu(stem(archive), parse_lscpu(text), namespace.collect(noxinfo, tree), agreement)
    for archive, root in HWLOC.items():
        with agreement.attempt(stem(archive)), sysroot.unpacked(folder / archive, root) as tree:
            facts, packages = read_hwloc(folder, archive)
            compare_hwloc(stem(archive), facts, packages, namespace.collect(noxinfo, tree), agreement)
    for archive in MACHINE_INFO:
        with agreement.attempt(stem(archive)), sysroot.unpacked(folder / archive) as tree:
            info = json.loads((tree / "machineinfo.json").read_text(encoding="utf-8"))
            compare_machine_info(stem(archive), info, namespace.collect(noxinfo, tree), agreement)
