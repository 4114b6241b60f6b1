// ---- Mouse and keys in the picture --------------------------------------------------------------
const minDrag = 4;  // pixels; less is a click
let dragFrom = null;
function pointOf(event) {
  const box = svg.getBoundingClientRect();
  return { x: event.clientX - box.left, y: event.clientY - box.top };
}
const inPlot = (x) => Math.min(Math.max(x, at.left), at.left + plotWidth());
picture.addEventListener('pointerdown', (event) => {
  if (event.button !== 0) return;
  dragFrom = inPlot(pointOf(event).x);
  picture.setPointerCapture(event.pointerId);
});
picture.addEventListener('pointermove', (event) => {
  const { x, y } = pointOf(event);
  if (dragFrom === null) {
    hover(channelAt(x, y));
    return;
  }
  const to = inPlot(x);
  brush.setAttribute('x', Math.min(dragFrom, to));
  brush.setAttribute('width', Math.abs(to - dragFrom));
  brush.setAttribute('visibility', Math.abs(to - dragFrom) > minDrag ? 'visible' : 'hidden');
});
picture.addEventListener('pointerup', (event) => {
  if (dragFrom === null) return;
  const { x, y } = pointOf(event);
  const from = dragFrom;
  const to = inPlot(x);
  dragFrom = null;
  brush.setAttribute('visibility', 'hidden');
  if (Math.abs(to - from) > minDrag) {
    look(hzOf(Math.min(from, to)), hzOf(Math.max(from, to)));
    return;
  }
  const channel = channelAt(x, y);
  pick(channel);
  if (channel) goToRow(channel);
});
picture.addEventListener('pointercancel', () => {
  dragFrom = null;
  brush.setAttribute('visibility', 'hidden');
});
picture.addEventListener('pointerleave', () => hover(null));
picture.addEventListener('dblclick', showWhole);

const pictureKeys = {
  '+': () => zoom(0.5),
  '=': () => zoom(0.5),
  '-': () => zoom(2),
  0: showWhole,
  ArrowLeft: () => move(-0.25),
  ArrowRight: () => move(0.25),
  ArrowUp: () => pickNext(-1),
  ArrowDown: () => pickNext(1),
  Enter: () => picked && goToRow(picked),
  Escape: () => pick(null),
};
function onKey(keys, event) {
  if (event.ctrlKey || event.metaKey || event.altKey || !keys[event.key]) return;
  event.preventDefault();
  keys[event.key]();
}
picture.addEventListener('keydown', (event) => onKey(pictureKeys, event));
