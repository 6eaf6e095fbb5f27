"""Makes worlds out of random numbers."""

import base64
import itertools
import random
import uuid
from urllib.parse import quote

from .world import HOME

ZONES = ["UTC", "Europe/Berlin", "America/New_York", "Asia/Kolkata", "Asia/Kathmandu", "Pacific/Apia", "Pacific/Kiritimati",
         "Australia/Lord_Howe", "America/St_Johns", "Africa/Casablanca", "Asia/Tokyo", "America/Sao_Paulo",
         "Etc/GMT+12", "Pacific/Chatham", "Atlantic/Azores", ":Asia/Tokyo", "/usr/share/zoneinfo/Europe/Berlin", "", "No/Such_Zone", "XYZ-5:30", "ABC8"]
LOCALES = ["C", "C.UTF-8", "POSIX", "en_US.UTF-8", "de_DE.UTF-8", "tr_TR.UTF-8", "no_such_LOCALE"]
STEMS = ["report", "Report", "REPORT", "report 2", "Bild", "Bild 9", "Bild 10", "Bild 09", "a", "A", "b", "Ärger", "ärger", "straße",
         "Screenshot", "screenshot 2024", "Screenshot from 2024-05-03 14-05-09", "überlang", "άβγ", "я и ты", "100%", "a+b", "x_y",
         "x-y", "(1)", "[x]", "it's", "a&b", "✓ done", "naïve", "nai\u0308ve", "é", "e\u0301", "1", "01", "2", "10", "v1.2", "..dots", "two  blanks",
         " leading", "trailing ", "#hash", "new\nline", "tab\there", "back\\slash", "quote\"d", "café 3", "cafe 12", "%41", "a;b?c",
         "写", "😀stern"]
EXTENSIONS = ["", ".png", ".PNG", ".pdf", ".dmg", ".pkg", ".DMG", ".md", ".MD", ".markdown", ".tar.gz", ".txt", ".", ".jpeg", ".Ärz",
              ".mdx", ". b", ".part", ".crdownload", ".tmp", ".download", ".PARTIAL", ".partial.mp4", ".nextcloud"]
PLACES = ["Desktop", "Downloads", "Downloads/sub", "Ünïcode Ordner", "a b", "deep/er/nest", "Desktop/Notes", "100%"]
TARGETS = PLACES + ["Archive", "Desktop/Screenshots", "Downloads/Archive", "new/würde/100% neu", "link", "dangling", "blocked",
                    "blocked/under", "a;b?c#d", "Desktop/Notes/2024-05"]
PATTERNS = ["*", "Screenshot*", "screenshot*", "*.pdf", "[a-m]*", "[!a-m]*", "?eport*", "*[0-9]*", "*ä*", "*Ä*", "REPORT*", "", "*2*", "\\*",
            "*[[:digit:]].*", "?", "??", "[", "[x]*", "\\[x\\]*", "*.t?t", "*\n*", "*.", "a*a", "*\\", "[]x]*", "[a-", "*é*", "?.*"]
TYPES = [[], [], [], ["png"], ["pdf", "txt"], ["dmg", "pkg"], ["md"], ["gz"], ["PDF"], [""], ["ärz"], ["partial"]]
NEW_NAMES = ["report.pdf", "Bild 10.png", "renamed", "renamed.txt", ".hidden", ".hidden.pdf", "a/b", "", "..", "x" * 250 + ".txt",
             "ü" * 126 + ".md", "x" * 255, "y" * 256, "neu 2.txt", "A", "tar.tar.gz", "mp.crdownload"]
TITLES = ["Plan", "Plan: Q3", "a/b:c", "  ", "report", "'quoted'", "\"double\"", "'", "\"mixed'", "..", ".", "Ü" * 140, "x" * 251, "\u00a0breit\u3000",
          "title: nested", "tab\tinside", "✓", "\" padded \""]
DATES = ["2024-05-03", "2024-05", "2024-7-01", "2024-13-99", "May 2024", "2024-05-03T10:00:00Z", "'1999-12-31'", "20240503", "٢٠٢٤-٠٥", "2024--5", "999-12-0",
         "2024-05x"]
MOMENTS = [0, 30, 59, 60, 61, 3600, 86_400, 29 * 86_400, 30 * 86_400, 31 * 86_400, 400 * 86_400, -86_400]
AGES = [0, 0, 1, 1, 59, 60, 60, 61, 3600, 86_400, 86_400.5, 30 * 86_400, -5, 1e12]


