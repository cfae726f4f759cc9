"""Collects a machine from its captured tree and reads the namespace back."""

import subprocess
import xml.etree.ElementTree as ElementTree


def collect(vorhost, sysroot):
    """The instances of every class, in order, each as {property: text or list of texts}."""
    run = subprocess.run([vorhost, "snapshot", "--sysroot", str(sysroot), "-"], capture_output=True, check=True,
                         timeout=60)
    instances = {}
    for instance in ElementTree.fromstring(run.stdout).iter("INSTANCE"):
        properties = {}
        for element in instance.findall("PROPERTY"):
            if element.find("VALUE") is not None:
                properties[element.get("NAME")] = element.findtext("VALUE")
        for element in instance.findall("PROPERTY.ARRAY"):
            properties[element.get("NAME")] = [value.text for value in element.iter("VALUE")]
        instances.setdefault(instance.get("CLASSNAME"), []).append(properties)
    return instances
