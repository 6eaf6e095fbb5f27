"""One world: a home folder, what happens to it step by step, and whether product and model agree after every step.

A world is plain data (see `Generator`), so that it can be printed, made smaller and tried again. Moments are seconds
relative to the world's "base", or, where "at" says so, since 1970.
"""

import base64
import copy
import datetime
import json
import os
import posixpath
import re
import shutil
import uuid
import zoneinfo

from . import disk
from .model import NANO, CannotSweep, Disagreement, Model, Seen, stamp
from .settings import Settings, path_of
from .tree import Failure, File, Folder, Link

HOME = "/HOME"  # stands for the home folder in a world's data


class World:
    def __init__(self, data, product, scratch, faults=frozenset()):
        self._data = data
        self._product = product
        self._base = data["base"]
        self.home = os.path.join(os.path.realpath(scratch), "home")
        shutil.rmtree(self.home, ignore_errors=True)
        self._support = f"{self.home}/.local/share/Tidemark"
        os.makedirs(self._support)
        self._keeps_marks = disk.keeps_marks(self.home)
        self._trash = f"{self.home}/.local/share/Trash"
        self._environment = {
            "HOME": self.home, "XDG_DATA_HOME": f"{self.home}/.local/share", "XDG_CONFIG_HOME": f"{self.home}/.config",
            "XDG_CACHE_HOME": f"{self.home}/.cache", "XDG_RUNTIME_DIR": f"{self.home}/.run", "TZ": data["zone"],
            "LC_ALL": data["locale"], "LANG": data["locale"]}
        self._model = Model(self.home, self._trash, zone_named(data["zone"]))
        self._model.faults = faults
        for folder in (f"{self.home}/.local", f"{self.home}/.local/share"):
            self._model.tree.make_folder(folder)
        self._ids = []
        self._has_document = False

    def live(self):
        """Raises Disagreement at the first step after which model and product differ; returns the number of steps."""
        for number, step in enumerate(self._data["steps"]):
            try:
                getattr(self, "_" + step["do"])(step)
                self._compare()
            except Disagreement as disagreement:
                raise Disagreement(f"step {number} ({step['do']}): {disagreement}") from disagreement
        return len(self._data["steps"])

    # The product's commands

    def _run(self, *arguments):
        return self._product.run(self._environment, arguments, self._data["ownProcess"])

    def _now(self, step):
        moment = self._moment(step["now"])
        return moment, ["--now", stamp(moment)]

    def _sweep(self, step):
        now, arguments = self._now(step)
        facts = {path: disk.times(path) for path, node in self._model.tree.nodes.items() if isinstance(node, File)}
        before = len(self._model.sweeps)
        result = self._run("sweep", *arguments, "--json")
        journal = self._journal()
        new = journal[before]["entries"] if len(journal) > before else []
        try:
            entries = self._model.sweep(now, lambda path: facts[self._model.tree.resolve(path, False)], Seen(new))
        except CannotSweep:
            self._expect("status of a sweep that cannot list a folder", result.status, 1)
            return
        record = json.loads(result.output)
        self._expect("record", record, {"id": record["id"], "startedAt": stamp(now), "entries": entries})
        if len(journal) > before:
            self._expect("id", record["id"], journal[-1]["id"])

    def _preview(self, step):
        now, arguments = self._now(step)
        facts = {path: disk.times(path) for path, node in self._model.tree.nodes.items() if isinstance(node, File)}
        result = self._run("preview", *arguments, "--json")
        actions = json.loads(result.output)["actions"] if result.status == 0 else []
        seen = Seen([{"from": action["source"]} for action in actions])
        try:
            wanted = self._model.preview(now, lambda path: facts[self._model.tree.resolve(path, False)], seen)
        except CannotSweep:
            self._expect("status of a preview that cannot list a folder", result.status, 1)
            return
        self._expect("status of preview", result.status, 0)
        got = []
        for action in actions:
            is_trash = action["action"] == {"trash": {}}
            got.append((action["source"], action["ruleID"], "Trash" if is_trash else action.get("destination")))
        # The rule for notes is made anew for every sweep.
        got = [(source, rule if wanted_rule else None, place) for (source, rule, place), (_, wanted_rule, _)
               in zip(got, wanted)] + got[len(wanted):]
        self._expect("preview", got, wanted)

    def _undo(self, _):
        newest = self._journal()[-1:]
        result = self._run("undo", "--json")
        went_well = self._model.undo()
        self._expect("status of undo", result.status, 1 if went_well is False else 0)
        if went_well is not False:
            self._expect("what was undone", json.loads(result.output), newest[0] if newest else None)

    def _pause(self, _):
        self._expect("status of pause", self._run("pause").status, 0)
        self._model.settings = self._model.settings.paused(True)

    def _resume(self, _):
        self._expect("status of resume", self._run("resume").status, 0)
        self._model.settings = self._model.settings.paused(False)

    def _activity(self, step):
        result = self._run("activity", "--limit", str(step["limit"]), "--json")
        self._expect("activity", json.loads(result.output), self._model.activity(step["limit"]))

    # What the user does. What is not possible in the tree as it is, does not happen.

    def _settings(self, step):
        document = self._placed(copy.deepcopy(step["document"]))
        self._model.settings = Settings(document)
        with open(f"{self._support}/settings.json", "w", encoding="utf-8") as file:
            json.dump(document, file, ensure_ascii=step["escaped"], indent=step["indent"])

    def _write(self, step):
        path = self._placed(step["path"])
        content = base64.b64decode(step["content"])
        modified = self._nanoseconds(step["modified"])
        opened = self._nanoseconds(step["opened"])
        is_capture = step["isCapture"] and self._keeps_marks
        if self._makes_way(path):
            disk.write(path, content, modified, opened, step["mode"], is_capture)
            self._model.tree.put(path, File(content, modified, step["mode"], is_capture))

    def _folder(self, step):
        path = self._placed(step["path"])
        if self._makes_way(path):
            os.mkdir(path)
            self._model.tree.put(path, Folder())

    def _link(self, step):
        path, target = self._placed(step["path"]), self._placed(step["target"])
        if self._makes_way(path):
            os.symlink(target, path)
            self._model.tree.put(path, Link(target))

    def _makes_way(self, path):
        """Makes the folders above; whether something can be made at the path."""
        try:
            self._model.tree.make_folder(posixpath.dirname(path))
        except Failure:
            return False
        os.makedirs(posixpath.dirname(path), exist_ok=True)
        return self._model.tree.node(path) is None

    def _rename(self, step):
        source, node = self._picked(step["pick"])
        if node is None:
            return
        target = posixpath.join(posixpath.dirname(source), step["name"]) if "name" in step \
            else posixpath.join(self._placed(step["folder"]), posixpath.basename(source))
        try:
            self._model.tree.move(source, target)
        except Failure:
            return
        os.rename(source, target)

    def _delete(self, step):
        path, node = self._picked(step["pick"])
        if node is not None:
            disk.remove(path)
            self._model.tree.remove(path)

    def _touch(self, step):
        path, node = self._picked(step["pick"])
        if node is not None:
            modified = self._nanoseconds(step["modified"])
            os.utime(path, ns=(self._nanoseconds(step["opened"]), modified))
            self._model.tree.put(path, File(node.content, modified, node.mode, node.is_capture))

    def _change(self, step):
        path, node = self._picked(step["pick"])
        if node is not None:
            content = base64.b64decode(step["content"])
            os.chmod(path, 0o600)
            with open(path, "wb") as file:
                file.write(content)
            os.chmod(path, node.mode)
            modified = os.lstat(path).st_mtime_ns
            self._model.tree.put(path, File(content, modified, node.mode, node.is_capture))

    def _empty(self, _):
        """Empties the Trash."""
        for path in [path for path in self._model.tree.nodes
                     if posixpath.dirname(path) in (f"{self._trash}/files", f"{self._trash}/info")]:
            disk.remove(path)
            self._model.tree.remove(path)

    def _replace(self, step):
        """A folder goes, and a file takes its name."""
        path = self._placed(step["path"])
        if not isinstance(self._model.tree.node(path), Folder):
            return
        real = self._model.tree.resolve(path)
        disk.remove(real)
        self._model.tree.remove(real)
        content = base64.b64decode(step["content"])
        modified = self._nanoseconds(step["modified"])
        disk.write(real, content, modified, modified, 0o644, False)
        self._model.tree.put(real, File(content, modified, 0o644, False))

    def _picked(self, pick):
        """One of the files, those in the Trash included."""
        files = sorted(path for path, node in self._model.tree.nodes.items() if isinstance(node, File))
        if not files:
            return None, None
        path = files[int(pick * len(files))]
        return path, self._model.tree.nodes[path]

    # Comparing

    def _journal(self):
        path = f"{self._support}/journal.json"
        if not os.path.exists(path):
            return []
        return json.loads(disk.read(path))["sweeps"]

    def _compare(self):
        journal = self._journal()
        ids = [record.pop("id") for record in journal]
        self._expect("journal", journal, self._model.sweeps)
        common = min(len(ids), len(self._ids))
        self._expect("ids of old sweeps", ids[:common], self._ids[:common])
        if len(set(ids)) < len(ids) or any(str(uuid.UUID(each)).upper() != each for each in ids):
            raise Disagreement(f"ids: {ids}")
        self._ids = ids

        self._compare_trees()
        path = f"{self._support}/settings.json"
        if os.path.exists(path):
            self._expect("settings", _plain(Settings(json.loads(disk.read(path))).document()),
                         _plain(self._model.settings.document()))
        leftovers = [name for name in os.listdir(self._support)
                     if name not in ("settings.json", "journal.json", "lock", "last-failure.json")]
        self._expect("other files in the support folder", leftovers, [])

    def _compare_trees(self):
        got = disk.seen(self.home, self._support, self._trash)
        wanted = {path: node.seen() for path, node in self._model.tree.nodes.items()}
        if got == wanted:
            return
        lines = []
        for path in sorted(got.keys() | wanted.keys()):
            if got.get(path) != wanted.get(path):
                lines.append(f"  {path!r}: product {got.get(path)}, model {wanted.get(path)}")
        raise Disagreement("the trees differ:\n" + "\n".join(lines))

    @staticmethod
    def _expect(what, got, wanted):
        if got != wanted:
            raise Disagreement(f"{what}:\n  product {got!r}\n  model   {wanted!r}")

    # From a world's data to this run of it

    def _moment(self, when):
        return when["at"] if isinstance(when, dict) else self._base + when

    def _nanoseconds(self, when):
        return round(self._moment(when) * 1000) * (NANO // 1000)

    def _placed(self, value):
        """With the home folder in place of its stand-in."""
        if isinstance(value, str):
            value = value.replace("file://" + HOME, "file://" + self.home)
            return self.home + value[len(HOME):] if value.startswith(HOME) else value
        if isinstance(value, list):
            return [self._placed(each) for each in value]
        if isinstance(value, dict):
            return {key: self._placed(each) for key, each in value.items()}
        return value


def zone_named(name):
    """What TZ means with this value: a zone, the file of one, or an offset (west of Greenwich is positive, POSIX). UTC
    where it means nothing."""
    name = name.removeprefix(":").removeprefix("/usr/share/zoneinfo/")
    offset = re.fullmatch(r"<?[A-Z+0-9]{3,}>?([+-]?)(\d+)(?::(\d+))?", name)
    if offset:
        sign, hours, minutes = offset.groups()
        west = datetime.timedelta(hours=int(hours), minutes=int(minutes or 0))
        return datetime.timezone(west if sign == "-" else -west)
    try:
        return zoneinfo.ZoneInfo(name or "UTC")
    except (zoneinfo.ZoneInfoNotFoundError, ValueError):
        return datetime.timezone.utc


def _plain(value, key=None):
    """The same with paths in place of URLs."""
    if isinstance(value, dict):
        return {name: _plain(each, name) for name, each in value.items()}
    if isinstance(value, list):
        return [_plain(each) for each in value]
    if isinstance(value, str) and key in ("into", "to", "folder") and value.startswith("file:"):
        return path_of(value)
    return value
