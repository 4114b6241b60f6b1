// ---- Picture: its layers, and the part of the band that is shown --------------------------------
const picture = find('picture');
const svg = shape('svg', { class: 'band', 'aria-hidden': 'true', height: at.height }, picture);
const clip = shape('rect', { x: at.left, y: 0, height: at.height },
  shape('clipPath', { id: 'clip' }, svg));
const layer = (attributes = {}) => shape('g', attributes, svg);
const scales = layer();
const strip = layer();
const marks = layer({ 'clip-path': 'url(#clip)' });
const axis = layer();
const highlights = layer({ 'clip-path': 'url(#clip)' });
const labels = layer();
const brush = shape('rect', {
  class: 'brush', y: at.level_top, height: at.time_bottom - at.level_top, visibility: 'hidden',
}, svg);

const whole = { low: data.span.low_hz, high: data.span.high_hz };
let view = whole;
let pictureWidth = 0;
let picked = null;
let hovered = null;
const plotWidth = () => Math.max(pictureWidth - at.left - at.right, 1);
const plotRight = () => pictureWidth - at.right;
const xOf = (hz) => at.left + ((hz - view.low) / (view.high - view.low)) * plotWidth();
const hzOf = (x) => view.low + ((x - at.left) / plotWidth()) * (view.high - view.low);
const isInView = (c) => c.high >= view.low && c.low <= view.high;
const isCrowded = () => channels.filter(isInView).length > plotWidth();

const write = (parent, x, y, style, text) => shape('text', { x, y, class: style }, parent, text);
const line = (parent, style, x1, y1, x2, y2) => {
  shape('line', { class: style, x1, x2, y1, y2 }, parent);
};

function drawScales() {
  scales.replaceChildren();
  const textX = at.left - at.scale_gap;
  for (const { y, over_floor_db } of data.level_lines) {
    line(scales, 'grid', at.left, y, plotRight(), y);
    write(scales, textX, y + at.scale_drop, 'soft end', String(over_floor_db));
  }
  const middle = (at.level_top + at.level_bottom) / 2;
  write(scales, 0, 0, 'soft middle', words.level_scale)
    .setAttribute('transform', `translate(${at.scale_title_x} ${middle}) rotate(-90)`);
  for (const { y, unix_ms } of data.time_lines) {
    const date = new Date(unix_ms);
    line(scales, 'grid', at.left, y, plotRight(), y);
    const [upper, lower] = data.shows_milliseconds
      ? [guessMark + clockText(date), `${millisText(date)} s`]
      : [dateText(date), guessMark + clockText(date)];
    write(scales, textX, y - 1, 'soft end', upper);
    write(scales, textX, y - 1 + at.label_height, 'soft end', lower);
  }
}

function tickStep(span, count) {
  const rough = span / Math.max(count, 1);
  const power = 10 ** Math.floor(Math.log10(rough));
  return power * [1, 2, 5, 10].find((factor) => factor * power >= rough);
}
function drawAxis() {
  axis.replaceChildren();
  const y = at.level_bottom;
  line(axis, 'axis', at.left, y, plotRight(), y);
  const step = tickStep(view.high - view.low, plotWidth() / at.tick_distance);
  const digits = Math.max(0, Math.min(6, 6 - Math.floor(Math.log10(step))));
  for (let tick = Math.ceil(view.low / step); tick * step <= view.high; tick += 1) {
    const x = xOf(tick * step);
    line(axis, 'axis', x, y, x, y + at.tick_length);
    const text = mhz(tick * step, digits);
    if (x + (text.length * at.character_width) / 2 > pictureWidth) continue;
    write(axis, x, y + at.tick_drop, 'middle', text);
  }
  write(axis, at.left - at.unit_gap, y + at.tick_drop, 'soft end', words.frequency_unit);
}

/** At most `room` characters of `text`, ending in an ellipsis if it was longer. */
function shortened(text, room) {
  const characters = [...text];
  return characters.length <= room ? text : `${characters.slice(0, room - 1).join('')}…`;
}
function drawStrip() {
  strip.replaceChildren();
  if (data.strip.length === 0) return;
  const y = at.strip_top;
  const height = at.strip_bottom - y;
  write(strip, at.left - at.scale_gap, y + at.strip_drop, 'soft end', words.band_plan);
  data.strip.forEach(({ low_hz, high_hz, range }, index) => {
    if (high_hz < view.low || low_hz > view.high) return;
    const x = Math.max(xOf(low_hz), at.left);
    const width = Math.max(Math.min(xOf(high_hz), plotRight()) - x, at.min_mark);
    const style = index % 2 ? 'plan other' : 'plan';
    const box = shape('rect', { class: style, x, y, width, height }, strip);
    shape('title', {}, box, data.plan[range]);
    const room = Math.floor((width - 2 * at.strip_gap) / at.character_width);
    if (room < 3) return;
    write(strip, x + at.strip_gap, y + at.strip_drop, 'name', shortened(data.plan[range], room));
  });
}
