// ---- Picture: the marks of the channels ---------------------------------------------------------
function boxOf(channel) {
  const [left, right] = [xOf(channel.low), xOf(channel.high)];
  const width = Math.max(right - left, at.min_mark);
  return { x: (left + right - width) / 2, width };
}
const outline = (x, y, width, height) => {
  const across = width.toFixed(1);
  return `M${x.toFixed(1)} ${y}h${across}v${height.toFixed(1)}h-${across}z`;
};
const levelRange = at.level_bottom - at.level_top;
const timeRange = at.time_bottom - at.time_top;
/** The shapes drawn for a channel, each with its share of the full height. */
function outlines(channel) {
  const { x, width } = boxOf(channel);
  const height = at.level_bottom - channel.top;
  const length = channel.time_end - channel.time_begin;
  const drawn = [{ part: height / levelRange, path: outline(x, channel.top, width, height) }];
  if (channel.time_end > 0) {
    const path = outline(x, channel.time_begin, width, length);
    drawn.push({ part: length / timeRange, path });
  }
  return drawn;
}

/** For each column of pixels, the top of the highest mark of the width asked for. */
function skylineOf(isTaken) {
  const skyline = new Array(Math.ceil(pictureWidth) + 1).fill(at.level_bottom);
  for (const channel of channels) {
    if (!isInView(channel)) continue;
    const [left, right] = [xOf(channel.low), xOf(channel.high)];
    if (!isTaken(right - left)) continue;
    const [from, to] = [Math.max(left, 0), Math.min(right, pictureWidth)];
    for (let x = Math.max(Math.floor(from) - 1, 0); x <= to + 1; x += 1) {
      skyline[x] = Math.min(skyline[x] ?? 0, channel.top);
    }
  }
  return skyline;
}

// Marks that look alike are one path, or thousands of them would keep the reader waiting. Wide ones
// come first, then tall ones, then those seen often, so that smaller marks are drawn on top of
// larger ones and never behind them.
const heightSteps = 10;
function drawMarks() {
  const groups = new Map();
  // A white edge separates a mark from those under it; in a crowd, where the edges would hide
  // everything, only wide marks have one.
  const crowded = isCrowded();
  const wideMarks = skylineOf((width) => width > at.wide_mark);
  const isEdged = ({ centre_hz }) => (
    !crowded || wideMarks[Math.round(xOf(centre_hz))] < at.level_bottom);
  for (const channel of channels) {
    if (!isInView(channel)) continue;
    const { width } = boxOf(channel);
    const step = at.width_steps.filter((limit) => width <= limit).length;
    const style = ['mark', isEdged(channel) && 'edged', !passes(channel) && 'left-out',
      channel.changed.mark_style].filter(Boolean).join(' ');
    for (const { part, path } of outlines(channel)) {
      const order = (step + 1) * (heightSteps + 1) - Math.round(heightSteps * part);
      const key = `${order} ${channel.shade} ${style}`;
      if (!groups.has(key)) groups.set(key, { order, style, shade: channel.shade, paths: [] });
      groups.get(key).paths.push(path);
    }
  }
  marks.replaceChildren();
  const inOrder = [...groups.values()].sort((a, b) => a.order - b.order || b.shade - a.shade);
  for (const { style, shade, paths } of inOrder) {
    const colour = data.shades[shade];
    shape('path', { class: style, fill: colour, stroke: colour, d: paths.join('') }, marks);
  }
}
function drawHighlights() {
  highlights.replaceChildren();
  for (const channel of new Set([picked, hovered])) {
    if (!channel || !isInView(channel)) continue;
    const path = outlines(channel).map((drawn) => drawn.path).join('');
    shape('path', { class: 'highlight', d: path }, highlights);
  }
}
