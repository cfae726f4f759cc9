#!/usr/bin/env python3
"""What compare-captures makes of data that is incomplete: it finishes, and it counts what it cannot compare.

Usage: compare_captures_test.py TOOLS NOXINFO
"""

import contextlib
import io
import json
import pathlib
import sys
import tarfile
import tempfile
import unittest

TOOLS, NOXINFO = sys.argv[1:3]
sys.dont_write_bytecode = True
sys.path.insert(0, TOOLS)

from capture_comparison import block, operating_system, storage, sysroot, udev, udev_tree  # noqa: E402
from capture_comparison.agreement import Agreement  # noqa: E402
from capture_comparison.namespace import CollectionFailed  # noqa: E402


def printed(agreement):
    with contextlib.redirect_stdout(io.StringIO()) as output:
        agreement.print()
    return output.getvalue()


class AgreementTest(unittest.TestCase):
    def test_a_field_that_both_sides_lack_does_not_agree(self):
        agreement = Agreement("sample")
        agreement.compare("machine", "place", "field", None, None)
        self.assertEqual(agreement.totals(), (0, 0, 0, 0, 1, 0))
        self.assertFalse(agreement.is_explained())

    def test_values_of_one_side_alone_differ(self):
        agreement = Agreement("sample")
        agreement.compare("machine", "place", "field", "x", None)
        agreement.compare("machine", "place", "field", None, "x")
        agreement.compare("machine", "place", "field", "x", "x")
        self.assertEqual(agreement.totals(), (3, 1, 0, 2, 0, 0))

    def test_a_machine_that_cannot_be_read_is_counted_and_named(self):
        agreement = Agreement("sample")
        with agreement.attempt("broken"):
            raise KeyError("MAJOR")
        agreement.compare("whole", "place", "field", "x", "x")
        self.assertEqual(agreement.totals(), (1, 1, 0, 0, 0, 1))
        self.assertTrue(agreement.is_explained())
        self.assertIn("not compared, 1: the data cannot be read\n    broken: KeyError: 'MAJOR'\n", printed(agreement))

    def test_a_program_that_fails_is_a_difference(self):
        agreement = Agreement("sample")
        agreement.compare("whole", "place", "field", "x", "x")
        with agreement.attempt("machine"):
            raise CollectionFailed("exit status 1: out of memory")
        self.assertFalse(agreement.is_explained())
        self.assertIn("DIFFERS machine: exit status 1: out of memory\n", printed(agreement))


DISK = "/devices/pci0000:00/0000:00:05.0/host0/target0:0:0/0:0:0:0/block/sda"


def disk_record(**more):
    return {"DEVPATH": DISK, "DEVNAME": "/dev/sda", "DEVTYPE": "disk", "SUBSYSTEM": "block", "MAJOR": "8", "MINOR": "0",
            "ID_MODEL_ENC": "Sample", **more}


NVME_PATH = {"DEVPATH": "/devices/pci0000:00/0000:00:06.0/nvme/nvme0/nvme0c0n1", "DEVTYPE": "disk",
             "SUBSYSTEM": "block"}


class UdevTest(unittest.TestCase):
    def compare(self, *records):
        text = "\n\n".join("\n".join(f"E: {key}={value}" for key, value in record.items()) for record in records)
        agreement = Agreement("udev")
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "machine.txt"
            path.write_text(text, encoding="utf-8")
            with agreement.attempt("machine"):
                udev.compare_machine(path, NOXINFO, agreement)
        return agreement

    def test_a_path_of_nvme_has_no_node_and_is_no_disk(self):
        agreement = self.compare(disk_record(), NVME_PATH)
        self.assertTrue(agreement.is_explained(), printed(agreement))
        self.assertEqual(agreement.totals()[5], 0, printed(agreement))

    def test_the_number_of_a_partition_is_in_its_name_where_udev_has_none(self):
        self.assertEqual(udev_tree.partition_number({"DEVPATH": "/devices/x/sda/sda12"}), "12")
        self.assertEqual(udev_tree.partition_number({"DEVPATH": "/devices/x/sda/sda12", "PARTN": "3"}), "3")


