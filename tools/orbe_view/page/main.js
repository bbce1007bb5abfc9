// The page: what is to be seen, what the controls and keys change about it, and what a picture goes to.
import { Health, quantities } from "./health.js";
import { isOf, stepped } from "./holding.js";
import { listen } from "./keys.js";
import { Link } from "./link.js";
import { seconds } from "./look.js";
import { Notices } from "./notices.js";
import { Probe_Map } from "./probe_map.js";
import { save } from "./saving.js";
import { Spectrum } from "./spectrum.js";
import { Time_Bar } from "./time_bar.js";
import { Traces } from "./traces.js";

const element = (id) => document.getElementById(id);
const channelCount = 384;
const longest = 30; // seconds that the program remembers
const scales = [5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000];
const windows = [0.01, 0.02, 0.05, 0.1, 0.2, 0.5, 1, 2, 5, 10, 20, 30];
const volts = 10; // a lane of the ADC inputs

// ---- What is to be seen.

const view = { stream: "ap", port: 1, first: 0, count: 16, selected: 0, seconds: 1, columns: 1000, end: null };
let scale = 500;
let introduction = null;
let status = null;
let last = null; // picture with traces that is shown
let remembered = 0; // the first second of the stream that the program can still show
let channels = null; // { port, rms, spikes }
let health = [];
const arrivals = [];
let pictures = 0;

const traces = new Traces(element("traces"), {
  choose: (lane) => {
    if (view.stream !== "adc") {
      choose(view.first + lane);
    }
  },
  wheel: (step, event) => {
    if (event.shiftKey) {
      changeScale(step);
    } else if (event.ctrlKey) {
      changeWindow(step);
    } else {
      showFrom(view.first - step * Math.max(1, Math.floor(view.count / 4)));
    }
  },
});
const map = new Probe_Map(element("map"), (channel) => choose(channel, true));
const spectrum = new Spectrum(element("spectrum"), element("spectrum-title"));
const healthView = new Health(element("history"), element("states"), element("quantity"));
const notices = new Notices(element("notice"), element("put-away"));
const timeBar = new Time_Bar(element("timebar"), element("damage"), (second) => jump(second));

// ---- What the program is told.

const link = new Link({
  seen: (picture) => (picture.head.introduction ? introduce(picture.head.introduction) : take(picture)),
  told: (text) => notices.tell("answer", text),
  changed: (isOpen, reason) => {
    notices.tell("connection", isOpen ? "" : `No connection to orbe-view${reason ? ": " + reason : ""}`);
    if (isOpen) {
      ask();
    }
  },
});

function ask() {
  view.columns = Math.min(2000, Math.max(100, Math.round(element("traces").clientWidth) || 1000));
  const asked = { ...view };
  if (asked.end === null) {
    delete asked.end;
  }
  link.say({ view: asked });
  showControls();
}

// ---- What the controls and keys do.

function choose(channel, brings) {
  view.selected = Math.min(Math.max(channel, 0), channelCount - 1);
  const isSeen = view.selected >= view.first && view.selected < view.first + view.count;
  if (!isSeen || (brings && view.stream === "adc")) {
    view.first = Math.min(Math.max(view.selected - Math.floor(view.count / 2), 0), channelCount - view.count);
  }
  if (brings && view.stream === "adc") {
    view.stream = "ap";
  }
  ask();
}

function showFrom(channel) {
  const wanted = Number.isFinite(channel) ? Math.round(channel) : view.first;
  view.first = Math.min(Math.max(wanted, 0), channelCount - view.count);
  ask();
}

function showCount(count) {
  const wanted = Number.isFinite(count) ? Math.round(count) : view.count;
  view.count = Math.min(Math.max(wanted, 1), 96);
  showFrom(view.first);
}

function step(list, value, by) {
  const place = list.indexOf(value);
  return list[Math.min(Math.max(place + by, 0), list.length - 1)];
}

function changeScale(by) {
  scale = step(scales, scale, by);
  showControls();
  draw();
}

function changeWindow(by) {
  view.seconds = step(windows, view.seconds, by);
  ask();
}

function showPort(port) {
  view.port = port;
  channels = null;
  ask();
}

function showStream(stream) {
  view.stream = stream;
  ask();
}

const isPaused = () => view.end !== null || (status !== null && introduction?.can_jump && !status.plays);

