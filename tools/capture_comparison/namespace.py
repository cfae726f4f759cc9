"""Collects a machine from its captured tree, or the running one, and reads the namespace back."""

import pathlib
import subprocess
import xml.etree.ElementTree as ElementTree


class CollectionFailed(Exception):
    """The program failed to collect a namespace."""


def collect(noxinfo, sysroot):
    """Returns the instances of every class in order, each as {property: text, list of texts, or reference}."""
    root = pathlib.Path(sysroot)
    if not (root / "proc").is_dir() and not (root / "sys").is_dir():
        (root / "proc").mkdir()  # a release file alone is no machine's tree to the program
    return read_snapshot([noxinfo, "snapshot", "--sysroot", str(sysroot), "-"])


def collect_live(noxinfo):
    """Collects from the running machine; as collect."""
    return read_snapshot([noxinfo, "snapshot", "-"])


def reference(element):
    """Returns a reference as its class and its one key."""
    name = element.find(".//INSTANCENAME")
    return name.get("CLASSNAME"), name.findtext(".//KEYVALUE")


def read_snapshot(command):
    try:
        run = subprocess.run(command, capture_output=True, check=True, timeout=60)
        root = ElementTree.fromstring(run.stdout)
    except subprocess.CalledProcessError as error:
        lines = error.stderr.decode(errors="replace").strip().splitlines()
        raise CollectionFailed(f"exit status {error.returncode}: {lines[-1] if lines else ''}") from error
    except (OSError, subprocess.TimeoutExpired, ElementTree.ParseError) as error:
        raise CollectionFailed(str(error)) from error
    instances = {}
    for instance in root.iter("INSTANCE"):
        properties = {}
        for element in instance.findall("PROPERTY"):
            if element.find("VALUE") is not None:
                properties[element.get("NAME")] = element.findtext("VALUE")
        for element in instance.findall("PROPERTY.ARRAY"):
            properties[element.get("NAME")] = [value.text for value in element.iter("VALUE")]
        for element in instance.findall("PROPERTY.REFERENCE"):
            if element.find(".//KEYVALUE") is not None:
                properties[element.get("NAME")] = reference(element)
        instances.setdefault(instance.get("CLASSNAME"), []).append(properties)
    return instances
