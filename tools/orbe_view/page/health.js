// How the streams are: now, and what has come together, as a table, and one quantity of all of them over the last
// minutes.
import uPlot from "./uplot/uPlot.js";
import { axis, color, count, fit } from "./look.js";

// In the order in which the program sends them. Those with a `sum` have one, at that place of the sums.
export const quantities = [
  {
    name: "Rate, samples a second", short: "Rate /s", text: count,
    bad: (value, isExpected) => value === 0 && isExpected,
  },
  { name: "Gaps of the row counter", short: "Row gaps", sum: 0, text: count, bad: (value) => value > 0 },
  { name: "Gaps of the frame counter", short: "Frame gaps", sum: 1, text: count, bad: (value) => value > 0 },
  { name: "Wrong tags", short: "Wrong tags", sum: 2, text: count, bad: (value) => value > 0 },
  { name: "Lost samples", short: "Lost", sum: 3, text: count, bad: (value) => value > 0 },
  {
    name: "Queue, per cent full", short: "Queue", factor: 100,
    text: (value) => (value === null ? "–" : value.toFixed(0) + " %"), bad: (value) => value > 50,
  },
  {
    name: "Link lock", short: "Link",
    text: (value) => (value === null ? "–" : value > 0 ? "locked" : "open"), bad: (value) => value === 0,
  },
];

const streams = ["Port 1", "Port 2", "Port 3", "Port 4", "ADC"];
const hasCome = 4; // place in the sums
// Half a second each; so long nothing has come from a stream that has stopped.
const silentLines = 3;
const dashes = [[], [8, 4], [2, 3], [10, 3, 2, 3], [1, 5]]; // so that no colour is needed

export class Health {
  constructor(place, table, select) {
    this.table = table;
    this.select = select;
    this.lines = [];
    this.summed = [];
    this.ports = [];
    quantities.forEach((quantity, i) => select.add(new Option(quantity.name, i)));
    select.addEventListener("change", () => this.draw());
    this.plot = new uPlot({
      width: Math.max(place.clientWidth, 50),
      height: Math.max(place.clientHeight, 50),
      legend: { show: false },
      cursor: { drag: { x: false, y: false } },
      scales: { x: { time: false }, y: { range: (_, low, high) => [Math.min(low ?? 0, 0), Math.max(high ?? 0, 1) * 1.05] } },
      series: [{}, ...streams.map((label, i) => ({
        label, dash: dashes[i], stroke: () => color(i === 4 ? "chosen" : "trace"), width: 2, points: { show: false },
      }))],
      axes: [axis({ values: (_, splits) => splits.map((value) => value + " s") }), axis({ size: 60 })],
    }, [[], ...streams.map(() => [])], place);
    fit(this.plot, place);
  }

  // `ports`: those with a probe.
  expect(ports) {
    this.ports = ports;
    this.draw();
  }

  // `summed`: of each stream what has come together since the source began, or since the last jump.
  show(lines, summed) {
    this.lines = lines;
    this.summed = summed;
    this.draw();
  }

  // Whether something is to come: there is a probe, or something has come.
  isExpected(stream) {
    return this.ports.includes(stream + 1) || Boolean(this.summed[stream]?.[hasCome]);
  }

  // Whether nothing comes from a port any more.
  hasStopped(port) {
    const last = this.lines.slice(-silentLines);
    return last.length === silentLines && last.every((line) => this.value(line, port - 1, 0) === 0);
  }

  value(line, stream, quantity) {
    const value = line.streams[stream][quantity];
    return value === null ? null : value * (quantities[quantity].factor ?? 1);
  }

  sums() {
    return streams.map((_, stream) => quantities.map((quantity, i) => {
      if (quantity.sum !== undefined) {
        return this.summed[stream]?.[quantity.sum] ?? null;
      }
      const last = this.lines.at(-1);
      return last ? this.value(last, stream, i) : null;
    }));
  }

  draw() {
    const quantity = Number(this.select.value);
    this.plot.setData([
      this.lines.map((line) => line.seconds),
      ...streams.map((_, stream) => this.lines.map((line) => this.value(line, stream, quantity))),
    ]);
    const rows = [["Stream", ...quantities.map((each) => each.short)]];
    this.sums().forEach((sums, stream) => {
      rows.push([streams[stream], ...sums.map((value, i) => ({ text: quantities[i].text(value), bad: value !== null && quantities[i].bad?.(value, this.isExpected(stream)) }))]);
    });
    this.table.replaceChildren(...rows.map((row, r) => {
      const line = document.createElement("tr");
      line.append(...row.map((cell) => {
        const element = document.createElement(r === 0 ? "th" : "td");
        element.textContent = cell.text ?? cell;
        element.classList.toggle("bad", Boolean(cell.bad));
        return element;
      }));
      return line;
    }));
  }
}
