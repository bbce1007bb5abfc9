// The keys of the page, and the table that tells them.

export function listen(keys, table) {
  const actions = new Map();
  for (const { names, does, act } of keys) {
    const line = table.insertRow();
    line.insertCell().textContent = names.map((name) => (name === " " ? "Space" : name)).join(", ");
    line.insertCell().textContent = does;
    names.forEach((name) => actions.set(name, act));
  }
  document.addEventListener("keydown", (event) => {
    const isTyped = event.target instanceof HTMLInputElement || event.target instanceof HTMLSelectElement;
    const isPressed = event.target instanceof HTMLButtonElement && (event.key === " " || event.key === "Enter");
    const action = actions.get(event.key);
    if (action && !isTyped && !isPressed && !event.ctrlKey && !event.metaKey && !event.altKey) {
      event.preventDefault();
      action(event.key);
    }
  });
}
