// What the user must hear of, at the top of the page: one text of a kind, until that is over or put away.

export class Notices {
  constructor(place, button) {
    this.place = place;
    this.button = button;
    this.texts = new Map();
    this.putAway = new Map();
    button.addEventListener("click", () => this.clear());
  }

  // An empty text: over. What was put away stays away until it is over or says something else.
  tell(kind, text) {
    this.texts.set(kind, text);
    if (this.putAway.get(kind) !== text) {
      this.putAway.delete(kind);
    }
    this.draw();
  }

  clear() {
    this.putAway = new Map(this.texts);
    this.draw();
  }

  draw() {
    const shown = [...this.texts].filter(([kind, text]) => text !== "" && !this.putAway.has(kind));
    const text = shown.map((each) => each[1]).join("; ");
    // Whoever has it read out hears it once.
    if (this.place.textContent !== text) {
      this.place.textContent = text;
    }
    this.button.hidden = text === "";
  }
}
