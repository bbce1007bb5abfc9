// The channels along the probe: a field where each lies, and beside it a bar as long as its value is large, so
// that no colour is needed to read it.
import { canvasOf, color, fontOf, heat, niceAbove } from "./look.js";

export class Probe_Map {
  // `choose` is told which channel was clicked.
  constructor(canvas, choose) {
    this.canvas = canvas;
    this.values = [];
    this.channels = [];
    this.shown = [0, 0];
    canvas.addEventListener("click", (event) => {
      const channel = this.channelAt(event.offsetX, event.offsetY);
      if (channel !== null) {
        choose(channel);
      }
    });
    new ResizeObserver(() => this.draw()).observe(canvas);
  }

  // `channels`: of each x, y and electrode. `values`: none when nothing comes. `shown`: the first channel of the traces, and the one behind them.
  show(channels, values, unit, chosen, shown) {
    const isSilent = values === null;
    // What is not in the recording is no number.
    const known = channels.map((_, channel) => (isSilent || Number.isNaN(values[channel]) ? null : values[channel]));
    Object.assign(this, { channels, values: known, isSilent, unit, chosen, shown });
    this.draw();
  }

  layout(width, height) {
    const top = 8;
    const bottom = 30;
    const ys = this.channels.map((channel) => channel[1]);
    const low = Math.min(...ys);
    const rows = new Set(ys).size;
    const row = (height - top - bottom) / Math.max(rows, 1);
    const high = Math.max(...ys);
    const field = width * 0.09;
    // From edge to edge, however far apart the columns of electrodes are.
    const xs = this.channels.map((channel) => channel[0]);
    const left = Math.min(...xs);
    const across = Math.max(...xs) - left;
    const margin = 4; // of the frame around the chosen one
    const room = width * 0.47 - field - margin;
    const place = (channel) => {
      const [x, y] = this.channels[channel];
      return {
        left: margin + (across === 0 ? 0 : ((x - left) / across) * room),
        top: top + (high === low ? 0 : ((high - y) / (high - low)) * (rows - 1) * row),
      };
    };
    return { row, field, place, bars: width * 0.54, top, bottom };
  }

  draw() {
    if (this.channels.length === 0 || this.canvas.clientWidth === 0) {
      return;
    }
    const { context, width, height } = canvasOf(this.canvas);
    const { row, field, place, bars } = this.layout(width, height);
    const sorted = this.values.filter((value) => value !== null).sort((a, b) => a - b);
    const most = niceAbove(sorted[Math.floor(sorted.length * 0.98)] ?? 0);
    const longest = width - bars - 4;
    for (let channel = 0; channel < this.channels.length; ++channel) {
      const { left, top } = place(channel);
      const part = (this.values[channel] ?? 0) / most;
      context.fillStyle = this.isSilent ? color("line") : heat(part);
      context.fillRect(left, top, field, Math.max(row - 0.5, 1));
      if (this.channels[channel][2] < 0 || (this.values[channel] === null && !this.isSilent)) {
        // Connected to nothing, or not there.
        context.strokeStyle = color("ink");
        context.strokeRect(left, top, field, Math.max(row, 2));
      }
      context.fillStyle = color("bar");
      const half = row / 2;
      context.fillRect(bars, top + (channel % 2) * half, Math.min(part, 1) * longest, Math.max(half - 0.2, 0.7));
    }
    context.strokeStyle = color("ink");
    const first = place(this.shown[0]);
    const last = place(Math.max(this.shown[1] - 1, this.shown[0]));
    context.strokeRect(bars - 5, last.top, 2, first.top + row - last.top);
    const chosen = place(this.chosen);
    context.strokeStyle = color("chosen");
    context.lineWidth = 2;
    context.strokeRect(chosen.left - 2, chosen.top - 2, field + 4, row + 4);
    context.beginPath();
    context.moveTo(bars - 8, chosen.top + row / 2);
    context.lineTo(width, chosen.top + row / 2);
    context.stroke();
    context.lineWidth = 1;
    context.font = fontOf(this.canvas);
    if (this.isSilent) {
      context.fillStyle = color("ink");
      context.fillText("no data", bars + 4, height / 2);
      return;
    }
    const scale = width * 0.4;
    for (let i = 0; i < scale; ++i) {
      context.fillStyle = heat(i / scale);
      context.fillRect(i, height - 24, 1, 8);
    }
    context.fillStyle = color("ink");
    context.fillText("0", 0, height - 3);
    context.fillText(`${most} ${this.unit}`, scale * 0.75, height - 3);
  }

  channelAt(x, y) {
    const { row, field, place, bars } = this.layout(this.canvas.clientWidth, this.canvas.clientHeight);
    let found = null;
    let nearest = 12;
    for (let channel = 0; channel < this.channels.length; ++channel) {
      const { left, top } = place(channel);
      const aside = x > bars ? 0 : Math.max(left - x, x - left - field, 0);
      const distance = aside + Math.abs(y - (x > bars ? top + (channel % 2) * row / 2 + row / 4 : top + row / 2));
      if (distance < nearest) {
        nearest = distance;
        found = channel;
      }
    }
    return found;
  }

  // Where a channel's field is, for those who click it.
  placeOf(channel) {
    const { row, field, place } = this.layout(this.canvas.clientWidth, this.canvas.clientHeight);
    const { left, top } = place(channel);
    return { x: left + field / 2, y: top + row / 2 };
  }
}
