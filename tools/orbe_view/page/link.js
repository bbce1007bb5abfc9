// The connection to the program: messages out, pictures in. Tries again when it breaks.

// A picture: a length, JSON, and the numbers that it names, as floats of 32 bits.
export function decodePicture(buffer) {
  const length = new DataView(buffer).getUint32(0, true);
  const head = JSON.parse(new TextDecoder().decode(new Uint8Array(buffer, 4, length)));
  const values = new Float32Array(buffer, 4 + length);
  const blocks = {};
  for (const block of head.blocks) {
    blocks[block.name] = {
      rows: block.rows,
      columns: block.columns,
      values: values.subarray(block.offset, block.offset + block.rows * block.columns),
    };
  }
  return { head, blocks };
}

export class Link {
  // `seen` gets each picture, `told` what the program says about what was said, `changed` whether it is open.
  constructor({ seen, told, changed }) {
    this.seen = seen;
    this.told = told;
    this.changed = changed;
    this.connect();
  }

  connect() {
    const token = new URLSearchParams(location.search).get("token");
    const query = token === null ? "" : "?token=" + encodeURIComponent(token);
    this.socket = new WebSocket(`ws://${location.host}/data${query}`);
    this.socket.binaryType = "arraybuffer";
    this.socket.onopen = () => this.changed(true);
    this.socket.onmessage = (event) => {
      if (typeof event.data === "string") {
        this.told(event.data);
      } else {
        this.seen(decodePicture(event.data));
      }
    };
    this.socket.onclose = (event) => {
      this.changed(false, event.reason);
      setTimeout(() => this.connect(), 1000);
    };
  }

  say(message) {
    if (this.socket.readyState === WebSocket.OPEN) {
      this.socket.send(JSON.stringify(message));
    }
  }
}
