// Elements of the document.

export const byId = (id) => document.getElementById(id);

// el("p.lead", { title: "…" }, "text", node, null): attributes may be missing, null and false are left out.
export function el(tagAndClasses, ...rest) {
  const [tag, ...classes] = tagAndClasses.split(".");
  const node = document.createElement(tag);
  const given = rest[0]?.constructor === Object ? rest.shift() : {};
  node.classList.add(...classes);
  for (const [key, value] of Object.entries(given)) node.setAttribute(key, value);
  node.append(
    ...rest.flat().filter((child) => child !== null && child !== undefined && child !== false),
  );
  return node;
}

export function svg(tag, attributes, ...children) {
  const node = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

// For texts of the register: the generator has escaped what is in them.
export function markup(tag, text) {
  const node = el(tag);
  node.innerHTML = text;
  return node;
}

// A button, with the name that a screen reader says where its text is too short.
export function button(text, press, name = null) {
  const node = el("button", { type: "button", ...(name && { "aria-label": name }) }, text);
  node.addEventListener("click", press);
  return node;
}

export function save(name, type, content) {
  const url = URL.createObjectURL(
    content instanceof Blob ? content : new Blob([content], { type }),
  );
  el("a", { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 60000);
}

export const dark = matchMedia("(prefers-color-scheme: dark)");
export const css = (name) => getComputedStyle(document.documentElement).getPropertyValue(name);