function pause(pauses) {
  if (status === null) {
    return;
  }
  notices.tell("memory", "");
  if (introduction.can_jump) {
    view.end = pauses ? view.end : null;
    link.say({ plays: !pauses });
  } else if (!pauses) {
    view.end = null;
  } else if (view.end === null) {
    hold();
  }
  ask();
}

// What is shown stays.
function hold() {
  const isShown = isOf(last, view);
  view.end = isShown ? last.head.status.position : status.position;
  if (isShown) {
    last.head.traces.end = view.end;
  }
}

// By so many seconds: a recording jumps, of anything else a window is shown that is still remembered.
function move(by) {
  if (status === null) {
    return;
  }
  notices.tell("memory", "");
  const { position } = status;
  const before = view.end ?? position;
  if (introduction.can_jump) {
    jump(before + by, false);
    return;
  }
  const end = stepped({ end: before, by, seconds: view.seconds, position, remembered, longest });
  if (by > 0 && end >= position) {
    pause(false);
    return;
  }
  if (end !== before) {
    view.end = end;
    ask();
  }
  if (by < 0 ? end === before : end > before + by) {
    tellMemory(Math.max(position - longest, remembered));
  }
}

function tellMemory(begin) {
  notices.tell("memory", `Nothing is remembered of the time before ${seconds(begin)}`);
}

function latest() {
  if (introduction?.can_jump) {
    jump(status.length, true);
  } else {
    pause(false);
  }
}

function jump(second, plays = status?.plays ?? true) {
  view.end = null;
  link.say({ jump: { seconds: Math.min(Math.max(second, 0), status?.length ?? second), plays } });
  ask();
}

function changeTheme() {
  const isDark = document.documentElement.dataset.theme === "dark";
  setTheme(isDark ? "light" : "dark");
}

function setTheme(theme) {
  document.documentElement.dataset.theme = theme;
  draw();
  spectrum.plot.redraw();
  healthView.draw();
  timeBar.draw();
}

function savePicture() {
  const shown = last ? ` ${seconds(last.head.traces.begin)}` : "";
  save(`${introduction?.name ?? ""} port ${view.port} ${view.stream}${shown}`, [
    element("map"), ...document.querySelectorAll("#traces canvas, #spectrum canvas, #history canvas"),
  ]);
}

function changeStreams() {
  if (introduction?.may_control && status) {
    link.say({ streams: !status.streams });
  }
}

// ---- What comes.

function introduce(what) {
  introduction = what;
  element("source").textContent = `${what.name} (${what.kind})`;
  element("bar").hidden = !what.can_jump;
  element("control").hidden = !what.may_control;
  const ports = what.probes.map((probe) => probe.port);
  healthView.expect(ports);
  radios(element("ports"), "port", ports.map((port) => [port, String(port)]), (port) => showPort(Number(port)));
  const streams = [];
  if (ports.length > 0) {
    streams.push(["ap", "AP"], ["lfp", "LFP"]);
  }
  if (what.has_adc) {
    streams.push(["adc", "ADC, TTL"]);
  }
  radios(element("streams"), "stream", streams, showStream);
  if (ports.length > 0 && !ports.includes(view.port)) {
    view.port = ports[0];
  }
  if (ports.length === 0) {
    view.stream = "adc";
  }
  ask();
}

function radios(place, name, choices, act) {
  place.replaceChildren(place.querySelector("legend"), ...choices.map(([value, text]) => {
    const label = document.createElement("label");
    const input = document.createElement("input");
    Object.assign(input, { type: "radio", name, value });
    input.addEventListener("change", () => act(value));
    label.append(input, " " + text);
    return label;
  }));
}

function take(picture) {
  ++pictures;
  arrivals.push(performance.now());
  while (arrivals.length > 100) {
    arrivals.shift();
  }
  const { head, blocks } = picture;
  status = head.status;
  takeTraces(picture);
  if (head.channels?.port === view.port) {
    channels = { port: view.port, rms: blocks.rms.values.slice(), spikes: blocks.spikes.values.slice() };
    showMap();
  }
  if (head.health) {
    health = head.health;
    healthView.show(health, head.health_sums);
    showMap();
  }
  if (head.spectrum && (view.end === null || (head.spectrum.end === view.end && !spectrum.isOf(head.spectrum)))) {
    spectrum.show(head.spectrum, blocks.spectrum, view.end === null && healthView.hasStopped(head.spectrum.port));
  }
  notices.tell("problem", status.problem);
  draw();
  timeBar.show({
    length: status.length, known: status.known, damage: head.damage,
    begin: last?.head.traces.begin ?? status.position, end: status.position,
  });
  showTime();
}

