// ---- Picture: drawing it, and looking at another part of the band -------------------------------
const minSpan = 1000;  // Hz

function draw() {
  svg.setAttribute('width', pictureWidth);
  svg.setAttribute('viewBox', `0 0 ${pictureWidth} ${at.height}`);
  clip.setAttribute('width', plotWidth());
  drawScales();
  drawStrip();
  drawAxis();
  drawMarks();
  drawHighlights();
  drawLabels();
  find('view').textContent = say('range_shown', { low: mhz(view.low), high: mhz(view.high) });
}

function look(low, high) {
  const span = Math.min(Math.max(high - low, minSpan), whole.high - whole.low);
  const middle = (low + high) / 2;
  const start = Math.min(Math.max(middle - span / 2, whole.low), whole.high - span);
  view = { low: start, high: start + span };
  draw();
  if (find('in-view').checked) fillTable();
}
function zoom(factor) {
  const middle = picked && isInView(picked) ? picked.centre_hz : (view.low + view.high) / 2;
  const half = ((view.high - view.low) * factor) / 2;
  look(middle - half, middle + half);
}
function move(part) {
  const step = (view.high - view.low) * part;
  look(view.low + step, view.high + step);
}
const showWhole = () => look(whole.low, whole.high);

find('zoom-in').addEventListener('click', () => zoom(0.5));
find('zoom-out').addEventListener('click', () => zoom(2));
find('whole-band').addEventListener('click', showWhole);
