# The rooms of the library and where their tests lie, as the table of rooms in HACKING.md says.
import re
from dataclasses import dataclass, field

LAYERS = ("api/", "ORBE_Controller/", "Unified_PSB_Demux/", "common/")
ROW = re.compile(r"^\| (?:\*\*`(?P<layer>[^`]+)`\*\*)? ?(?:`(?P<name>[^`]+)`)? \|(?P<rest>.*)\|$")


@dataclass
class Room:
    path: str  # ends with a slash, relative to the tree
    tests: list = field(default_factory=list)  # folders in tests/

    @property
    def layer(self):
        return next(layer for layer in LAYERS if self.path.startswith(layer))


def read_rooms(hacking):
    """The rooms of the four layers. Those that are tested with their users get all folders of their layer's tests."""
    rooms, layer = [], ""
    for line in hacking.splitlines():
        row = ROW.match(line)
        if not row:
            continue
        layer = row["layer"] or layer
        name = row["name"] or ""
        path = name if name.startswith(layer) else layer + name
        if not path.startswith(LAYERS):
            continue
        cell = row["rest"].split("|")[-1]
        rooms.append(Room(path, re.findall(r"`([^`]+/)`", cell)))
    for room in rooms:
        if not room.tests:
            folders = {folder for other in rooms if other.layer == room.layer for folder in other.tests}
            room.tests = sorted(folders)
    return rooms


def room_of(rooms, file):
    """The innermost room that holds the file, or None."""
    inside = [room for room in rooms if file.startswith(room.path)]
    return max(inside, key=lambda room: len(room.path), default=None)