class StorageTest(unittest.TestCase):
    def compare(self, probe):
        agreement = Agreement("storage")
        with tempfile.TemporaryDirectory() as folder, sysroot.assembled() as tree:
            path = pathlib.Path(folder) / "probe.json"
            path.write_text(json.dumps(probe), encoding="utf-8")
            with agreement.attempt("probe"):
                machine = storage.read_probert(path, tree)
                storage.compare_machine(machine, storage.namespace.collect(NOXINFO, tree.root), agreement)
        return agreement

    def test_a_reader_without_a_medium_is_a_disk_without_a_size(self):
        agreement = self.compare({"blockdev": {"/dev/sda": {**disk_record(), "attrs": {"size": "0"}}}, "raid": {},
                                  "lvm": {}})
        self.assertEqual(agreement.totals()[3:], (0, 1, 0), printed(agreement))

    def test_a_probe_without_sizes_arrays_and_volumes_is_compared(self):
        agreement = self.compare({"blockdev": {"/dev/sda": {**disk_record(), "attrs": {}}}})
        self.assertEqual(agreement.totals()[3:], (0, 1, 0), printed(agreement))

    def test_a_path_of_nvme_is_no_disk(self):
        agreement = self.compare({"blockdev": {"/dev/nvme0c0n1": {**NVME_PATH, "attrs": {"size": "1024000"}}}})
        self.assertEqual(agreement.totals()[3:], (0, 0, 0), printed(agreement))

    def test_a_probe_of_another_form_is_counted(self):
        agreement = self.compare({"devices": []})
        self.assertEqual(agreement.totals()[5], 1, printed(agreement))

    def test_partitions_of_a_mapped_set_are_compared_by_the_devices_of_the_mapper(self):
        def mapped(number, name, uuid, size):
            return {"DEVPATH": f"/devices/virtual/block/dm-{number}", "DEVTYPE": "disk", "SUBSYSTEM": "block",
                    "MAJOR": "253", "MINOR": str(number), "DM_NAME": name, "DM_UUID": uuid, "attrs": {"size": size}}
        agreement = self.compare({"blockdev": {"/dev/dm-0": mapped(0, "my\\x20set", "mpath-1", "2048000"),
                                               "/dev/dm-1": mapped(1, "my\\x20set1", "part1-mpath-1", "1024000")}})
        self.assertEqual(agreement.totals()[3:], (0, 0, 0), printed(agreement))
        self.assertIn("partition: Size                              1         1", printed(agreement))


class BlockTest(unittest.TestCase):
    def test_names_of_logical_volumes_are_those_that_lvs_prints(self):
        self.assertEqual(block.logical_volume_name("vg.a--b-lv"), "vg.a-b/lv")
        self.assertEqual(block.logical_volume_name("a---b"), "a-/b")
        self.assertEqual(block.logical_volume_name("plain"), "plain")

    def test_sizes_are_in_order_with_absent_ones_first(self):
        self.assertEqual(block.media_sizes([{"MaxMediaSize": "9"}, {}, {"MaxMediaSize": "10"}]), [None, 9, 10])
        self.assertEqual(block.kilobytes([2000, 0, 1000]), [None, 1, 2])


class OperatingSystemTest(unittest.TestCase):
    def test_bare_values_keep_their_blanks(self):
        self.assertEqual(operating_system.read_assignments("NAME=Debian GNU\nID='a b' c\nX=\"open\n"),
                         {"NAME": "Debian GNU", "ID": "a b"})

    def test_a_release_file_of_other_bytes_is_compared(self):
        agreement = Agreement("operating-system")
        with tempfile.TemporaryDirectory() as folder:
            archive = pathlib.Path(folder) / "samples.tar.gz"
            with tarfile.open(archive, "w:gz") as tar:
                content = b"NAME=Sample\nX=\xff\n"
                member = tarfile.TarInfo("sample")
                member.size = len(content)
                tar.addfile(member, io.BytesIO(content))
            operating_system.compare_samples(archive, NOXINFO, agreement)
        self.assertTrue(agreement.is_explained(), printed(agreement))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
