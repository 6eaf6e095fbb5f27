"""What a name is made of: its extension, its number, its place in the order, and the patterns that fit it."""

import unicodedata

LONGEST_NAME = 255  # bytes


def is_utf8(name):
    try:
        name.encode()
        return True
    except UnicodeEncodeError:  # carries bytes that are no text
        return False


def size_in_bytes(name):
    return len(name.encode(errors="surrogateescape"))


def split_extension(name):
    """("report", "pdf"), or (name, "") where there is no extension."""
    dot = name.rfind(".")
    if dot <= 0 or dot == len(name) - 1:
        return name, ""
    return name[:dot], name[dot + 1:]


def lowered_extension(name):
    return split_extension(name)[1].lower()


def numbered(name, counter):
    stem, extension = split_extension(name)
    return f"{stem} {counter}" + (f".{extension}" if extension else "")


def is_single_component(name):
    return name not in ("", ".", "..") and "/" not in name and "\0" not in name


# The order of a file browser: white space, punctuation, symbols, currency, digits by their value, letters without
# regard to case; then accents; then small letters before large ones. Characters in none of these lists come last, by
# their number.
_BEFORE_DIGITS = "\t\n _-,;:!?.'\"()[]{}@*/\\&#%`^+<=>|~✓😀$€"
_LETTERS = "abcdefghijklmnopqrstuvwxyzαβγδελабвгдежзиклмнопрстуфхцчшщъыьэюя"
_ACCENTS = {"\u0301": 1, "\u0300": 2, "\u0306": 3, "\u0302": 4, "\u030c": 5, "\u030a": 6, "\u0308": 7,
            "\u0303": 8, "\u0327": 9}


def order_key(name):
    text = unicodedata.normalize("NFD", name)
    first, second, third = [], [], []
    index = 0
    while index < len(text):
        character = text[index]
        index += 1
        if character in _ACCENTS:
            second.append(_ACCENTS[character])
            third.append(0)
            continue
        if character.isascii() and character.isdigit():
            value = character
            while index < len(text) and text[index].isascii() and text[index].isdigit():
                value += text[index]
                index += 1
            first.append((1, int(value)))
        elif character in _BEFORE_DIGITS:
            first.append((0, _BEFORE_DIGITS.index(character)))
        elif character.lower() in _LETTERS:
            first.append((2, _LETTERS.index(character.lower())))
        else:
            first.append((3, ord(character)))
        second.append(0)
        third.append(1 if character != character.lower() else 0)
    return first, second, third


def fits(pattern, name):
    """Whether a shell pattern accepts the whole name, without regard to case."""
    return "\0" not in pattern and _fits(pattern, name)


def _fits(pattern, name):
    if not pattern:
        return not name
    head = pattern[0]
    if head == "*":
        return any(_fits(pattern[1:], name[skipped:]) for skipped in range(len(name) + 1))
    if head == "\\":
        return len(pattern) > 1 and name != "" and _same(pattern[1], name[0]) and _fits(pattern[2:], name[1:])
    if not name:
        return False
    if head == "?":
        return _fits(pattern[1:], name[1:])
    if head == "[":
        bracket = _bracket(pattern)
        if bracket:
            accepts, rest = bracket
            return accepts(name[0]) and _fits(rest, name[1:])
    return _same(head, name[0]) and _fits(pattern[1:], name[1:])


def _same(one, other):
    return one.lower() == other.lower()


def _bracket(pattern):
    """A test of one character and the rest of the pattern; nothing for a bracket that is never closed."""
    index = 1
    negated = pattern[index:index + 1] in ("!", "^")
    index += negated
    ranges, classes = [], []
    start = index
    while True:
        if index >= len(pattern):
            return None
        character = pattern[index]
        if character == "]" and index > start:
            break
        if pattern.startswith("[:", index) and ":]" in pattern[index + 2:]:
            end = pattern.index(":]", index + 2)
            classes.append(pattern[index + 2:end])
            index = end + 2
            continue
        if character == "\\":
            index += 1
            if index >= len(pattern):
                return None
            character = pattern[index]
        index += 1
        last = character
        if pattern[index:index + 1] == "-" and pattern[index + 1:index + 2] not in ("", "]"):
            last = pattern[index + 1]
            index += 2
        ranges.append((character.lower(), last.lower()))
    tests = {"digit": lambda c: c in "0123456789", "alpha": str.isalpha, "upper": str.isalpha,
             "lower": str.isalpha, "space": str.isspace}

    def accepts(character):
        character = character.lower()
        inside = any(low <= character <= high for low, high in ranges) \
            or any(tests[each](character) for each in classes)
        return inside != negated

    return accepts, pattern[index + 1:]
