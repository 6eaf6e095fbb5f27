"""What the head of a Markdown note says."""

import re
import unicodedata

LIMIT = 8192  # bytes that are read
_NEWLINES = "\n\v\f\r\x85\u2028\u2029"


def _is_space(character):
    return character == "\t" or unicodedata.category(character) == "Zs"


def _trim(text, is_trimmed):
    start, end = 0, len(text)
    while start < end and is_trimmed(text[start]):
        start += 1
    while end > start and is_trimmed(text[end - 1]):
        end -= 1
    return text[start:end]


def trim(text):
    return _trim(text, _is_space)


def trim_with_newlines(text):
    return _trim(text, lambda character: _is_space(character) or character in _NEWLINES)


class Head:
    """Title and date of a note; either may be None."""

    def __init__(self, content):
        self.title = None
        self.date = None
        try:
            text = content[:LIMIT].decode()
        except UnicodeDecodeError:
            return
        lines = re.split(f"[{_NEWLINES}]", text.removeprefix("\ufeff"))
        if trim(lines[0]) != "---":
            return
        for line in lines[1:]:
            if trim(line) == "---":
                return
            self._read(line)

    def _read(self, line):
        key, colon, value = line.partition(":")
        key, value = trim(key).lower(), trim(value)
        if len(value) >= 2 and value[0] == value[-1] and value[0] in "\"'":
            value = value[1:-1]
        if not colon or not value:
            return
        if key == "title":
            self.title = value
        elif key in ("date", "created"):
            self.date = value

    def month(self):
        """"2024-05", or None."""
        month = (self.date or "")[:7]
        pieces = [piece for piece in month.split("-") if piece]
        if len(month) == 7 and [len(piece) for piece in pieces] == [4, 2] and "".join(pieces).isnumeric():
            return month
        return None

    def file_name(self, extension):
        """The name by the title, or None."""
        title = trim_with_newlines((self.title or "").replace("/", "-").replace(":", "-"))
        return title + (f".{extension}" if extension else "") if title else None