// Held at a time, the first picture of it is kept: the program forgets what is in it.
function takeTraces(picture) {
  const { traces } = picture.head;
  if (traces?.stream !== view.stream) {
    return;
  }
  remembered = traces.remembered;
  if (view.end === null) {
    last = picture;
  } else if (isOf(picture, view) && !isOf(last, view)) {
    last = picture;
    if (traces.begin + traces.step < remembered) {
      tellMemory(remembered);
    }
  }
}

// ---- How it looks.

function draw() {
  if (!last) {
    return;
  }
  const { head, blocks } = last;
  const block = blocks.traces;
  const isAdc = head.traces.stream === "adc";
  const labels = Array.from({ length: block.rows }, (_, lane) =>
    isAdc ? (lane < 8 ? `ADC ${lane}` : `TTL ${lane - 7}`) : `${head.traces.first + lane}`);
  traces.show({
    begin: head.traces.begin, step: head.traces.step, block, lost: blocks.lost.values, labels,
    spacing: isAdc ? volts : scale,
    factors: labels.map((_, lane) => (isAdc && lane >= 8 ? volts * 0.6 : 1)),
    chosen: isAdc ? -1 : view.selected - head.traces.first,
  });
}

function probe() {
  return introduction?.probes.find((each) => each.port === view.port);
}

function showMap() {
  const here = probe();
  if (!here || !channels) {
    return;
  }
  const measure = element("measure").value;
  const isSilent = healthView.hasStopped(view.port) || channels.rms.every((value) => !(value > 0));
  map.show(here.channels, isSilent ? null : channels[measure], measure === "rms" ? "µV" : "/s", view.selected,
    [view.first, view.first + view.count]);
  const electrode = here.channels[view.selected][2];
  element("channel").textContent = isSilent
    ? `Port ${view.port}: no data`
    : Number.isNaN(channels.rms[view.selected])
    ? `Channel ${view.selected} is not in the recording`
    : `Channel ${view.selected}, ${electrode < 0 ? "connected to nothing" : "electrode " + electrode}: ` +
      `${channels.rms[view.selected].toFixed(1)} µV RMS, ${channels.spikes[view.selected].toFixed(1)} spikes/s`;
}

function showTime() {
  const where = status.streams ? (isPaused() ? "paused at" : "now at") : "streams stopped at";
  element("time").textContent = `${where} ${seconds(view.end ?? status.position)}`;
}

function showControls() {
  const check = (name, value) => {
    const input = document.querySelector(`input[name="${name}"][value="${value}"]`);
    if (input) {
      input.checked = true;
    }
  };
  check("port", view.port);
  check("stream", view.stream);
  element("first").value = view.first;
  element("count").value = view.count;
  element("scale").value = scale;
  element("window").value = view.seconds;
  element("pause").textContent = isPaused() ? "Go on" : "Pause";
  element("control").textContent = status?.streams === false ? "Start streams" : "Stop streams";
  showMap();
}

// ---- Controls and keys.

