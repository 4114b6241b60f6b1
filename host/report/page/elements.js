// ---- Elements; text goes in only as text -------------------------------------------------------
function fillElement(made, attributes, text, parent) {
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  if (text !== undefined) made.textContent = text;
  if (parent) parent.append(made);
  return made;
}
function element(name, attributes = {}, text = undefined, parent = undefined) {
  return fillElement(document.createElement(name), attributes, text, parent);
}
/** The same for a picture. */
function shape(name, attributes, parent, text = undefined) {
  const made = document.createElementNS('http://www.w3.org/2000/svg', name);
  return fillElement(made, attributes, text, parent);
}
