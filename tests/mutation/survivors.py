# The list of defects that change nothing which anybody can see, each with its reason:
#
#   FILE: FUNCTION
#   - the lines as they are
#   + the lines with the defect
#   = the reason
#
# An entry holds as long as its file has those lines.
from pathlib import Path

from mutant import flat


class Bad_List(Exception):
    pass


def read_survivors(text):
    """The reasons by key: file, function, lines before, lines after."""
    reasons, entry = {}, []
    for number, line in enumerate([*text.splitlines(), ""], 1):
        if line.startswith("#"):
            continue
        if line.strip():
            entry.append(line)
            continue
        if entry:
            key, reason = read_entry(entry, number)
            if key in reasons:
                raise Bad_List(f"line {number}: listed twice: {key[0]}: {key[1]}")
            reasons[key] = reason
            entry = []
    return reasons


def read_entry(lines, number):
    if len(lines) != 4 or [line[:2] for line in lines[1:]] != ["- ", "+ ", "= "] or ": " not in lines[0]:
        raise Bad_List(f"line {number}: an entry is four lines, of which the latter begin with '- ', '+ ' and '= '")
    file, function = lines[0].split(": ", 1)
    return (file, function, lines[1][2:], lines[2][2:]), lines[3][2:]


def outdated(reasons, tree):
    """The entries whose lines do not stand in their file, or not in so many places as they say."""
    found = []
    for key in reasons:
        file, function, before, after = key
        path = Path(tree) / file
        source = flat(path.read_text()) if path.is_file() else ""
        name = function.split(" (")[0].split("::")[-1]
        if before not in source or before == after or name not in source:
            found.append(key)
    return found


def write_entry(key, reason):
    file, function, before, after = key
    return f"{file}: {function}\n- {before}\n+ {after}\n= {reason}\n"