scales.forEach((value) => element("scale").add(new Option(`${value} µV`, value)));
windows.forEach((value) => element("window").add(new Option(value < 1 ? `${value * 1000} ms` : `${value} s`, value)));
const on = (id, type, act) => element(id).addEventListener(type, act);
on("first", "change", (event) => showFrom(event.target.valueAsNumber));
on("count", "change", (event) => showCount(event.target.valueAsNumber));
on("scale", "change", (event) => { scale = Number(event.target.value); draw(); });
on("window", "change", (event) => { view.seconds = Number(event.target.value); ask(); });
on("measure", "change", showMap);
on("pause", "click", () => pause(!isPaused()));
on("back", "click", () => move(-view.seconds / 2));
on("forward", "click", () => move(view.seconds / 2));
on("live", "click", latest);
on("save", "click", savePicture);
on("theme", "click", changeTheme);
on("control", "click", changeStreams);
on("help", "click", () => element("keys").showModal());
on("close-keys", "click", () => element("keys").close());
on("go", "click", () => jump(element("second").valueAsNumber || 0));
on("second", "keydown", (event) => event.key === "Enter" && jump(element("second").valueAsNumber || 0));
const cycle = (id) => {
  const select = element(id);
  select.selectedIndex = (select.selectedIndex + 1) % select.length;
  select.dispatchEvent(new Event("change"));
};
listen([
  { names: [" "], does: "Pause, or go on", act: () => pause(!isPaused()) },
  { names: ["ArrowLeft"], does: "Back by half a window", act: () => move(-view.seconds / 2) },
  { names: ["ArrowRight"], does: "Forward by half a window", act: () => move(view.seconds / 2) },
  { names: ["Home"], does: "Back by 30 s, as far as that is remembered", act: () => move(-longest) },
  { names: ["End"], does: "To the latest data", act: latest },
  { names: ["g"], does: "Go to a second of the recording", act: () => element("second").focus() },
  { names: ["ArrowUp"], does: "Channels further from the tip", act: () => showFrom(view.first + 1) },
  { names: ["ArrowDown"], does: "Channels nearer to the tip", act: () => showFrom(view.first - 1) },
  { names: ["PageUp"], does: "As many further as are shown", act: () => showFrom(view.first + view.count) },
  { names: ["PageDown"], does: "As many nearer as are shown", act: () => showFrom(view.first - view.count) },
  { names: ["n"], does: "Show twice as many channels", act: () => showCount(view.count * 2) },
  { names: ["m"], does: "Show half as many channels", act: () => showCount(view.count / 2) },
  { names: ["]"], does: "Choose the next channel", act: () => choose(view.selected + 1) },
  { names: ["["], does: "Choose the channel before", act: () => choose(view.selected - 1) },
  { names: ["+", "="], does: "Larger traces (Shift and the mouse's wheel)", act: () => changeScale(-1) },
  { names: ["-"], does: "Smaller traces", act: () => changeScale(1) },
  { names: [","], does: "Shorter window (Ctrl and the mouse's wheel)", act: () => changeWindow(-1) },
  { names: ["."], does: "Longer window", act: () => changeWindow(1) },
  {
    names: ["1", "2", "3", "4"], does: "Port",
    act: (key) => introduction?.probes.some((each) => each.port === Number(key)) && showPort(Number(key)),
  },
  { names: ["a"], does: "AP band", act: () => probe() && showStream("ap") },
  { names: ["l"], does: "LFP band", act: () => probe() && showStream("lfp") },
  { names: ["d"], does: "ADC inputs and TTL lines", act: () => introduction?.has_adc && showStream("adc") },
  { names: ["h"], does: "RMS or spikes along the probe", act: () => cycle("measure") },
  { names: ["q"], does: "History of the next quantity", act: () => cycle("quantity") },
  { names: ["s"], does: "Save the picture", act: savePicture },
  { names: ["t"], does: "Light or dark", act: changeTheme },
  { names: ["c"], does: "Stop or start the streams, where that is allowed", act: changeStreams },
  { names: ["x"], does: "Put the notice at the top away", act: () => notices.clear() },
  { names: ["?"], does: "This list", act: () => element("keys").showModal() },
], element("key-table"));
const dark = matchMedia("(prefers-color-scheme: dark)");
setTheme(dark.matches ? "dark" : "light");
dark.addEventListener("change", () => setTheme(dark.matches ? "dark" : "light"));
new ResizeObserver(() => ask()).observe(element("traces"));

// What is shown, in numbers, for scripts and for whoever doubts a picture.
window.orbeView = {
  introduction: () => introduction,
  status: () => status,
  view: () => ({ ...view, scale, paused: isPaused() }),
  traces: () => (last ? { ...last.head.traces, ...traces.plotted() } : null),
  channels: () => (channels ? { port: channels.port, rms: Array.from(channels.rms), spikes: Array.from(channels.spikes) } : null),
  spectrum: () => spectrum.plotted(),
  health: () => ({
    quantities: quantities.map((each) => each.short), lines: health, sums: healthView.sums(),
    plotted: healthView.plot.data.slice(1), // the chosen quantity of each stream
  }),
  damage: () => timeBar.damage,
  channelPlace: (channel) => map.placeOf(channel),
  pictures: () => pictures, // since the page is open
  // Of the last four seconds or so.
  picturesPerSecond: () =>
    arrivals.length < 2 ? 0 : ((arrivals.length - 1) * 1000) / (arrivals.at(-1) - arrivals[0]),
};
