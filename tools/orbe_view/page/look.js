// Colours, sizes and numbers as all parts of the page show them.

export const color = (name) => getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();

// Dark to light for low to high, which also a grey print keeps apart.
const steps = [[68, 1, 84], [59, 82, 139], [33, 145, 140], [94, 201, 98], [253, 231, 37]];

export function heat(part) {
  const place = Math.min(Math.max(part, 0), 1) * (steps.length - 1);
  const low = Math.min(Math.floor(place), steps.length - 2);
  const mixed = steps[low].map((value, i) => Math.round(value + (steps[low + 1][i] - value) * (place - low)));
  return `rgb(${mixed.join(",")})`;
}

// The next of 1, 2, 5, 10, 20 ...
export function niceAbove(value) {
  if (!(value > 0)) {
    return 1;
  }
  const power = 10 ** Math.floor(Math.log10(value));
  return [1, 2, 5, 10].find((step) => step * power >= value * 0.9999) * power;
}

// The marks of a logarithmic axis from `low` to `high`: 1 to 9 of every power of ten in it.
export function decades(low, high) {
  const marks = [];
  if (low > 0 && high < Infinity) {
    for (let power = Math.floor(Math.log10(low)); power <= Math.log10(high); ++power) {
      for (let digit = 1; digit <= 9; ++digit) {
        marks.push(Number(`${digit}e${power}`));
      }
    }
  }
  return marks.filter((mark) => mark >= low && mark <= high);
}

export const seconds = (value) => value.toFixed(3) + " s";

export function count(value) {
  return value === null || value === undefined ? "–" : Math.round(value).toLocaleString("en");
}

// A canvas as large as its place on the screen, in the screen's own pixels; what is drawn counts in CSS's.
export function canvasOf(element) {
  const ratio = window.devicePixelRatio || 1;
  const width = element.clientWidth;
  const height = element.clientHeight;
  if (element.width !== Math.round(width * ratio) || element.height !== Math.round(height * ratio)) {
    element.width = Math.round(width * ratio);
    element.height = Math.round(height * ratio);
  }
  const context = element.getContext("2d");
  context.setTransform(ratio, 0, 0, ratio, 0, 0);
  context.clearRect(0, 0, width, height);
  return { context, width, height };
}

export const fontOf = (element) => getComputedStyle(element).fontSize + " system-ui, sans-serif";

// Keeps a plot as large as its place.
export function fit(plot, place) {
  const size = () => ({ width: Math.max(place.clientWidth, 50), height: Math.max(place.clientHeight, 50) });
  new ResizeObserver(() => plot.setSize(size())).observe(place);
}

export const axis = (more) => ({
  stroke: () => color("ink"),
  grid: { stroke: () => color("line"), width: 1 },
  ticks: { stroke: () => color("line") },
  ...more,
});
