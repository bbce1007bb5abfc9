# Draws defects at random, each room as often as its share of the lines of code, so that any number of the first ones
# is spread over the rooms alike.
import random
import re

CODE = re.compile(rb"[A-Za-z0-9{}]")


def lines_of_code(source):
    return sum(1 for line in source.split(b"\n") if CODE.search(line.split(b"//")[0]))


def draw(mutants, lines, seed):
    """All mutants in the order of drawing. `mutants`: a list for each room; `lines`: lines of code for each room. In a
    room all places have the same chance, and all defects of one place; the first round takes one defect a place."""
    queues = {}
    for room, of_room in sorted(mutants.items()):
        chance = random.Random(f"{seed} {room}")
        places = {}
        for mutant in of_room:
            places.setdefault((mutant.file, mutant.begin, mutant.end), []).append(mutant)
        order = sorted(places)
        chance.shuffle(order)
        for place in order:
            chance.shuffle(places[place])
        rounds = max(len(of_place) for of_place in places.values())
        queue = [places[place][turn] for turn in range(rounds) for place in order if turn < len(places[place])]
        queues[room] = iter(queue)
    taken = dict.fromkeys(queues, 0)
    while queues:
        room = min(queues, key=lambda name: ((taken[name] + 0.5) / lines[name], name))
        taken[room] += 1
        mutant = next(queues[room], None)
        if mutant is None:
            del queues[room]
        else:
            yield room, mutant
