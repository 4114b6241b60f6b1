'use strict';
(() => {
  const data = JSON.parse(document.getElementById('survey').textContent);
  const at = data.measures;
  const find = (id) => document.getElementById(id);

  // ---- Channels ----------------------------------------------------------------------------------
  const channels = data.channels.map(([
    centre, width, minWidth, maxWidth, peak, floor, hits, looks, first, last, kind, band, top, timeBegin, timeEnd,
    shade, change, oldHits, oldLooks,
  ]) => ({
    centre, width, minWidth, maxWidth, peak, hits, looks, first, last, kind, top, timeBegin, timeEnd,
    shade, change, oldHits, oldLooks,
    band: data.plan.indexOf(data.plan[band]),  // of several ranges of one name the first; none: -1
    low: centre - Math.max(width, 0) / 2,
    high: centre + Math.max(width, 0) / 2,
    activity: hits / looks,
    over: peak === null || floor === null ? null : peak - floor,
    kindText: data.kinds[kind],
    bandText: band < 0 ? '' : data.plan[band],
    changeText: data.changes[change],
    row: null,  // once it is made
  }));
  const byCentre = channels.slice().sort((a, b) => a.centre - b.centre);

  // ---- Text --------------------------------------------------------------------------------------
  const missing = '–';
  const mhz = (hz, digits = 4) => (hz / 1e6).toFixed(digits);
  const khz = (hz) => (hz / 1e3).toFixed(hz < 1000 ? 3 : 1);
  const decibel = (db) => (db === null ? missing : db.toFixed(1));
  // Whole percents, and neither none nor all for what is in between.
  const percentOf = (c) => (c.hits === c.looks ? 100 : Math.min(Math.max(Math.round(100 * c.activity), 1), 99));
  const two = (number) => String(number).padStart(2, '0');

  const hasTime = (ms) => ms > 0 && ms <= 8.64e15;
  function offsetText(ms) {
    const minutes = -new Date(ms).getTimezoneOffset();
    const size = Math.abs(minutes);
    return `UTC${minutes < 0 ? '−' : '+'}${two(Math.floor(size / 60))}:${two(size % 60)}`;
  }
  // Between summer and winter the offset is part of each time, otherwise it is said once.
  const offsets = new Set(channels.flatMap((c) => [c.first, c.last]).filter(hasTime).map(offsetText));
  const offsetsDiffer = offsets.size > 1;
  const zoneName = Intl.DateTimeFormat().resolvedOptions().timeZone || 'local time';
  const zoneText = offsets.size === 1 && zoneName !== 'UTC' ? `${zoneName}, ${[...offsets][0]}` : zoneName;
  const dateText = (d) => `${d.getFullYear()}-${two(d.getMonth() + 1)}-${two(d.getDate())}`;
  const clockText = (d) => `${two(d.getHours())}:${two(d.getMinutes())}:${two(d.getSeconds())}`;
  const isShort = data.times[1] - data.times[0] < 10000;  // the seconds would all be one
  const millisText = (d) => `.${String(d.getMilliseconds()).padStart(3, '0')}`;
  function timeText(ms) {
    if (!hasTime(ms)) return missing;
    const date = new Date(ms);
    return `${dateText(date)} ${clockText(date)}${isShort ? millisText(date) : ''}${offsetsDiffer ? ` ${offsetText(ms)}` : ''}`;
  }
  const sentence = (c) => [
    `${mhz(c.centre)} MHz`, c.kindText, `${khz(c.width)} kHz wide`,
    `${c.over === null ? missing : c.over.toFixed(0)} dB over floor`, `seen in ${c.hits} of ${c.looks} looks`,
    c.bandText, c.changeText,
  ].filter(Boolean).join(', ');

  // ---- Elements; text goes in as text alone -----------------------------------------------------
  function element(name, attributes = {}, text = undefined, parent = undefined) {
    const made = document.createElement(name);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    if (text !== undefined) made.textContent = text;
    if (parent) parent.append(made);
    return made;
  }
  function shape(name, attributes, parent, text = undefined) {
    const made = document.createElementNS('http://www.w3.org/2000/svg', name);
    for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
    if (text !== undefined) made.textContent = text;
    if (parent) parent.append(made);
    return made;
  }

  // ---- Heading -----------------------------------------------------------------------------------
  const counted = (number, what) => `${number} ${what}${number === 1 ? '' : 's'}`;
  const known = channels.filter((c) => c.changeText !== 'gone').length;
  const [bandLow, bandHigh] = data.band;
  const bandText = bandHigh > 0 ? `${mhz(bandLow, 3)}–${mhz(bandHigh, 3)} MHz, ` : '';
  const title = bandText + counted(known, 'channel');
  find('title').textContent = title;
  document.title = `${title} – band survey`;
  const [firstSeen, lastSeen] = data.times;
  const spanText = firstSeen === lastSeen ? `at ${timeText(firstSeen)}` : `from ${timeText(firstSeen)} to ${timeText(lastSeen)}`;
  find('time-span').textContent = firstSeen > 0
    ? `Seen ${spanText} (${zoneText})`
    : known > 0 ? 'The survey had no clock, so nothing is known about times.' : 'Nothing was found yet.';
  for (const [name, value] of data.settings) {
    const pair = element('div', {}, undefined, find('settings'));
    element('dt', {}, name, pair);
    element('dd', {}, value, pair);
  }
  find('remarks').hidden = data.remarks.length === 0;
  for (const remark of data.remarks) element('li', {}, remark, find('remarks'));

  // ---- Picture: everything that does not move is drawn once --------------------------------------
  const picture = find('picture');
  picture.setAttribute('aria-label', `Picture of the band: ${title}`);
  const svg = shape('svg', { 'aria-hidden': 'true', height: at.height }, picture);
  const clip = shape('rect', { x: at.left, y: 0, height: at.height }, shape('clipPath', { id: 'clip' }, svg));
  const layer = (attributes = {}) => shape('g', attributes, svg);
  const scales = layer();
  const strip = layer();
  const marks = layer({ 'clip-path': 'url(#clip)' });
  const axis = layer();
  const highlights = layer({ 'clip-path': 'url(#clip)' });
  const labels = layer();
  const brush = shape('rect', { class: 'brush', y: at.level_top, height: at.time_bottom - at.level_top, visibility: 'hidden' }, svg);

  function drawScales(width) {
    scales.replaceChildren();
    const right = width - at.right;
    for (let db = 0; db <= data.top_db; db += data.level_step_db) {
      const y = at.level_bottom - (db / data.top_db) * (at.level_bottom - at.level_top);
      shape('line', { class: 'grid', x1: at.left, x2: right, y1: y, y2: y }, scales);
      shape('text', { x: at.left - 6, y: y + 4, 'text-anchor': 'end', class: 'soft' }, scales, String(db));
    }
    const middle = (at.level_top + at.level_bottom) / 2;
    shape('text', { x: 0, y: 0, 'text-anchor': 'middle', class: 'soft', transform: `translate(30 ${middle}) rotate(-90)` },
      scales, 'relative dB over floor');
    if (data.times[0] <= 0) return;
    const parts = data.times[0] === data.times[1] ? [0] : [0, 0.5, 1];
    for (const part of parts) {
      const y = at.time_top + part * (at.time_bottom - at.time_top);
      const date = new Date(data.times[0] + part * (data.times[1] - data.times[0]));
      shape('line', { class: 'grid', x1: at.left, x2: right, y1: y, y2: y }, scales);
      const lines = isShort
        ? [clockText(date), `${millisText(date)} s`]
        : [dateText(date), clockText(date)];
      lines.forEach((text, line) => {
        shape('text', { x: at.left - 6, y: y - 1 + line * at.label_height, 'text-anchor': 'end', class: 'soft' }, scales, text);
      });
    }
  }

  // ---- Picture: what depends on the part of the band that is shown ------------------------------
  const leastSpan = 1000;
  let view = { low: data.span[0], high: data.span[1] };
  let pictureWidth = 0;
  let picked = null;
  let hovered = null;
  const plotWidth = () => Math.max(pictureWidth - at.left - at.right, 1);
  const xOf = (hz) => at.left + ((hz - view.low) / (view.high - view.low)) * plotWidth();
  const hzOf = (x) => view.low + ((x - at.left) / plotWidth()) * (view.high - view.low);
  const isInView = (c) => c.high >= view.low && c.low <= view.high;
  const isCrowded = () => channels.filter(isInView).length > plotWidth();
  const fits = (text, width) => text.length * at.character_width <= width;

  function tickStep(span, count) {
    const rough = span / Math.max(count, 1);
    const power = 10 ** Math.floor(Math.log10(rough));
    return power * [1, 2, 5, 10].find((factor) => factor * power >= rough);
  }

  function drawAxis() {
    axis.replaceChildren();
    const right = pictureWidth - at.right;
    shape('line', { class: 'axis', x1: at.left, x2: right, y1: at.level_bottom, y2: at.level_bottom }, axis);
    const step = tickStep(view.high - view.low, plotWidth() / at.tick_distance);
    const digits = Math.max(0, Math.min(6, 6 - Math.floor(Math.log10(step))));
    for (let tick = Math.ceil(view.low / step); tick * step <= view.high; tick += 1) {
      const x = xOf(tick * step);
      shape('line', { class: 'axis', x1: x, x2: x, y1: at.level_bottom, y2: at.level_bottom + 5 }, axis);
      const text = mhz(tick * step, digits);
      if (x + (text.length * at.character_width) / 2 > pictureWidth) continue;
      shape('text', { x, y: at.level_bottom + 18, 'text-anchor': 'middle' }, axis, text);
    }
    shape('text', { x: at.left - 28, y: at.level_bottom + 18, 'text-anchor': 'end', class: 'soft' }, axis, 'MHz');
  }

  function drawStrip() {
    strip.replaceChildren();
    const height = at.strip_bottom - at.strip_top;
    shape('text', { x: at.left - 6, y: at.strip_top + 15, 'text-anchor': 'end', class: 'soft' }, strip, data.strip.length ? 'Band plan' : '');
    data.strip.forEach(([low, high, range], index) => {
      if (high < view.low || low > view.high) return;
      const left = Math.max(xOf(low), at.left);
      const width = Math.max(Math.min(xOf(high), pictureWidth - at.right) - left, at.least_mark);
      const box = shape('rect', { class: index % 2 ? 'plan other' : 'plan', x: left, y: at.strip_top, width, height }, strip);
      const name = data.plan[range];
      shape('title', {}, box, name);
      const room = Math.floor((width - 10) / at.character_width);
      if (room < 3) return;
      const text = fits(name, width - 10) ? name : `${[...name].slice(0, room - 1).join('')}…`;
      shape('text', { x: left + 5, y: at.strip_top + 15, 'pointer-events': 'none' }, strip, text);
    });
  }

  function boxOf(channel) {
    const [left, right] = [xOf(channel.low), xOf(channel.high)];
    const width = Math.max(right - left, at.least_mark);
    return { x: (left + right - width) / 2, width };
  }
  const outline = (x, y, width, height) => `M${x.toFixed(1)} ${y}h${width.toFixed(1)}v${height.toFixed(1)}h${(-width).toFixed(1)}z`;
  const levelRange = at.level_bottom - at.level_top;
  const timeRange = at.time_bottom - at.time_top;
  /** What is drawn of a channel, each with its part of the height there is. */
  function outlines(channel) {
    const { x, width } = boxOf(channel);
    const height = at.level_bottom - channel.top;
    const length = channel.timeEnd - channel.timeBegin;
    const drawn = [{ part: height / levelRange, path: outline(x, channel.top, width, height) }];
    if (channel.timeEnd > 0) drawn.push({ part: length / timeRange, path: outline(x, channel.timeBegin, width, length) });
    return drawn;
  }

  /** For each column of pixels where the highest mark ends of those whose width is asked for. */
  function skylineOf(isTaken) {
    const skyline = new Array(Math.ceil(pictureWidth) + 1).fill(at.level_bottom);
    for (const channel of channels) {
      if (!isInView(channel)) continue;
      const [from, to] = [Math.max(xOf(channel.low), 0), Math.min(xOf(channel.high), pictureWidth)];
      if (!isTaken(xOf(channel.high) - xOf(channel.low))) continue;
      for (let x = Math.max(Math.floor(from) - 1, 0); x <= to + 1; x += 1) skyline[x] = Math.min(skyline[x] ?? 0, channel.top);
    }
    return skyline;
  }

  // Marks that look alike are one path, or thousands of them would keep the reader waiting. The wide
  // come first, of equal width the tall, and of equal height what was seen often, so that what lies
  // upon them is drawn upon them and never behind.
  const heightSteps = 10;
  function drawMarks() {
    const groups = new Map();
    // A white edge parts marks from what they lie upon; a crowd, where it would be all one saw, has
    // it on wide marks alone.
    const crowded = isCrowded();
    const wideMarks = skylineOf((width) => width > at.wide_mark);
    const isEdged = (channel) => !crowded || wideMarks[Math.round(xOf(channel.centre))] < at.level_bottom;
    for (const channel of channels) {
      if (!isInView(channel)) continue;
      const { width } = boxOf(channel);
      const step = at.width_steps.filter((least) => width <= least).length;
      const state = `mark${isEdged(channel) ? ' edged' : ''}${passes(channel) ? '' : ' left-out'}`
        + (channel.changeText === 'new' || channel.changeText === 'gone' ? ` ${channel.changeText}` : '');
      for (const { part, path } of outlines(channel)) {
        const order = (step + 1) * (heightSteps + 1) - Math.round(heightSteps * part);
        const key = `${order} ${channel.shade} ${state}`;
        if (!groups.has(key)) groups.set(key, { order, state, shade: channel.shade, paths: [] });
        groups.get(key).paths.push(path);
      }
    }
    marks.replaceChildren();
    for (const { state, shade, paths } of [...groups.values()].sort((a, b) => a.order - b.order || b.shade - a.shade)) {
      const colour = data.shades[shade];
      shape('path', { class: state, fill: colour, stroke: colour, d: paths.join('') }, marks);
    }
  }
  function drawHighlights() {
    highlights.replaceChildren();
    for (const channel of new Set([picked, hovered])) {
      if (!channel || !isInView(channel)) continue;
      shape('path', { class: 'highlight', d: outlines(channel).map(({ path }) => path).join('') }, highlights);
    }
  }

  const symbolOf = { new: '+', gone: '×', 'more often': '▲', 'less often': '▼' };
  /**
   * Frequencies over the marks: where no other label stands and no other mark rises behind. Places for
   * the symbols of what has changed are kept free, in a crowd only where they would stand out.
   */
  function drawLabels() {
    labels.replaceChildren();
    const boxes = [];
    const overlap = (a, b) => Math.abs(a.x - b.x) < a.half + b.half && Math.abs(a.bottom - b.bottom) < at.label_height;
    const skyline = skylineOf((width) => width <= at.wide_mark);
    const isHidden = (from, to, bottom) => {
      for (let x = Math.floor(from); x <= to; x += 1) if (skyline[x] < bottom) return true;
      return false;
    };
    const first = (c) => (c === picked ? 0 : c.change > 0 ? 1 : 2);
    const wanted = channels.filter((c) => isInView(c) && passes(c))
      .sort((a, b) => first(a) - first(b) || b.activity - a.activity || (b.over ?? 0) - (a.over ?? 0));
    const symbolFor = (channel) => symbolOf[channel.changeText] ?? '';
    const crowded = isCrowded();
    for (const channel of wanted) {
      if (!symbolFor(channel)) continue;
      const [x, half, bottom] = [xOf(channel.centre), at.character_width, channel.top - 4];
      if (crowded && isHidden(x - half, x + half, bottom)) continue;
      const box = { channel, x, half, bottom };
      if (!boxes.some((other) => overlap(other, box))) boxes.push(box);
    }
    const place = (channel) => {
      const symbol = symbolFor(channel);
      const text = symbol + mhz(channel.centre);
      const half = ((text.length + symbol.length) * at.character_width) / 2 + 2;
      const x = Math.min(Math.max(xOf(channel.centre), at.left + half), pictureWidth - half);
      const bottom = channel.top - 4;
      const box = { channel, x, half, bottom };
      const meets = (other) => other.channel !== channel && overlap(other, box);
      if (boxes.some(meets) || (channel !== picked && isHidden(x - half, x + half, bottom))) return false;
      boxes.push(box);
      shape('text', { class: channel === picked ? 'label picked' : 'label', x, y: bottom }, labels, text);
      return true;
    };
    const reserved = new Map(boxes.map((box) => [box.channel, box]));
    for (const channel of wanted) {
      if (place(channel) || !reserved.has(channel)) continue;
      const { x, bottom } = reserved.get(channel);
      shape('text', { class: 'label', x, y: bottom }, labels, symbolFor(channel));
    }
  }

  function draw() {
    svg.setAttribute('width', pictureWidth);
    svg.setAttribute('viewBox', `0 0 ${pictureWidth} ${at.height}`);
    clip.setAttribute('width', plotWidth());
    drawScales(pictureWidth);
    drawStrip();
    drawAxis();
    drawMarks();
    drawHighlights();
    drawLabels();
    find('view').textContent = `${mhz(view.low)}–${mhz(view.high)} MHz`;
  }

  function look(low, high) {
    const whole = data.span[1] - data.span[0];
    const span = Math.min(Math.max(high - low, leastSpan), whole);
    const middle = (low + high) / 2;
    const start = Math.min(Math.max(middle - span / 2, data.span[0]), data.span[1] - span);
    view = { low: start, high: start + span };
    draw();
    if (find('in-view').checked) fillTable();
  }
  const zoom = (factor) => {
    const middle = picked && isInView(picked) ? picked.centre : (view.low + view.high) / 2;
    const half = ((view.high - view.low) * factor) / 2;
    look(middle - half, middle + half);
  };
  const move = (part) => {
    const step = (view.high - view.low) * part;
    look(view.low + step, view.high + step);
  };
  const showWhole = () => look(data.span[0], data.span[1]);

  // ---- Picture and table, joined -----------------------------------------------------------------
  function hover(channel) {
    if (hovered === channel) return;
    hovered?.row?.classList.remove('hover');
    hovered = channel;
    hovered?.row?.classList.add('hover');
    const shown = hovered ?? picked;
    find('readout').textContent = shown ? sentence(shown) : '\u00a0';
    drawHighlights();
  }
  function pick(channel) {
    picked?.row?.removeAttribute('aria-current');
    picked = channel;
    if (picked) rowOf(picked).setAttribute('aria-current', 'true');
    find('readout').textContent = picked ? sentence(picked) : '\u00a0';
    if (picked && (picked.centre < view.low || picked.centre > view.high)) {
      const half = (view.high - view.low) / 2;
      look(picked.centre - half, picked.centre + half);
    } else {
      drawHighlights();
      drawLabels();
    }
  }
  function goToRow(channel) {
    appendRows(Infinity);
    if (!channel.row?.isConnected) return;
    channel.row.scrollIntoView({ block: 'nearest' });
    focusRow(channel.row);
  }
  function pickNext(step) {
    const shown = byCentre.filter(passes);
    if (shown.length === 0) return;
    const place = shown.indexOf(picked);
    const from = step > 0 ? shown.findIndex(isInView) : shown.findLastIndex(isInView);
    const next = place < 0 ? Math.max(from, 0) : Math.min(Math.max(place + step, 0), shown.length - 1);
    pick(shown[next]);
  }

  /** The channel under a point: of several the narrowest, of equal ones the nearest. */
  function channelAt(x, y) {
    const slack = 4;
    let best = null;
    let bestRank = Infinity;
    for (const channel of channels) {
      if (!isInView(channel) || !passes(channel)) continue;
      const distance = Math.max(xOf(channel.low) - x, x - xOf(channel.high), 0);
      if (distance > slack) continue;
      const isOnLevel = y >= channel.top - slack && y <= at.level_bottom;
      const isOnTime = channel.timeEnd > 0 && y >= channel.timeBegin - slack && y <= channel.timeEnd + slack;
      if (!isOnLevel && !isOnTime) continue;
      const rank = channel.width + (distance * (view.high - view.low)) / plotWidth();
      if (rank < bestRank) [best, bestRank] = [channel, rank];
    }
    return best;
  }

  let dragFrom = null;
  const pointOf = (event) => {
    const box = svg.getBoundingClientRect();
    return { x: event.clientX - box.left, y: event.clientY - box.top };
  };
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
    brush.setAttribute('visibility', Math.abs(to - dragFrom) > 4 ? 'visible' : 'hidden');
  });
  picture.addEventListener('pointerup', (event) => {
    if (dragFrom === null) return;
    const { x, y } = pointOf(event);
    const from = dragFrom;
    const to = inPlot(x);
    dragFrom = null;
    brush.setAttribute('visibility', 'hidden');
    if (Math.abs(to - from) > 4) {
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
  find('zoom-in').addEventListener('click', () => zoom(0.5));
  find('zoom-out').addEventListener('click', () => zoom(2));
  find('whole-band').addEventListener('click', showWhole);

  // ---- Legend ------------------------------------------------------------------------------------
  (() => {
    const legend = find('legend');
    const scale = element('span', {}, 'seen in 0 %', legend);
    const swatches = shape('svg', { width: data.shades.length * 10, height: 12, 'aria-hidden': 'true' }, scale);
    data.shades.forEach((fill, index) => shape('rect', { x: index * 10, width: 10, height: 12, fill }, swatches));
    scale.append('100 % of looks');
    if (data.compared) element('span', {}, '+ thick outline: new, × dashed: gone, ▲ ▼ more or less often', legend);
  })();

  // ---- Table -------------------------------------------------------------------------------------
  const columns = [
    { title: 'Frequency', unit: 'MHz', key: 'centre', width: 12, text: (c) => mhz(c.centre) },
    { title: 'Width', unit: 'kHz', key: 'width', width: 8, text: (c) => khz(c.width), hint: (c) => `from ${khz(c.minWidth)} to ${khz(c.maxWidth)} kHz` },
    { title: 'Kind', unit: 'by width', key: 'kind', width: 10, text: (c) => c.kindText, isText: true },
    { title: 'Over floor', unit: 'relative dB', key: 'over', width: 11, isDown: true, text: (c) => decibel(c.over) },
    { title: 'Peak', unit: 'relative dB', key: 'peak', width: 9, isDown: true, text: (c) => decibel(c.peak) },
    { title: 'Seen', unit: 'of looks', key: 'activity', width: 15, isDown: true, text: (c) => `${c.hits}/${c.looks}` },
    { title: 'First seen', unit: zoneText, key: 'first', width: 17.5, isDown: true, text: (c) => timeText(c.first) },
    { title: 'Last seen', unit: zoneText, key: 'last', width: 17.5, isDown: true, text: (c) => timeText(c.last) },
    { title: 'Band', unit: 'band plan', key: 'bandText', width: 14, text: (c) => c.bandText, isText: true },
  ];
  if (data.compared) {
    const was = (c) => (c.oldLooks > 0 && c.changeText !== 'gone' ? `was ${c.oldHits}/${c.oldLooks}` : '');
    const often = (c) => [c.changeText, was(c)].filter(Boolean).join(', ');
    columns.splice(1, 0, { title: 'Change', unit: 'hits/looks before', key: 'change', width: 15, isDown: true, text: often, isText: true });
  }
  let sortBy = { key: 'activity', isDown: true };
  const widths = columns.reduce((sum, column) => sum + column.width, 0);
  const colgroup = element('colgroup');
  find('table').style.setProperty('--least-width', `${(0.64 * widths).toFixed(1)}rem`);
  find('table').prepend(find('table').caption, colgroup);
  for (const column of columns) {
    element('col', { style: `width: ${((100 * column.width) / widths).toFixed(2)}%` }, undefined, colgroup);
    column.head = element('th', { scope: 'col', class: column.isText ? 'text' : '' }, undefined, find('heading'));
    column.head.dataset.title = column.title;  // for paper: buttons are not repeated on every sheet
    element('button', { type: 'button' }, column.title, column.head).addEventListener('click', () => {
      const isSame = sortBy.key === column.key;
      sortBy = { key: column.key, isDown: isSame ? !sortBy.isDown : Boolean(column.isDown) };
      fillTable();
    });
    element('span', { class: 'unit' }, column.unit, column.head);
  }

  function rowOf(channel) {
    if (channel.row) return channel.row;
    channel.row = element('tr', { tabindex: '-1' });
    channel.row.channel = channel;
    for (const column of columns) {
      const isName = column.key === 'centre';
      const cell = element(isName ? 'th' : 'td', isName ? { scope: 'row' } : {}, undefined, channel.row);
      if (column.isText) cell.className = 'text';
      if (column.hint) cell.title = column.hint(channel);
      if (column.key === 'activity') {
        element('span', { class: 'seen', style: `background: ${data.shades[channel.shade]}` }, '', cell);
      }
      cell.append(column.text(channel));
      if (column.key !== 'activity') continue;
      cell.append(' ');
      element('span', { class: 'part' }, `${percentOf(channel)} %`, cell);
    }
    return channel.row;
  }

  const filters = { kind: find('kind'), band: find('band'), change: find('change'), activity: find('activity') };
  function passes(channel) {
    return (filters.kind.value === '' || channel.kind === Number(filters.kind.value))
      && (filters.band.value === '' || channel.band === Number(filters.band.value))
      && (filters.change.value === '' || channel.change === Number(filters.change.value))
      && percentOf(channel) >= Number(filters.activity.value);  // as it is shown
  }
  function offer(select, key, nameOf) {
    for (const value of [...new Set(channels.map((c) => c[key]))].sort((a, b) => a - b)) {
      element('option', { value }, nameOf(value), select);
    }
  }
  offer(filters.kind, 'kind', (kind) => data.kinds[kind]);
  offer(filters.band, 'band', (band) => (band < 0 ? 'not in the band plan' : data.plan[band]));
  offer(filters.change, 'change', (change) => data.changes[change] || 'as before');
  find('change-label').hidden = !data.compared;

  /** The filters as a sentence for paper, where they themselves are not seen. */
  function filterText(onlyInView) {
    const chosen = (name) => filters[name].selectedOptions[0].textContent;
    const isWhole = view.low === data.span[0] && view.high === data.span[1];
    return [
      filters.kind.value && `kind ${chosen('kind')}`,
      filters.band.value && `band ${chosen('band')}`,
      filters.change.value && `change: ${chosen('change')}`,
      Number(filters.activity.value) > 0 && `seen in at least ${filters.activity.value} % of looks`,
      onlyInView && !isWhole && `from ${mhz(view.low)} to ${mhz(view.high)} MHz`,
    ].filter(Boolean).join(', ');
  }

  // Rows come in portions, so that the page is seen, and answers, before the last of them is made.
  const portion = 150;
  let waiting = [];
  let timer = 0;
  function appendRows(count) {
    clearTimeout(timer);
    find('rows').append(...waiting.splice(0, count).map(rowOf));
    if (waiting.length > 0) timer = setTimeout(() => appendRows(2 * portion), 0);
  }
  function compare(a, b) {
    const [left, right] = [a[sortBy.key], b[sortBy.key]];
    if (left === right) return a.centre - b.centre;
    if (left === null || right === null) return left === null ? 1 : -1;
    const order = typeof left === 'string' ? left.localeCompare(right) : left - right;
    return sortBy.isDown ? -order : order;
  }
  function fillTable() {
    for (const column of columns) {
      const order = sortBy.isDown ? 'descending' : 'ascending';
      column.head.setAttribute('aria-sort', column.key === sortBy.key ? order : 'none');
    }
    const onlyInView = find('in-view').checked;
    waiting = channels.filter((c) => passes(c) && (!onlyInView || isInView(c))).sort(compare);
    find('count').textContent = `${waiting.length} of ${counted(channels.length, 'channel')}`;
    find('chosen').textContent = filterText(onlyInView);
    find('rows').replaceChildren();
    appendRows(portion);
    const first = find('rows').firstChild;
    if (first && !find('rows').querySelector('tr[tabindex="0"]')) first.tabIndex = 0;
  }
  function focusRow(row) {
    if (!row) return;
    find('rows').querySelectorAll('tr[tabindex="0"]').forEach((other) => { other.tabIndex = -1; });
    row.tabIndex = 0;
    row.focus();
  }
  function applyFilters() {
    drawMarks();
    drawLabels();
    fillTable();
  }
  find('filters').addEventListener('input', applyFilters);
  find('filters').addEventListener('reset', () => setTimeout(applyFilters, 0));
  find('filters').addEventListener('submit', (event) => event.preventDefault());

  const rowAt = (event) => event.target.closest('tr');
  const rows = find('rows');
  rows.addEventListener('pointerover', (event) => hover(rowAt(event)?.channel ?? null));
  rows.addEventListener('pointerleave', () => hover(null));
  rows.addEventListener('click', (event) => {
    pick(rowAt(event).channel);
    focusRow(rowAt(event));
  });
  rows.addEventListener('keydown', (event) => {
    const row = rowAt(event);
    onKey({
      ArrowDown: () => focusRow(row.nextElementSibling),
      ArrowUp: () => focusRow(row.previousElementSibling),
      Home: () => focusRow(rows.firstElementChild),
      End: () => { appendRows(Infinity); focusRow(rows.lastElementChild); },
      Enter: () => { pick(row.channel); focusRow(row); },
      ' ': () => { pick(row.channel); focusRow(row); },
      Escape: () => pick(null),
    }, event);
  });

  // ---- Size, and paper ---------------------------------------------------------------------------
  const printWidth = 700;  // of an A4 page within its margins, in CSS pixels
  function fit(width) {
    if (width <= 0 || width === pictureWidth) return;
    pictureWidth = width;
    draw();
  }
  fit(picture.clientWidth);
  fillTable();
  new ResizeObserver(() => fit(picture.clientWidth)).observe(picture);
  window.addEventListener('beforeprint', () => {
    appendRows(Infinity);
    fit(printWidth);
  });
  window.addEventListener('afterprint', () => fit(picture.clientWidth));
})();
