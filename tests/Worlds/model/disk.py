"""The real disk: what the model's tree is held against, and where the user's edits are made."""

import ctypes
import os
import shutil
import stat
import tempfile
from urllib.parse import unquote_to_bytes

CAPTURE = "user.kMDItemIsScreenCapture"
NANO = 1_000_000_000

libc = ctypes.CDLL(None, use_errno=True)
_BIRTH = 0x800  # STATX_BTIME
_BIRTH_OFFSET = 80  # of stx_btime in struct statx, see statx(2)
_LINK_ITSELF = 0x100  # AT_SYMLINK_NOFOLLOW


def born(path):
    """Seconds since 1970, or None where the file system keeps no time of birth."""
    buffer = ctypes.create_string_buffer(256)
    if libc.statx(-100, os.fsencode(path), _LINK_ITSELF, _BIRTH, buffer) != 0:
        raise OSError(ctypes.get_errno(), "statx", path)
    if not int.from_bytes(buffer[0:4], "little") & _BIRTH:
        return None
    whole = int.from_bytes(buffer[_BIRTH_OFFSET:_BIRTH_OFFSET + 8], "little", signed=True)
    part = int.from_bytes(buffer[_BIRTH_OFFSET + 8:_BIRTH_OFFSET + 12], "little")
    return whole + part / NANO


def times(path):
    """What the model cannot know."""
    status = os.lstat(path)
    modified = status.st_mtime_ns // NANO + status.st_mtime_ns % NANO / NANO
    birth = born(path)
    return {"added": status.st_ctime_ns // NANO + status.st_ctime_ns % NANO / NANO,
            "lastOpened": status.st_atime_ns // NANO + status.st_atime_ns % NANO / NANO,
            "created": modified if birth is None else birth}


def read(path):
    """Without touching the time of opening."""
    descriptor = os.open(path, os.O_RDONLY | os.O_NOATIME)
    with open(descriptor, "rb") as file:
        return file.read()


def seen(root, left_out, trash):
    """Every path under `root` with what the model's nodes tell of themselves."""
    found = {}
    folders = [root]
    while folders:
        folder = folders.pop()
        found[folder] = ("folder",)
        with os.scandir(folder) as entries:
            for entry in entries:
                if entry.path == left_out:
                    continue
                if entry.is_dir(follow_symlinks=False):
                    folders.append(entry.path)
                elif entry.is_symlink():
                    found[entry.path] = ("link", os.readlink(entry.path))
                elif folder == f"{trash}/info":
                    found[entry.path] = ("record", origin(entry.path))
                else:
                    found[entry.path] = _file(entry.path)
    return found


def _file(path):
    status = os.lstat(path)
    if not stat.S_ISREG(status.st_mode):
        return (f"mode {status.st_mode:o}",)
    is_capture = CAPTURE in os.listxattr(path, follow_symlinks=False)
    return ("file", read(path), status.st_mtime_ns, stat.S_IMODE(status.st_mode), is_capture)


def origin(record):
    """The path that a record in the Trash names; its whole content when it is no record."""
    content = read(record)
    lines = content.split(b"\n")
    if len(lines) != 4 or lines[0] != b"[Trash Info]" or not lines[1].startswith(b"Path=") \
            or not lines[2].startswith(b"DeletionDate=") or lines[3] != b"":
        return content
    return os.fsdecode(unquote_to_bytes(lines[1][5:]))


def fast_folder(prefix):
    """A new folder for a test: in memory, where every save waits for the disk no time, if files can carry attributes
    there, else in the usual place."""
    for parent in ("/dev/shm", None):
        if parent and not os.access(parent, os.W_OK):
            continue
        folder = tempfile.mkdtemp(prefix=prefix, dir=parent)
        if parent is None or keeps_marks(folder):
            return os.path.realpath(folder)
        os.rmdir(folder)
    return None


def keeps_marks(folder):
    """Whether files in the folder can be marked as screen captures."""
    try:
        with tempfile.NamedTemporaryFile(dir=folder) as file:
            os.setxattr(file.name, CAPTURE, b"1")
        return True
    except OSError:
        return False


def write(path, content, modified, opened, mode, is_capture):
    """Times in nanoseconds."""
    with open(path, "xb") as file:
        file.write(content)
    if is_capture:
        os.setxattr(path, CAPTURE, b"1")
    os.chmod(path, mode)
    os.utime(path, ns=(opened, modified))


def remove(path):
    if os.path.isdir(path) and not os.path.islink(path):
        shutil.rmtree(path)
    else:
        os.remove(path)
