// The spectrum of the chosen channel, with its highest peak in words.
import uPlot from "./uplot/uPlot.js";
import { axis, color, decades, fit } from "./look.js";

export class Spectrum {
  constructor(place, title) {
    this.title = title;
    this.plot = new uPlot({
      width: Math.max(place.clientWidth, 50),
      height: Math.max(place.clientHeight, 50),
      legend: { show: false },
      cursor: { drag: { x: false, y: false } },
      // A logarithmic axis without data needs to be told where it ends.
      scales: {
        x: { time: false, distr: 3, range: (_, low, high) => (low > 0 ? [low, high] : [1, 15000]) },
        y: { distr: 3, range: (_, low, high) => (low > 0 ? [low / 2, high * 2] : [0.1, 100]) },
      },
      series: [{}, { stroke: () => color("trace"), width: 1, points: { show: false } }],
      axes: [
        // The plot's own marks never end where the first one is rounded onto itself.
        axis({ label: "Hz", labelSize: 18, splits: (_, __, low, high) => decades(low, high) }),
        axis({ label: "µV/√Hz", labelSize: 18, size: 55, splits: (_, __, low, high) => decades(low, high) }),
      ],
    }, [[], []], place);
    fit(this.plot, place);
  }

  // `isSilent`: nothing comes any more, and what came last is no state of now.
  show(head, block, isSilent = false) {
    this.head = head;
    const { port, stream, channel, step } = head;
    // The mean is not a part of it, and a logarithm has no zero.
    const frequencies = [];
    const values = [];
    let peak = 0;
    for (let bin = 1; bin < block.columns && !isSilent; ++bin) {
      frequencies.push(bin * step);
      values.push(Math.max(block.values[bin], 1e-4));
      if (values[bin - 1] > (values[peak] ?? 0)) {
        peak = bin - 1;
      }
    }
    this.plot.setData([frequencies, values]);
    this.peak = frequencies[peak] ?? null;
    const where = `port ${port}, channel ${channel}, ${stream.toUpperCase()}`;
    this.title.textContent = values.length === 0
      ? `Spectrum: ${where}: ${isSilent ? "no data" : "not enough data without a gap"}`
      : `Spectrum: ${where}; highest at ${this.peak.toFixed(0)} Hz, ${values[peak].toPrecision(3)} µV/√Hz`;
  }

  // Whether the one that is shown is of the same.
  isOf({ port, stream, channel, end }) {
    return this.head?.port === port && this.head.stream === stream && this.head.channel === channel && this.head.end === end;
  }

  plotted() {
    return { frequencies: Array.from(this.plot.data[0]), values: Array.from(this.plot.data[1]), peak: this.peak, of: this.head };
  }
}
