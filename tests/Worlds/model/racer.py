"""Another program at work in the folders that are being swept, which keeps account of every content it makes."""

import ctypes
import errno
import fcntl
import hashlib
import os
import random

from . import disk

NO_REPLACE, EXCHANGE = 1, 2  # renameat2(2)
MOST_FILES = 15  # in one folder: sweeps shall be many rather than long
_HERE = -100  # AT_FDCWD


def rename(source, target, flags=NO_REPLACE):
    """Raises OSError; nothing is ever replaced."""
    if disk.libc.renameat2(_HERE, os.fsencode(source), _HERE, os.fsencode(target), flags) != 0:
        raise OSError(ctypes.get_errno(), os.strerror(ctypes.get_errno()), source)


def account_of(content):
    """A short entry for the books: {digest: head}."""
    return {hashlib.sha1(content).digest(): content[:40]}


class Racer:
    """Does one random thing after another. What it takes away goes to its attic, so that nothing is ever lost by its own
    doing; only where it writes over a file in place is the old content gone, and then it says so."""

    NAMES = [f"{stem}{extension}" for stem in ("one", "two", "Two", "three 2", "Bild 9")
             for extension in (".mv", ".ar", ".rn", ".tr", ".png", ".md", ".far", "")]

    def __init__(self, number, place, seed, writes_in_place):
        self._number = number
        self._place = place
        self._random = random.Random(f"{seed}/{number}")
        self._count = 0
        self._open = []
        self.created = {}  # digest -> head
        self.gone = {}
        self.deeds = 0
        deeds = {self._create: 8, self._move: 6, self._take: 3, self._replace: 3, self._swap_folder: 1, self._block: 1,
                 self._link_folder: 2, self._link_file: 2, self._hide_watched: 0.3, self._rob_trash: 2, self._litter_trash: 1}
        if writes_in_place:
            deeds.update({self._write_over: 4, self._create_slowly: 3})
        self._deeds, self._weights = list(deeds), list(deeds.values())

    def run(self, until):
        while not until():
            deed = self._random.choices(self._deeds, self._weights)[0]
            try:
                deed()
                self.deeds += 1
            except OSError as error:
                if error.errno not in (errno.ENOENT, errno.EEXIST, errno.ENOTDIR, errno.EISDIR, errno.EXDEV, errno.ENOTEMPTY,
                                       errno.EINVAL, errno.ELOOP):
                    raise
            finally:
                while self._open:
                    os.close(self._open.pop())

    # Pieces

    def _token(self):
        self._count += 1
        size = self._random.choice([0, 0, 0, 0, 100, 100, 100, 5000, 5000, 200_000])
        token = f"racer {self._number} content {self._count} ".encode() + b"." * size
        self.created.update(account_of(token))
        return token

    def _new(self, path):
        """For a new thing or one that has been taken; never the same name twice."""
        self._count += 1
        return os.path.join(path, f"{self._number} {self._count}")

    def _folder(self):
        """One of the folders, as a path that leads to it wherever it is moved, and never through a link: what lies
        elsewhere is none of the racers' business."""
        self._chosen = self._random.choice(self._place.folders)
        self._open.append(os.open(self._chosen, os.O_DIRECTORY | os.O_NOFOLLOW))
        return f"/proc/self/fd/{self._open[-1]}"

    def _some(self, folder):
        names = os.listdir(folder)
        if not names:
            raise FileNotFoundError(errno.ENOENT, "empty", folder)
        return os.path.join(folder, self._random.choice(names))

    def _some_file(self, folder):
        path = self._some(folder)
        if os.path.isdir(path) and not os.path.islink(path):
            raise IsADirectoryError(errno.EISDIR, "folder", path)
        return path

    def _fresh_file(self):
        path = self._new(self._place.attic_of(self._place.home))
        with open(path, "xb") as file:
            file.write(self._token())
        return path

    def _put(self, path, target):
        try:
            rename(path, target)
        except OSError as error:
            if error.errno != errno.EXDEV:
                raise

    # Deeds

    def _create(self):
        folder = self._folder()
        if len(os.listdir(folder)) < MOST_FILES:
            self._put(self._fresh_file(), os.path.join(folder, self._random.choice(self.NAMES)))

    def _create_slowly(self):
        """As a program does that writes to the place itself."""
        path = os.path.join(self._folder(), self._random.choice(self.NAMES))
        with open(path, "xb") as file:
            fcntl.flock(file, fcntl.LOCK_EX)  # the other racers wait until it is complete
            file.write(self._token())

    def _move(self):
        rename(self._some_file(self._folder()), os.path.join(self._folder(), self._random.choice(self.NAMES)))

    def _take(self):
        folder = self._folder()
        rename(self._some_file(folder), self._new(self._place.attic_of(self._chosen)))

    def _replace(self):
        rename(self._fresh_file(), self._some_file(self._folder()), EXCHANGE)

    def _write_over(self):
        descriptor = os.open(self._some(self._folder()), os.O_RDWR | os.O_NOFOLLOW | os.O_NONBLOCK)
        with open(descriptor, "r+b") as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            old = file.read()
            if not old.startswith(b"racer "):
                return  # being written, or somebody else's
            self.gone.update(account_of(old))
            file.seek(0)
            file.truncate()
            file.write(self._token())

    def _swap_folder(self):
        """A destination goes with all that is in it, and an empty folder takes its place."""
        folder = self._random.choice(self._place.destinations)
        fresh = self._new(self._place.attic_of(folder))
        os.mkdir(fresh)
        rename(fresh, folder, EXCHANGE)

    def _block(self):
        folder = self._random.choice(self._place.destinations)
        rename(folder, self._new(self._place.attic_of(folder)))
        if self._random.random() < 0.5:
            self._put(self._fresh_file(), folder)

    def _link_folder(self):
        """A destination becomes a link that leads elsewhere, or is made one again."""
        folder = self._random.choice(self._place.destinations)
        link = self._new(self._place.attic_of(folder))
        os.symlink(self._place.outside, link)
        rename(link, folder, EXCHANGE)

    def _link_file(self):
        link = self._new(self._place.attic_of(self._place.home))
        os.symlink(self._some(self._place.outside), link)
        rename(link, self._some_file(self._folder()), EXCHANGE)

    def _hide_watched(self):
        """A watched folder is away for a moment; or a link elsewhere stands in its place."""
        folder = self._random.choice(self._place.watched)
        away = self._new(self._place.attic_of(folder))
        if self._random.random() < 0.5:
            rename(folder, away)
            self._bring_back(away, folder)
        else:
            os.symlink(self._place.outside, away)
            rename(away, folder, EXCHANGE)
            rename(away, folder, EXCHANGE)

    def _bring_back(self, away, folder):
        try:
            rename(away, folder)
        except FileExistsError:
            # An undo has made the folder anew meanwhile.
            rename(away, folder, EXCHANGE)

    def _rob_trash(self):
        if self._random.random() < 0.5:
            self._take_from(self._place.trash + "/files")
        else:
            os.remove(self._some(self._place.trash + "/info"))

    def _take_from(self, folder):
        rename(self._some_file(folder), self._new(self._place.attic_of(folder)))

    def _litter_trash(self):
        name = self._random.choice(self.NAMES)
        if self._random.random() < 0.5:
            self._put(self._fresh_file(), f"{self._place.trash}/files/{name}")
        else:
            with open(f"{self._place.trash}/info/{name}.trashinfo", "xb") as file:
                file.write(b"[Trash Info]\nPath=/nowhere\nDeletionDate=2024-01-01T00:00:00\n")
