# What three pages cost while the box, played by a recording, sends at its pace: two that keep up and one that never
# takes anything. Prints figures and asserts nothing but that nothing is lost. Arguments: orbe-view, orbe-recording, and
# how many seconds.
import os
import sys
import tempfile
import threading
import time

from view_program import Page, View, make_recording


def main():
    view_program, recording_program = sys.argv[1:3]
    seconds = float(sys.argv[3]) if len(sys.argv) > 3 else 5.0
    with tempfile.TemporaryDirectory() as folder:
        recording = os.path.join(folder, "full.bin")
        make_recording(recording_program, recording, "--seconds", str(seconds + 3), "--signal", "spikes")
        view = View(view_program, "--simulation", recording)
        stalled = Page(view, buffer=4096)
        stalled.say({"view": {"port": 1, "count": 96, "columns": 2000}})
        pages = [Page(view) for _ in range(2)]
        for port, page in enumerate(pages, 1):
            page.say({"view": {"port": port, "count": 16, "columns": 1000}})
        pages[0].picture(lambda head: head.get("status", {}).get("position", 0) > 0.5)
        begin, cpu_before = time.monotonic(), view.cpu_seconds()
        counts = [0, 0]

        def look(place):
            while time.monotonic() < begin + seconds:
                kind, _ = pages[place].receive()
                counts[place] += kind == 2

        threads = [threading.Thread(target=look, args=(place,)) for place in range(2)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        passed, cpu = time.monotonic() - begin, view.cpu_seconds() - cpu_before
        head, _ = pages[0].picture(lambda each: each.get("health"))
        lost = [stream[4] for line in head["health"] for stream in line["streams"] if stream[4] is not None]
        fill = max(stream[5] for line in head["health"] for stream in line["streams"] if stream[5] is not None)
        code, (shown, left_out, lost_in_all), errors = view.stop()
        print(f"pictures a second of the pages that keep up: {counts[0] / passed:.1f}, {counts[1] / passed:.1f}")
        print(f"pictures shown {shown}, left out for the stalled page {left_out}")
        print(f"CPU time of orbe-view for a second: {cpu / passed:.3f} s")
        print(f"fullest queue {fill:.3f}; samples lost {lost_in_all} (of all streams while it was seen: {sum(lost):.0f})")
        if code != 0 or lost_in_all != 0 or sum(lost) != 0 or errors:
            sys.exit(f"something is lost, or went wrong: {code} {lost_in_all} {sum(lost)} {errors}")


if __name__ == "__main__":
    main()
