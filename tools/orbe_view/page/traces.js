// The traces: lowest and highest value of each column, a lane a channel. The chosen one is thicker and has a mark beside
// its label. What is lost is left out, hatched and written over.
import uPlot from "./uplot/uPlot.js";
import { axis, color, fit } from "./look.js";

export class Traces {
  // `choose` is told which lane was clicked; `wheel` how the wheel was turned, and with which keys.
  constructor(place, { choose, wheel }) {
    this.place = place;
    this.lanes = 0;
    this.spacing = 1;
    this.labels = [];
    this.written = [];
    this.chosen = -1;
    this.lost = [];
    this.step = 0;
    this.choose = choose;
    place.addEventListener("wheel", (event) => {
      event.preventDefault();
      // With Shift many browsers turn the wheel sideways.
      wheel(Math.sign(event.deltaY || event.deltaX), event);
    }, { passive: false });
    this.build(0);
  }

  build(lanes) {
    this.plot?.destroy();
    this.observer?.disconnect();
    this.lanes = lanes;
    const series = [{}];
    for (let lane = 0; lane < lanes; ++lane) {
      series.push({
        stroke: () => color(lane === this.chosen ? "chosen" : "trace"),
        width: this.widthOf(lane), points: { show: false }, spanGaps: false,
      });
    }
    this.plot = new uPlot({
      width: Math.max(this.place.clientWidth, 50),
      height: Math.max(this.place.clientHeight, 50),
      series,
      legend: { show: false },
      cursor: { drag: { x: false, y: false }, points: { show: false } },
      scales: {
        x: { time: false },
        y: { range: () => [-0.7 * this.spacing, (Math.max(this.lanes, 1) - 0.3) * this.spacing] },
      },
      axes: [
        axis({ values: (_, splits) => splits.map((value) => value.toFixed(3) + " s"), space: 90 }),
        axis({
          size: 70,
          splits: () => this.labelled().map((lane) => lane * this.spacing),
          values: (_, splits) => {
            this.written = splits.map((value) => this.labelOf(Math.round(value / this.spacing)));
            return this.written;
          },
        }),
      ],
      hooks: { draw: [(plot) => this.drawLost(plot)] },
    }, this.data ?? [[], ...Array.from({ length: lanes }, () => [])], this.place);
    this.plot.over.addEventListener("click", () => {
      const lane = Math.round(this.plot.posToVal(this.plot.cursor.top, "y") / this.spacing);
      if (lane >= 0 && lane < this.lanes) {
        this.choose(lane);
      }
    });
    fit(this.plot, this.place);
  }

  // So many lanes that their labels do not touch; that of the chosen one takes the place of those beside it.
  labelled() {
    const height = (this.place.clientHeight || 400) / Math.max(this.lanes, 1);
    const every = Math.max(1, Math.ceil(18 / height));
    return this.labels.map((_, lane) => lane).filter((lane) =>
      lane === this.chosen || (lane % every === 0 && (this.chosen < 0 || Math.abs(lane - this.chosen) >= every)));
  }

  labelOf(lane) {
    return (lane === this.chosen ? "► " : "") + this.labels[lane];
  }

  // `factors` make a lane's values fit the others'.
  show({ begin, step, block, lost, labels, spacing, factors, chosen }) {
    const columns = block.columns / 2;
    const times = new Array(2 * columns);
    for (let column = 0; column < columns; ++column) {
      times[2 * column] = begin + column * step;
      times[2 * column + 1] = begin + (column + 0.5) * step;
    }
    this.data = [times];
    for (let lane = 0; lane < block.rows; ++lane) {
      const values = new Array(2 * columns);
      const first = lane * block.columns;
      for (let i = 0; i < 2 * columns; ++i) {
        const value = block.values[first + i];
        values[i] = Number.isNaN(value) ? null : value * factors[lane] + lane * spacing;
      }
      this.data.push(values);
    }
    this.labels = labels;
    this.spacing = spacing;
    this.factors = factors;
    this.chosen = chosen;
    this.lost = lost;
    this.step = step;
    if (block.rows !== this.lanes) {
      this.build(block.rows);
    } else {
      this.thicken();
      this.plot.setData(this.data);
      // The labels too, which a plot leaves alone as long as it shows the same time.
      this.plot.redraw(false, true);
    }
  }

  widthOf(lane) {
    return lane === this.chosen ? 2.5 : 1;
  }

  // A plot asks for the width of a line once, when it is built.
  thicken() {
    this.plot.series.slice(1).forEach((series, lane) => {
      series.width = this.widthOf(lane);
    });
  }

  // What the plot holds, in its units: of each lane the lowest and the highest of each column in turn.
  plotted() {
    const [times, ...lanes] = this.plot.data;
    return {
      times: Array.from(times),
      labels: this.labels,
      written: this.written, // beside the lanes
      widths: this.plot.series.slice(1).map((series) => series.width),
      lanes: lanes.map((lane, i) =>
        Array.from(lane, (value) => (value === null ? null : (value - i * this.spacing) / this.factors[i]))),
      lost: Array.from(this.lost),
    };
  }

  drawLost(plot) {
    const { ctx, bbox } = plot;
    ctx.save();
    ctx.strokeStyle = ctx.fillStyle = color("lost");
    let labelled = -Infinity;
    for (let column = 0; column < this.lost.length; ++column) {
      if (this.lost[column] === 0 || plot.data[0].length === 0) {
        continue;
      }
      const left = plot.valToPos(plot.data[0][2 * column], "x", true);
      const width = Math.max(plot.valToPos(plot.data[0][2 * column] + this.step, "x", true) - left, 3);
      ctx.globalAlpha = 0.3;
      ctx.fillRect(left, bbox.top, width, bbox.height);
      ctx.globalAlpha = 1;
      ctx.setLineDash([6, 4]);
      ctx.strokeRect(left, bbox.top, width, bbox.height);
      if (left - labelled > 60) {
        ctx.fillText("lost", left + 2, bbox.top + 12);
        labelled = left;
      }
    }
    ctx.restore();
  }
}