class Generator:
    """The world of a seed; always the same for the same seed."""

    def __init__(self, seed):
        self._random = random.Random(seed)
        self._tokens = itertools.count(1)
        self._stems = self._random.sample(STEMS, 7)
        self._extensions = self._random.sample(EXTENSIONS, 5)
        self._watched = self._random.sample(PLACES, self._choice([1, 1, 2, 2, 3, 4]))

    def world(self):
        zone = self._choice(ZONES)
        steps = [self._settings()] + [{"do": "folder", "path": f"{HOME}/{place}"} for place in self._watched]
        steps += [{"do": "link", "path": f"{HOME}/link", "target": f"{HOME}/{self._choice(self._watched)}"},
                  {"do": "link", "path": f"{HOME}/dangling", "target": f"{HOME}/nowhere/at all"},
                  {"do": "write", "path": f"{HOME}/blocked", **self._new_file()}]
        steps += [self._write() for _ in range(self._choice([3, 6, 10, 16, 30]))]
        self._shuffle_links(steps)
        steps.append({"do": "sweep", "now": self._choice(MOMENTS)})
        for _ in range(self._random.randint(2, 12)):
            steps.append(self._step())
            # Most users go on after an undo, and nothing happens in a world that stays paused.
            if steps[-1]["do"] == "undo" and self._chance(0.7):
                steps.append({"do": "resume"})
            if steps[-1]["do"] == "sweep" and self._chance(0.3):
                steps.append({"do": "undo"})
        return {"zone": zone, "locale": self._choice(LOCALES), "ownProcess": False, "steps": steps}

    def _choice(self, options):
        return self._random.choice(options)

    def _chance(self, likelihood):
        return self._random.random() < likelihood

    def _shuffle_links(self, steps):
        for _ in range(self._choice([0, 0, 1, 2])):
            steps.append({"do": "link", "path": f"{HOME}/{self._choice(self._watched)}/{self._name()}",
                          "target": self._choice([f"{HOME}/blocked", "nowhere", f"{HOME}/{self._choice(PLACES)}"])})

    # Steps

    def _step(self):
        kinds = {"sweep": 14, "preview": 3, "undo": 5, "pause": 1, "resume": 4, "activity": 1, "write": 5, "folder": 1, "link": 1,
                 "rename": 3, "delete": 2, "touch": 2, "change": 2, "empty": 1, "replace": 1, "settings": 1}
        kind = self._random.choices(list(kinds), list(kinds.values()))[0]
        made = {"write": self._write, "settings": self._settings}.get(kind)
        if made:
            return made()
        step = {"do": kind}
        if kind in ("sweep", "preview"):
            step["now"] = self._choice(MOMENTS)
        if kind == "activity":
            step["limit"] = self._choice([0, 1, 5, 100])
        if kind in ("folder", "replace"):
            step["path"] = self._path(self._choice(PLACES + TARGETS))
        if kind == "link":
            step.update(path=self._path(self._choice(self._watched) + "/" + self._name()),
                        target=self._path(self._choice(TARGETS)))
        if kind in ("rename", "delete", "touch", "change"):
            step["pick"] = self._random.random()
        if kind == "rename":
            step.update({"name": self._name()} if self._chance(0.5) else {"folder": self._path(self._choice(self._watched))})
        if kind == "touch":
            step.update(modified=self._past(), opened=self._past())
        if kind == "change":
            step["content"] = self._content()
        if kind == "replace":
            step.update(content=self._content(), modified=self._past())
        return step

    def _path(self, place):
        return f"{HOME}/{place}"

    def _name(self):
        if self._chance(0.03):
            return self._choice(["x" * 251 + ".txt", "ü" * 127, "long " * 50 + ".dmg", "\udcff\udcfe.txt", ".hidden.pdf", "CON.pdf"])
        name = self._choice(self._stems) + self._choice(self._extensions)
        return name.upper() if self._chance(0.1) and "ß" not in name else name

    def _write(self):
        return {"do": "write", "path": self._path(self._choice(self._watched) + "/" + self._name()), **self._new_file()}

    def _new_file(self):
        return {"content": self._content(), "modified": self._past(), "opened": self._past(),
                "mode": self._choice([0o644, 0o600, 0o755, 0o444]), "isCapture": self._chance(0.15)}

    def _content(self):
        token = f"token {next(self._tokens)}\n"
        text = self._front_matter() + token if self._chance(0.4) else token
        content = text.encode()
        if self._chance(0.03):
            content = b"---\ntitle: cut\n" + b"x" * self._random.randint(8170, 8180) + "ü".encode() + content
        if self._chance(0.02):
            content = b"---\ntitle: b\xff\n---\n" + content
        return base64.b64encode(content).decode()

    def _front_matter(self):
        newline = self._choice(["\n", "\n", "\r\n", "\r", "\u2028", "\x85"])
        lines = [self._choice(["---", "---", "---", "--- ", "\t---", "----", "\ufeff---"])]
        for _ in range(self._random.randint(0, 4)):
            key = self._choice(["title", "Title", " TITLE ", "date", "created", "tags", "Date"])
            value = self._choice(DATES if key.strip().lower() in ("date", "created") else TITLES)
            lines.append(f"{key}:{self._choice(['', ' ', '  '])}{value}")
        lines += self._choice([["---"], ["--- "], [], ["text without a colon", "---"]])
        return newline.join(lines) + newline

    def _past(self):
        """A moment of a file."""
        if self._chance(0.3):
            return {"at": self._choice([0, 1, -1, -86_400 * 365, 951_782_400, 1_714_745_100, 1_714_745_101, 1_714_745_159,
                                        1_711_846_799, 1_711_846_800, 1_325_239_200, 4_102_444_800, 7_952_342_400,
                                        self._random.randint(-1_500_000_000, 6_000_000_000)])}
        return self._choice([0, -0.25, -1, -59, -60, -60.5, -61, -3600, -86_400, -29 * 86_400, -30 * 86_400, -31 * 86_400, 5, 3600])

    # Settings

    def _settings(self):
        rules = self._rules()
        if self._chance(0.07):
            document = {"watchedFolders": [self._path(place) for place in self._watched], "rules": rules}
        else:
            document = {"folders": [self._folder(place) for place in self._folders()]}
        document["gracePeriod"] = self._choice([60, 60, 60, 0, 0, 1.5, 3600, -5, 60.5])
        if self._chance(0.3):
            document["markdownSubfolder"] = self._choice(["", "Nötes ✓", "Notes", "link", " n ", "/n", "n//m"])
        for key, likelihood in (("isPaused", 0.05), ("hasOnboarded", 0.5)):
            if self._chance(0.5):
                document[key] = self._chance(likelihood)
        if self._chance(0.1):
            document.update({"unknown": [1, {"a": None}], "rules2": {}})
        return {"do": "settings", "document": document, "escaped": self._chance(0.3), "indent": self._choice([None, 1, 2])}

    def _folders(self):
        places = list(self._watched)
        self._random.shuffle(places)
        if self._chance(0.08):
            places.append(self._choice(places))
        if self._chance(0.05):
            places.append("link")
        if self._chance(0.03):
            places.append(self._choice(["missing", "blocked", "dangling"]))
        return places

    def _folder(self, place):
        folder = {"path": self._path(place) + ("/" if self._chance(0.05) else "")}
        if self._chance(0.9):
            folder["rules"] = self._rules()
        if self._chance(0.8):
            folder["sortsMarkdown"] = self._chance(0.5)
        return folder

    def _rules(self):
        if self._chance(0.15):
            return self._default_rules()
        rules = [self._rule() for _ in range(self._choice([0, 1, 1, 2, 3, 4]))]
        if self._chance(0.5):
            rules.append(self._rule({"fileTypes": [], "ageBasis": "modified"}))
        return rules

    def _rule(self, match=None, action=None):
        return {"id": str(uuid.UUID(int=self._random.getrandbits(128))).upper(), "name": self._choice(["Rule", "Regel ü", ""]),
                "isEnabled": self._chance(0.85), "match": match or self._match(), "action": action or self._action()}

    def _default_rules(self):
        screenshots, archive = self._url("Desktop/Screenshots"), self._url("Downloads/Archive")
        return [self._rule({"fileTypes": ["png"], "namePattern": "Screenshot*", "ageBasis": "modified"},
                           {"fileScreenshot": {"into": screenshots}}),
                self._rule({"fileTypes": ["dmg", "pkg"], "minAge": 2_592_000, "ageBasis": "lastOpened"},
                           {"fixed": {"_0": {"trash": {}}}}),
                self._rule({"fileTypes": [], "minAge": 2_592_000, "ageBasis": "added"}, {"archiveByMonth": {"into": archive}})]

    def _match(self):
        extensions = [each.rpartition(".")[2].lower() for each in self._extensions]
        types = self._choice(TYPES) if self._chance(0.4) else self._choice([[], self._random.sample(extensions, 2)])
        match = {"fileTypes": types, "ageBasis": self._choice(["modified", "added", "lastOpened"])}
        if self._chance(0.4):
            match["namePattern"] = self._choice(PATTERNS) if self._chance(0.6) else self._choice(self._stems)[:3] + "*"
        if self._chance(0.3):
            match["minAge"] = self._choice(AGES)
        if self._chance(0.2):
            match["screenCaptureOnly"] = self._choice([True, True, False, None])
        return match

    def _action(self):
        folder = self._url(self._choice(self._watched if self._chance(0.4) else TARGETS))
        fixed = [{"move": {"to": folder}}, {"archive": {"to": folder}}, {"trash": {}}, {"rename": {"to": self._choice(NEW_NAMES)}},
                 {"fileInto": {"folder": folder, "renamedTo": self._choice(NEW_NAMES)}}]
        return self._choice([{"fileScreenshot": {"into": folder}}, {"archiveByMonth": {"into": folder}},
                             {"fileMarkdown": {"into": folder}}] + [{"fixed": {"_0": each}} for each in fixed])

    def _url(self, place):
        url = "file://" + HOME + "/" + quote(place, safe=self._choice(["/", "/;+&@"]))
        return url + "/" if self._chance(0.7) else url
