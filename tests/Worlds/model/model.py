"""What sweeps and undos do to a tree and to the journal, told a second time.

This is written from what the product promises, in another language and without any of its code. What cannot be
foretold is asked for: when a file came into its folder, was opened and was born (`facts`), and from the product's own
journal, where a file lies in the Trash and which of two names that sort equal the disk listed first (`seen`). Both
are checked for being possible at all.
"""

import copy
import datetime
import posixpath

from . import names
from .notes import Head
from .settings import Settings, path_of
from .tree import Failure, File, Folder, Tree

UNFINISHED = (".download", ".crdownload", ".part", ".partial", ".tmp")
NOT_HERE = (".nextcloud", ".owncloud")
NANO = 1_000_000_000
EPOCH = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)


class Disagreement(Exception):
    """The product did what the model says cannot be."""


class CannotSweep(Exception):
    """A folder cannot be listed; nothing is done."""


class Seen:
    """The entries of a sweep as the product wrote them, to be asked for what cannot be foretold."""

    def __init__(self, entries):
        self.entries = entries
        self.order = {}
        for index, entry in enumerate(entries):
            self.order.setdefault(entry["from"], index)

    def place(self, path):
        return self.order.get(path, len(self.order))

    def trash_place(self, index):
        if index >= len(self.entries):
            raise Disagreement(f"entry {index} is missing")
        return self.entries[index]["to"]


