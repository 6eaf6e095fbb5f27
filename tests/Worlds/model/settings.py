"""The settings, read from and written to their JSON document."""

import copy
from urllib.parse import quote, unquote, urlsplit


def path_of(url):
    return unquote(urlsplit(url).path).rstrip("/") or "/"


class Settings:
    def __init__(self, document):
        self.subfolder = document.get("markdownSubfolder", "Notes")
        self.grace = document.get("gracePeriod", 60)
        self.is_paused = document.get("isPaused", False)
        self.has_onboarded = document.get("hasOnboarded", False)
        if "folders" in document:
            folders = document["folders"]
        else:
            # The rules that all folders share are taken over as they are, those for notes included; once they have
            # been saved with their folder, these are dropped when they are read again.
            folders = [{"path": path, "rules": document.get("rules", []), "isShared": True}
                       for path in document.get("watchedFolders", [])]
        self.folders = [self._folder(folder) for folder in folders]

    @staticmethod
    def _folder(folder):
        rules = [copy.deepcopy(rule) for rule in folder.get("rules", [])
                 if folder.get("isShared") or "fileMarkdown" not in rule["action"]]
        for rule in rules:
            match = rule["match"]
            match = rule["match"] = {key: value for key, value in match.items() if value is not None}
            if match.get("namePattern") == "Screenshot*" and "screenCaptureOnly" not in match:
                match["screenCaptureOnly"] = True
        return {"path": folder["path"], "rules": rules, "sortsMarkdown": folder.get("sortsMarkdown", True)}

    def document(self):
        """As it is saved, but for the spelling of URLs."""
        return {"folders": self.folders, "gracePeriod": self.grace, "hasOnboarded": self.has_onboarded,
                "isPaused": self.is_paused, "markdownSubfolder": self.subfolder}

    def paused(self, is_paused):
        """With this, and read again after they have been saved. What is so already is not saved."""
        if self.is_paused == is_paused:
            return self
        self.is_paused = is_paused
        return Settings(self.document())

    def folders_to_sweep(self):
        """(path, rules) in order; where notes are sorted, their rule comes first."""
        for folder in self.folders:
            rules = folder["rules"]
            if self.subfolder and folder["sortsMarkdown"]:
                rules = [self._notes_rule(folder["path"])] + rules
            yield folder["path"].rstrip("/"), rules

    def _notes_rule(self, path):
        return {"id": None, "name": "File Markdown notes", "isEnabled": True,
                "match": {"fileTypes": ["md", "markdown"], "ageBasis": "modified"},
                "action": {"fileMarkdown": {"into": "file://" + quote(f"{path.rstrip('/')}/{self.subfolder}")}}}
