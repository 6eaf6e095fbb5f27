"""Makes a world that fails smaller for as long as it still fails."""

import copy


def shrunk(data, fails):
    """The smallest world found for which `fails(world)` is still true. Tries steps in chunks first, then what the
    settings hold."""
    data = _fewer(data, lambda world: world["steps"], fails)
    for index, step in enumerate(data["steps"]):
        if step["do"] != "settings":
            continue
        for key in ("folders", "rules"):
            if key in step["document"]:
                data = _fewer(data, lambda world, i=index, k=key: world["steps"][i]["document"][k], fails)
        for number in range(len(data["steps"][index]["document"].get("folders", []))):
            data = _fewer(data, lambda world, i=index, n=number:
                          world["steps"][i]["document"]["folders"][n].get("rules", []), fails)
    return _fewer(data, lambda world: world["steps"], fails)


def _fewer(data, list_of, fails):
    size = max(1, len(list_of(data)) // 2)
    while True:
        start = 0
        removed = False
        while start < len(list_of(data)):
            smaller = copy.deepcopy(data)
            del list_of(smaller)[start:start + size]
            if fails(smaller):
                data = smaller
                removed = True
            else:
                start += size
        if size == 1 and not removed:
            return data
        size = max(1, size // 2)
