"""A file system of the mind: files, folders and links by their path, and what moves between them."""

import posixpath

from . import names

MOST_LINKS = 40


class Failure(Exception):
    """The file system would refuse this."""


class File:
    """Content and what has to stay with it. Two files are told apart by their content, which no other file has."""

    kind = "file"

    def __init__(self, content, modified, mode, is_capture):
        self.content = content  # bytes
        self.modified = modified  # nanoseconds since 1970
        self.mode = mode
        self.is_capture = is_capture

    def seen(self):
        return (self.kind, self.content, self.modified, self.mode, self.is_capture)


class Folder:
    kind = "folder"

    def seen(self):
        return (self.kind,)


class Link:
    kind = "link"

    def __init__(self, target):
        self.target = target

    def seen(self):
        return (self.kind, self.target)


class Tree:
    """All paths are absolute; `root` is there from the start and everything lies in it."""

    def __init__(self, root):
        self.root = root
        self.nodes = {root: Folder()}

    def copy(self):
        """Shares the files, which are only ever replaced."""
        other = Tree(self.root)
        other.nodes = dict(self.nodes)
        return other

    def resolve(self, path, follow_last=True, links=0):
        """The path without links in it; what it names need not be there, but the folder above has to."""
        if links > MOST_LINKS:
            raise Failure("too many links")
        real = "/"
        parts = [part for part in path.split("/") if part and part != "."]
        for index, part in enumerate(parts):
            is_last = index == len(parts) - 1
            if part == "..":
                real = posixpath.dirname(real)
                continue
            real = posixpath.join(real, part)
            node = self.nodes.get(real)
            if isinstance(node, Link) and (follow_last or not is_last):
                rest = "/".join([posixpath.join(posixpath.dirname(real), node.target)] + parts[index + 1:])
                return self.resolve(rest, follow_last, links + 1)
            if not is_last and real.startswith(self.root + "/") and not isinstance(node, Folder):
                raise Failure(f"no folder {real}")
        return real

    def node(self, path, follow_last=False):
        """What is at the path; None when nothing is."""
        try:
            return self.nodes.get(self.resolve(path, follow_last))
        except Failure:
            return None

    def children(self, folder):
        real = self.resolve(folder)
        if not isinstance(self.nodes.get(real), Folder):
            raise Failure(f"no folder {folder}")
        return [path[len(real) + 1:] for path in self.nodes if posixpath.dirname(path) == real and path != real]

    def make_folder(self, path):
        """With every folder above; one that is there is fine, as is a link to one."""
        if isinstance(self.node(path, follow_last=True), Folder):
            return
        if self.node(path) is not None:
            raise Failure(f"not a folder: {path}")
        above = posixpath.dirname(path)
        self.make_folder(above)
        self.put(path, Folder())

    def put(self, path, node):
        if names.size_in_bytes(posixpath.basename(path)) > names.LONGEST_NAME:
            raise Failure("name too long")
        self.nodes[self.resolve(path, follow_last=False)] = node

    def move(self, source, destination):
        real_source = self.resolve(source, follow_last=False)
        if real_source not in self.nodes:
            raise Failure(f"nothing at {source}")
        if names.size_in_bytes(posixpath.basename(destination)) > names.LONGEST_NAME:
            raise Failure("name too long")
        real_destination = self.resolve(destination, follow_last=False)
        if real_destination in self.nodes:
            raise Failure(f"taken: {destination}")
        if not isinstance(self.nodes.get(posixpath.dirname(real_destination)), Folder):
            raise Failure(f"no folder for {destination}")
        if (real_destination + "/").startswith(real_source + "/"):
            raise Failure("into itself")
        for path in self.under(real_source):
            self.nodes[real_destination + path[len(real_source):]] = self.nodes.pop(path)

    def remove(self, path):
        for each in self.under(self.resolve(path, follow_last=False)):
            del self.nodes[each]

    def under(self, real):
        return [path for path in self.nodes if path == real or path.startswith(real + "/")]
