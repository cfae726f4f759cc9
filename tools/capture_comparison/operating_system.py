"""Compares release files of many distributions with the shell and with another library."""

import functools
import json
import shlex
import tarfile

from capture_comparison import namespace, sysroot


def read_assignments(text):
    """Returns the variables as a shell would set them, and unquoted values with blanks whole."""
    values = {}
    for line in text.splitlines():
        name, separator, value = line.strip().partition("=")
        if not separator or name.startswith("#"):
            continue
        if not set(value) & set("'\"\\"):  # people write blanks without quotes, too
            values[name] = value.strip()
            continue
        try:
            words = shlex.split(value)
        except ValueError:  # an open quote
            continue
        values[name] = words[0] if words else ""
    return values


def compare_release(machine, release, tree, noxinfo, agreement, explain=lambda theirs, ours: None):
    """`release`: variable -> value, empty when the machine has no such file."""
    system = namespace.collect(noxinfo, tree)["KELSG_OperatingSystem"][0]
    name = release.get("PRETTY_NAME") or release.get("NAME") or read_maker_file(tree) or "Linux"
    agreement.compare(machine, "system", "operating system: ElementName", name, system.get("ElementName"),
                      lambda theirs, ours: explain_blanks(theirs, ours) or explain(theirs, ours))
    agreement.compare(machine, "system", "operating system: Version", release.get("VERSION_ID") or None,
                      system.get("Version"),
                      lambda theirs, ours: explain_version(theirs, ours) or explain(theirs, ours))


def read_maker_file(tree):
    """Returns the first line of the release file that distributions used before os-release."""
    for path, prefix in (("redhat-release", ""), ("SuSE-release", ""), ("debian_version", "Debian GNU/Linux ")):
        file = tree / "etc" / path
        lines = file.read_text(errors="replace").split("\n") if file.is_file() else [""]
        if lines[0].strip():
            return prefix + lines[0].strip()
    return None


def explain_blanks(theirs, ours):
    return "blanks at both ends are left out" if ours is not None and theirs.strip() == ours else None


def explain_version(theirs, ours):
    return "without a version of its own the system has that of its kernel" \
        if theirs is None and ours and ours[0].isdigit() else None


def compare_text(machine, text, noxinfo, agreement):
    with agreement.attempt(machine), sysroot.assembled() as tree:
        tree.add("/etc/os-release", text)
        compare_release(machine, read_assignments(text), tree.root, noxinfo, agreement)


def compare_samples(archive, noxinfo, agreement):
    with tarfile.open(archive) as tar:
        for member in tar:
            if member.isfile():
                text = tar.extractfile(member).read().decode(errors="replace")
                compare_text(member.name, text, noxinfo, agreement)


def compare_roots(archive, noxinfo, agreement):
    with sysroot.unpacked(archive) as folder:
        for root in sorted(path for path in folder.iterdir() if path.is_dir()):
            with agreement.attempt(root.name):
                files = [root / "etc/os-release", root / "usr/lib/os-release"]
                text = next((path.read_text() for path in files if path.is_file()), "")
                compare_release(root.name, read_assignments(text), root, noxinfo, agreement)


def compare_facts(archive, noxinfo, agreement):
    """Compares with the values that a distribution library reads from the same files."""
    with tarfile.open(archive) as tar:
        for member in tar:
            if not member.isfile():
                continue
            with agreement.attempt(member.name), sysroot.assembled() as tree:
                facts = json.load(tar.extractfile(member))
                inputs = facts["input"]
                shell = read_assignments(inputs.get("/etc/os-release") or inputs.get("/usr/lib/os-release", ""))
                library = facts.get("distro", {}).get("os_release_info", {})
                for path, text in inputs.items():
                    tree.add(path, text)
                compare_release(member.name, {name.upper(): value for name, value in library.items()} or shell,
                                tree.root, noxinfo, agreement, functools.partial(explain_facts, shell))


def explain_facts(shell, _, ours):
    if not shell:
        return "a system without the release files that are read here has no name; the library reads more of them"
    if ours in (shell.get("PRETTY_NAME"), shell.get("VERSION_ID")):
        return "the library's values are not those of the file beside them, which the shell reads as here"
    return None


def compare(captures, noxinfo, agreement):
    compare_samples(captures / "os/os_release-samples.tar.gz", noxinfo, agreement)
    compare_roots(captures / "os/go-sysinfo-roots.tar.gz", noxinfo, agreement)
    compare_facts(captures / "os/ansible-distribution-fixtures.tar.gz", noxinfo, agreement)
