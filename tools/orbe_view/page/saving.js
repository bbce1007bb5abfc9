// The page's pictures as one file.
import { color, fontOf } from "./look.js";

export function picture(title, canvases) {
  const ratio = window.devicePixelRatio || 1;
  const places = canvases.map((canvas) => ({ canvas, box: canvas.getBoundingClientRect() }));
  const left = Math.min(...places.map(({ box }) => box.left));
  const top = Math.min(...places.map(({ box }) => box.top));
  const right = Math.max(...places.map(({ box }) => box.right));
  const bottom = Math.max(...places.map(({ box }) => box.bottom));
  const whole = document.createElement("canvas");
  const head = 30;
  whole.width = (right - left + 20) * ratio;
  whole.height = (bottom - top + head + 10) * ratio;
  const context = whole.getContext("2d");
  context.scale(ratio, ratio);
  context.fillStyle = color("ground");
  context.fillRect(0, 0, whole.width, whole.height);
  context.fillStyle = color("ink");
  context.font = fontOf(document.body);
  context.fillText(title, 10, 20);
  for (const { canvas, box } of places) {
    context.drawImage(canvas, box.left - left + 10, box.top - top + head, box.width, box.height);
  }
  return whole;
}

export function save(title, canvases) {
  picture(title, canvases).toBlob((blob) => {
    const link = document.createElement("a");
    link.href = URL.createObjectURL(blob);
    link.download = "orbe-view-" + title.replace(/[^A-Za-z0-9.]+/g, "-") + ".png";
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
  });
}
