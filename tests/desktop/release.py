"""What the maker of the application publishes: bundles and archives, in order and out of order."""

import contextlib
import hashlib
import itertools
import json
import os
import shutil
import subprocess
import tempfile
import zipfile

TEAM = os.environ["UPDATE_TEAM"]
VERSION_A = os.environ["UPDATE_VERSION_A"]
VERSION_B = os.environ["UPDATE_VERSION_B"]
_KEYS = os.environ["UPDATE_KEYS"]
_STAGE = os.environ["UPDATE_STAGE"]
_PROGRAMS = {VERSION_A: os.environ["UPDATE_PROGRAM_A"], VERSION_B: os.environ["UPDATE_PROGRAM_B"]}

_UPDATER_PLACE = "libexec/tidemark/tidemark-updater"

KEY = os.path.join(_KEYS, "minisign.key")
MANIFEST = "Signature/manifest.json"


def _run(*command, **options):
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{command} ended with {done.returncode}: {done.stdout}{done.stderr}")


def public_key():
    with open(os.path.join(_KEYS, "minisign.pub"), encoding="ascii") as file:
        return file.read().splitlines()[1]


def make_tree(folder, version):
    """What "cmake --install" puts into a folder, of that version."""
    shutil.copytree(_STAGE, folder, symlinks=True)
    # Their debugging information is hundreds of megabytes, which every test would have to copy.
    _run("strip", "--strip-debug", "-o", os.path.join(folder, "bin/tidemark"), _PROGRAMS[version])
    _run("strip", "--strip-debug", "-o", os.path.join(folder, _UPDATER_PLACE), os.environ["UPDATE_UPDATER"])
    _run("strip", "--strip-debug", os.path.join(folder, "bin/tidemarkctl"))


def make_key(folder):
    """The secret key of somebody else."""
    key = os.path.join(folder, "other.key")
    _run("minisign", "-G", "-W", "-f", "-p", os.path.join(folder, "other.pub"), "-s", key)
    return key


def make_bundle(tree, output, key=KEY, team=TEAM):
    """Makes Tidemark.app and update.zip as the maker does."""
    check = ["--public-key", public_key()] if key == KEY else []
    _run(os.environ["MAKE_BUNDLE"], "--tree", tree, "--team", team, "--key", key, "--output", output, *check)


def sign(bundle):
    """With the maker's key, whatever there is now."""
    _run("minisign", "-S", "-s", KEY, "-m", os.path.join(bundle, MANIFEST))


def edit_manifest(bundle, change):
    """Changes the manifest's object, and signs it as the maker."""
    file = os.path.join(bundle, MANIFEST)
    with open(file, encoding="ascii") as stream:
        content = json.load(stream)
    change(content)
    with open(file, "w", encoding="ascii") as stream:
        json.dump(content, stream)
    sign(bundle)


def zip_folder(folder):
    """What make-bundle would make of a folder that holds a bundle: the bytes of an archive."""
    with tempfile.TemporaryDirectory() as place:
        archive = os.path.join(place, "update.zip")
        _run("bsdtar", "--format", "zip", "--uid", "0", "--gid", "0", "-c", "-f", archive, "-C", folder,
             *sorted(os.listdir(folder)))
        return read(archive)


@contextlib.contextmanager
def copied(bundle):
    """A copy of a bundle in a folder of its own, to be changed."""
    with tempfile.TemporaryDirectory() as folder:
        copy = os.path.join(folder, os.path.basename(bundle))
        shutil.copytree(bundle, copy, symlinks=True)
        yield copy


def with_entry(archive, name, content=b"planted", mode=0o100644):
    """The archive with one more entry, of that very name."""
    return _with_entry(archive, name, mode, [content])


def with_zeros(archive, name, size):
    """The archive with one more file, which is much larger unpacked."""
    block = bytes(1 << 20)
    return _with_entry(archive, name, 0o100644, itertools.repeat(block, size // len(block)), zipfile.ZIP_DEFLATED)


def _with_entry(archive, name, mode, content, compression=zipfile.ZIP_STORED):
    with tempfile.TemporaryDirectory() as place:
        file = os.path.join(place, "update.zip")
        with open(file, "wb") as stream:
            stream.write(archive)
        entry = zipfile.ZipInfo(name)
        entry.create_system = 3  # Unix, which has modes
        entry.external_attr = mode << 16
        entry.compress_type = compression
        with zipfile.ZipFile(file, "a") as changed, changed.open(entry, "w") as stream:
            for piece in content:
                stream.write(piece)
        return read(file)


def read(file):
    with open(file, "rb") as stream:
        return stream.read()


def contents(folder):
    """What is in a folder: names, modes, contents of files and targets of links."""
    facts = {}
    for path in _everything(folder):
        if os.path.islink(path):
            told = os.readlink(path)
        elif os.path.isfile(path):
            told = hashlib.sha256(read(path)).hexdigest()
        else:
            told = None
        facts[os.path.relpath(path, folder)] = (oct(os.lstat(path).st_mode), told)
    return facts


def snapshot(folder):
    """What is in a folder, and that all of it is still the same that it was: nothing was written anew."""
    status = {os.path.relpath(path, folder): os.lstat(path) for path in _everything(folder)}
    return contents(folder), {path: (each.st_ino, each.st_mtime_ns) for path, each in status.items()}


def _everything(folder):
    yield folder
    for parent, folders, files in os.walk(folder):
        for name in folders + files:
            yield os.path.join(parent, name)
