// What is shown while the page is held at a time of a source that goes on, as a box does: the program overwrites what
// it remembers, so the picture that has come is kept.

// Whether the traces are those of the view, at the time at which it ends.
export function isOf(picture, view) {
  const traces = picture?.head.traces;
  return traces !== undefined && traces.stream === view.stream && traces.seconds === view.seconds &&
    traces.end === view.end &&
    (traces.stream === "adc" ||
      (traces.port === view.port && traces.first === view.first && picture.blocks.traces.rows === view.count));
}

// Where a step by so many seconds leads from a window that ends at `end`: the second at which the window ends, `end`
// itself if there is no way back. Whole windows only: they begin no earlier than `remembered`, the first second that
// the program can still show, of which none is older than `longest`.
export function stepped({ end, by, seconds, position, remembered, longest }) {
  const earliest = Math.min(Math.max(position - longest, remembered) + seconds, position);
  const wanted = Math.min(Math.max(end + by, earliest), position);
  return by < 0 ? Math.min(wanted, end) : wanted;
}
