// ---- Table --------------------------------------------------------------------------------------
function changeText({ changed, isGone, old_hits, old_looks }) {
  const isBoth = old_hits > 0 && !isGone;
  const before = isBoth ? say('counts_before', { hits: old_hits, looks: old_looks }) : '';
  return [changed.name, before].filter(Boolean).join(', ');
}
function fillSeen(cell, { shade, hits, looks }) {
  element('span', { class: 'seen' }, '', cell).style.background = data.shades[shade];
  cell.append(`${hits}/${looks}`);
}
const isShort = data.shows_milliseconds;
const timeColumn = (name) => ({
  width: (isShort ? 21.5 : 17.5) + (guessMark || oldGuessMark ? 1 : 0),
  isDown: true,
  style: 'time',
  text: (c) => timeText(c[name], c.isGone ? oldGuessMark : guessMark),
});
// How each column shows a channel. Widths are shares of the table's width; isDown columns sort
// downwards at first.
const showing = {
  centre_hz: { width: 12, text: (c) => mhz(c.centre_hz) },
  change: { width: 15, isDown: true, isText: true, text: changeText },
  width_hz: {
    width: 8,
    text: (c) => khz(c.width_hz),
    hint: (c) => say('width_range', { min: khz(c.min_width_hz), max: khz(c.max_width_hz) }),
  },
  kind: { width: 10, isText: true, text: (c) => c.kindName },
  over_db: { width: 11, isDown: true, text: (c) => decibel(c.over_db) },
  peak_db: { width: 9, isDown: true, text: (c) => decibel(c.peak_db) },
  activity: { width: 12, isDown: true, fill: fillSeen, hint: seenText },
  first_unix_ms: timeColumn('first_unix_ms'),
  last_unix_ms: timeColumn('last_unix_ms'),
  band: { width: 14, isText: true, text: (c) => c.band ?? '' },
};
const columns = data.columns.map((column) => ({ ...column, ...showing[column.name] }));

let sortBy = { name: 'activity', isDown: true };
function addHeads() {
  const table = find('table');
  const colgroup = element('colgroup');
  const widths = columns.reduce((sum, column) => sum + column.width, 0);
  table.style.setProperty('--min-width', `${(0.64 * widths).toFixed(1)}rem`);
  table.prepend(table.caption, colgroup);
  for (const column of columns) {
    element('col', {}, undefined, colgroup).style.width = `${(100 * column.width) / widths}%`;
    const style = column.isText ? 'text' : '';
    column.head = element('th', { scope: 'col', class: style }, undefined, find('heading'));
    column.head.dataset.title = column.title;  // for paper: buttons are not repeated on every sheet
    const button = element('button', { type: 'button' }, column.title, column.head);
    button.addEventListener('click', () => {
      const isSame = sortBy.name === column.name;
      sortBy = { name: column.name, isDown: isSame ? !sortBy.isDown : Boolean(column.isDown) };
      fillTable();
    });
    element('span', { class: 'unit' }, column.unit.replace('{zone}', zoneText), column.head);
  }
}
addHeads();

function rowOf(channel) {
  if (channel.row) return channel.row;
  channel.row = element('tr', { tabindex: '-1' });
  channel.row.channel = channel;
  for (const column of columns) {
    const isHead = column.name === 'centre_hz';
    const cell = element(isHead ? 'th' : 'td', isHead ? { scope: 'row' } : {}, undefined,
      channel.row);
    cell.className = column.isText ? 'text' : column.style ?? '';
    if (column.hint) cell.title = column.hint(channel);
    if (column.fill) column.fill(cell, channel);
    else cell.append(column.text(channel));
  }
  return channel.row;
}

/** How many rows there are without gone channels, as the title counts them. */
function countText(shown) {
  const [gone, allGone] = [shown, channels].map((list) => list.filter((c) => c.isGone).length);
  return [
    say('count_shown', { shown: shown.length - gone, all: words.all_channels }),
    allGone > 0 && say('gone_shown', { shown: gone, all: allGone }),
  ].filter(Boolean).join(', ');
}

// Rows are made in portions, so that the page is shown and responds before the last of them is
// ready.
const portion = 150;
let waiting = [];
let timer = 0;
function appendRows(count) {
  clearTimeout(timer);
  find('rows').append(...waiting.splice(0, count).map(rowOf));
  if (waiting.length > 0) timer = setTimeout(() => appendRows(2 * portion), 0);
}
/** Missing values come last, whichever way the rest is sorted. */
function compare(a, b) {
  const [left, right] = [a[sortBy.name], b[sortBy.name]];
  if (left === right) return a.centre_hz - b.centre_hz;
  if (left === null || right === null) return left === null ? 1 : -1;
  const order = typeof left === 'string' ? left.localeCompare(right) : left - right;
  return sortBy.isDown ? -order : order;
}
function fillTable() {
  for (const { name, head } of columns) {
    const order = sortBy.isDown ? 'descending' : 'ascending';
    head.setAttribute('aria-sort', name === sortBy.name ? order : 'none');
  }
  const onlyInView = find('in-view').checked;
  waiting = channels.filter((c) => passes(c) && (!onlyInView || isInView(c))).sort(compare);
  find('count').textContent = countText(waiting);
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
  const pickRow = () => {
    pick(row.channel);
    focusRow(row);
  };
  onKey({
    ArrowDown: () => focusRow(row.nextElementSibling),
    ArrowUp: () => focusRow(row.previousElementSibling),
    Home: () => focusRow(rows.firstElementChild),
    End: () => { appendRows(Infinity); focusRow(rows.lastElementChild); },
    Enter: pickRow,
    ' ': pickRow,
    Escape: () => pick(null),
  }, event);
});
