"""Trees to collect from: unpacked archives of captures, and trees put together from parts of a machine."""

import contextlib
import pathlib
import shutil
import tarfile
import tempfile


@contextlib.contextmanager
def unpacked(archive, root="."):
    """Unpacks the folder `root` of an archive, without device nodes, and removes it at the end of the context."""
    with tempfile.TemporaryDirectory(prefix="captures-") as folder:
        with tarfile.open(archive) as tar:
            members = [member for member in tar if member.isfile() or member.isdir() or member.issym()]
            for member in members:
                member.mode |= 0o700 if member.isdir() else 0o600
            tar.extractall(folder, members)
        yield pathlib.Path(folder) / root


class Tree:
    """A tree that is put together file by file; paths are those on the machine."""

    def __init__(self, root):
        self.root = pathlib.Path(root)

    def _place(self, path):
        place = self.root / str(path).lstrip("/")
        place.parent.mkdir(parents=True, exist_ok=True)
        return place

    def add(self, path, content):
        place = self._place(path)
        place.write_bytes(content if isinstance(content, bytes) else (content + "\n").encode())

    def link(self, path, target):
        place = self._place(path)
        if not place.is_symlink():
            place.symlink_to(target)

    def folder(self, path):
        self._place(path).mkdir(exist_ok=True)


@contextlib.contextmanager
def assembled():
    """Makes an empty tree and removes it at the end of the context."""
    folder = tempfile.mkdtemp(prefix="captures-")
    try:
        yield Tree(folder)
    finally:
        shutil.rmtree(folder)
