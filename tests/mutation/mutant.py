# One defect in one place, and the names by which it is known from run to run: the file, the function around it and the
# lines before and after, so that it stays the same while those stand there.
import hashlib
from dataclasses import dataclass


def flat(text):
    return " ".join(text.split())


@dataclass(frozen=True)
class Mutant:
    file: str  # relative to the tree
    kind: str
    function: str  # with a number behind it from the second of the same lines in a function on
    before: str
    after: str
    begin: int
    end: int
    text: bytes

    @property
    def key(self):
        return self.file, self.function, self.before, self.after

    @property
    def id(self):
        return hashlib.sha256("\n".join(self.key).encode()).hexdigest()[:10]

    def put_into(self, source):
        return source[: self.begin] + self.text + source[self.end :]


def mutants_of(file, source, places):
    """The mutants of a file, from the places in it."""
    mutants, times = [], {}
    for place in places:
        first = source.rfind(b"\n", 0, place.begin) + 1
        last = source.find(b"\n", place.end)
        last = len(source) if last < 0 else last
        before = flat(source[first:last].decode())
        after = flat((source[first : place.begin] + place.text + source[place.end : last]).decode())
        key = (place.function, before, after)
        times[key] = times.get(key, 0) + 1
        function = place.function if times[key] == 1 else f"{place.function} ({times[key]})"
        mutants.append(Mutant(file, place.kind, function, before, after, place.begin, place.end, place.text))
    return mutants
