// The whole recording from left to right: how far it is known, what is damaged where, and the time that is
// shown. Damage has a mark of its own for each kind.
import { canvasOf, color, count, fontOf, seconds } from "./look.js";

const kinds = [["row counter", "▲"], ["frame counter", "◆"], ["wrong tags", "✕"], ["others", "●"],
  ["lost samples", "■"]];

export class Time_Bar {
  // `go` is told a second.
  constructor(canvas, text, go) {
    this.canvas = canvas;
    this.text = text;
    this.damage = [];
    this.length = 0;
    canvas.addEventListener("click", (event) => go((event.offsetX / canvas.clientWidth) * this.length));
    new ResizeObserver(() => this.draw()).observe(canvas);
  }

  show({ length, known, begin, end, damage }) {
    Object.assign(this, { length, known, begin, end });
    this.damage = damage ?? this.damage;
    this.draw();
  }

  draw() {
    if (this.length <= 0 || this.canvas.clientWidth === 0) {
      return;
    }
    const { context, width, height } = canvasOf(this.canvas);
    const place = (time) => (time / this.length) * width;
    context.strokeStyle = color("line");
    context.strokeRect(0.5, height * 0.45, width - 1, height * 0.5);
    context.fillStyle = color("bar");
    context.fillRect(0, height * 0.9, width * this.known, height * 0.05);
    context.fillStyle = color("chosen");
    context.globalAlpha = 0.5;
    context.fillRect(place(this.begin), height * 0.45, Math.max(place(this.end) - place(this.begin), 2), height * 0.5);
    context.globalAlpha = 1;
    context.fillStyle = context.strokeStyle = color("lost");
    context.font = fontOf(this.canvas);
    const sums = kinds.map(() => 0);
    for (const [part, ...counts] of this.damage) {
      context.fillRect(part * width, height * 0.45, 1.5, height * 0.5);
      counts.forEach((value, kind) => {
        sums[kind] += value;
        if (value > 0) {
          context.fillText(kinds[kind][1], Math.min(part * width, width - 12), height * (kind % 2 ? 0.4 : 0.25));
        }
      });
    }
    const words = sums.map((sum, kind) => (sum === 0 ? "" : `${kinds[kind][1]} ${kinds[kind][0]} ${count(sum)}`)).filter(Boolean);
    const known = this.known < 1 ? `, ${Math.floor(this.known * 100)} % looked through` : "";
    this.text.textContent = `${seconds(this.length)}${known}: ${words.length === 0 ? "no damage" : words.join(", ")}`;
  }
}