class Model:
    def __init__(self, root, trash, zone):
        self.tree = Tree(root)
        self.trash = trash  # the path of the Trash
        self.zone = zone
        self.settings = Settings({})
        self.sweeps = []  # records without ids, oldest first
        self.faults = frozenset()  # mistakes made on purpose, to see that they are found

    # Sweeping

    def sweep(self, now, facts, seen):
        """Returns the entries. Raises CannotSweep."""
        if self.settings.is_paused and "sweeps-while-paused" not in self.faults:
            return []
        plan = self.plan(now, facts, seen)
        entries, outcomes = self.execute(self.tree, plan, now, seen)
        if entries or any(outcome is not None for outcome in outcomes) and "forgets-failed-sweeps" not in self.faults:
            self.sweeps.append({"startedAt": stamp(now), "entries": entries})
        return entries

    def preview(self, now, facts, seen):
        """(source, rule's id, destination) of each file that would be moved; "Trash" and None (it cannot be moved)
        are destinations, too."""
        plan = self.plan(now, facts, seen)
        _, outcomes = self.execute(self.tree.copy(), plan, now, None)
        return [(source, rule["id"], outcome[0])
                for (source, rule, _), outcome in zip(plan, outcomes) if outcome is not None]

    def plan(self, now, facts, seen):
        """(path, rule, action) for each file that a rule fits."""
        plan = []
        for folder, rules in self.settings.folders_to_sweep():
            try:
                found = self._sweepable(folder or "/")
            except Failure as failure:
                raise CannotSweep(str(failure)) from failure
            order = str.lower if "sorts-numbers-as-text" in self.faults else names.order_key
            found.sort(key=lambda name: (order(name), seen.place(f"{folder}/{name}")))
            for name in found:
                path = f"{folder}/{name}"
                file = self.tree.node(path)
                if not self._is_stable(name, file, now):
                    continue
                times = facts(path)
                rule = next((rule for rule in rules if self._matches(rule, name, file, times, now)), None)
                if rule:
                    plan.append((path, rule, self._resolve(rule["action"], name, file, times)))
        return plan

    def _sweepable(self, folder):
        return [name for name in self.tree.children(folder)
                if not name.startswith(".") and names.is_utf8(name) and not name.endswith(NOT_HERE)
                and isinstance(self.tree.node(f"{folder}/{name}"), File)]

    def _is_stable(self, name, file, now):
        if name.lower().endswith(UNFINISHED) and "sweeps-unfinished" not in self.faults:
            return False
        rested = now - seconds(file.modified)
        return rested > self.settings.grace if "grace-off-by-one" in self.faults \
            else rested >= self.settings.grace

    def _matches(self, rule, name, file, times, now):
        match = rule["match"]
        if not rule["isEnabled"] and "disabled-rules-act" not in self.faults:
            return False
        if match["fileTypes"] and names.lowered_extension(name) not in match["fileTypes"]:
            return False
        pattern = match.get("namePattern")
        fits = pattern is not None and names.fits(pattern, name)
        if match.get("screenCaptureOnly"):
            if not file.is_capture and not fits:
                return False
        elif pattern is not None and not fits:
            return False
        if "minAge" not in match:
            return True
        date = {"modified": seconds(file.modified), **times}[match["ageBasis"]]
        return not now - date < match["minAge"]

    def _resolve(self, action, name, file, times):
        """(op, folder, new name); folder None for where the file lies, and op "trash" alone."""
        kind, value = next(iter(action.items()))
        extension = names.lowered_extension(name)
        if kind == "fileScreenshot":
            moment = self._local(seconds(file.modified)).strftime("%H.%M")
            day = self._date(seconds(file.modified))
            return "move", path_of(value["into"]), f"{day} {moment}" + (f".{extension}" if extension else "")
        if kind == "archiveByMonth":
            return "move", posixpath.join(path_of(value["into"]), self._date(times["added"])[:7]), name
        if kind == "fileMarkdown":
            head = Head(file.content if extension in ("md", "markdown") else b"")
            month = head.month() or self._date(times["created"])[:7]
            return "move", posixpath.join(path_of(value["into"]), month), head.file_name(extension) or name
        kind, value = next(iter(value["_0"].items()))
        if kind in ("move", "archive"):
            return kind, path_of(value["to"]), name
        if kind == "rename":
            return "rename", None, value["to"]
        if kind == "fileInto":
            return "move", path_of(value["folder"]), value["renamedTo"]
        return "trash", None, None

    def _local(self, moment):
        universal = EPOCH + datetime.timedelta(seconds=int(moment // 1))
        return universal if "ignores-the-zone" in self.faults else universal.astimezone(self.zone)

    def _date(self, moment):
        local = self._local(moment)
        return f"{local.year:04}-{local.month:02}-{local.day:02}"

    # Doing it

    def execute(self, tree, plan, now, seen):
        """The entries, and for each planned action None (its file is gone), else a list that holds where the file went
        (None when it could not be moved)."""
        entries, outcomes = [], []
        for source, _, (op, folder, name) in plan:
            if tree.node(source) is None:
                outcomes.append(None)
                continue
            try:
                if op == "trash":
                    place = self._trash(tree, source, seen, len(entries))
                else:
                    place = self._free_place(tree, folder or posixpath.dirname(source), name)
                    tree.move(source, place)
            except Failure:
                outcomes.append([None])
                continue
            outcomes.append([place])
            entries.append({"op": op, "from": source, "to": place, "at": stamp(now)})
        return entries, outcomes

    def _free_place(self, tree, folder, name):
        if not names.is_single_component(name):
            raise Failure(f"no name: {name}")
        tree.make_folder(folder)
        candidate = name
        counter = 3 if "counts-from-three" in self.faults else 2
        while tree.node(posixpath.join(folder, candidate)) is not None:
            candidate = names.numbered(name, counter)
            counter += 1
        return posixpath.join(folder, candidate)

    def _trash(self, tree, source, seen, index):
        if seen is None:
            tree.remove(source)
            return "Trash"
        place = seen.trash_place(index)
        if posixpath.dirname(place) != f"{self.trash}/files" or tree.node(place) is not None:
            raise Disagreement(f"{source} cannot have gone to {place}")
        for folder in ("files", "info"):
            tree.make_folder(f"{self.trash}/{folder}")
        tree.move(source, place)
        tree.put(self.record_of(place), TrashRecord(tree.resolve(source, follow_last=False)))
        return place

    def record_of(self, place):
        return f"{self.trash}/info/{posixpath.basename(place)}.trashinfo"

    # Taking it back

    def undo(self):
        """Whether there was anything to undo and it all went well; else False, or None for nothing to undo."""
        if not self.sweeps:
            return None
        if "undo-does-not-pause" not in self.faults:
            self.settings = self.settings.paused(True)
        entries = self.sweeps[-1]["entries"]
        for entry in entries if "undoes-forwards" in self.faults else reversed(entries):
            if self.tree.node(entry["to"]) is None:
                continue
            try:
                place = self._free_place(self.tree, *posixpath.split(entry["from"]))
                self.tree.move(entry["to"], place)
            except Failure:
                return False
            if posixpath.dirname(entry["to"]) == f"{self.trash}/files":
                self.tree.nodes.pop(self.record_of(entry["to"]), None)
        self.sweeps.pop()
        return True

    def activity(self, limit):
        entries = [entry for sweep in self.sweeps for entry in sweep["entries"]]
        newest = entries[::-1][:limit]
        return [{"date": each["at"], "fromPath": each["from"], "op": each["op"], "toPath": each["to"]}
                for each in newest]

    def copy(self):
        return copy.deepcopy(self)


class TrashRecord:
    """The note beside a file in the Trash."""

    kind = "record"

    def __init__(self, origin):
        self.origin = origin

    def seen(self):
        return (self.kind, self.origin)


def seconds(nanoseconds):
    whole, part = divmod(nanoseconds, NANO)
    return whole + part / NANO


def stamp(moment):
    return datetime.datetime.fromtimestamp(moment, datetime.timezone.utc).strftime("%Y-%m-%dT%H:%M:%SZ")
