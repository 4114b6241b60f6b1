// ---- What the program knows of the survey -------------------------------------------------------
// Names with an underscore are the program's own (page_data.cpp); others are worked out here.
const find = (id) => document.getElementById(id);
const data = JSON.parse(find('survey').textContent);
const at = data.measures;
const words = data.words;

/** The words of that name, with its places such as {low} filled in from `values`. */
function say(name, values = {}) {
  return words[name].replace(/\{(\w+)\}/g, (place, key) => values[key]);
}

const columnNames = Object.keys(data.channels);
const channels = data.channels.centre_hz.map((_, index) => {
  const seen = Object.fromEntries(columnNames.map((name) => [name, data.channels[name][index]]));
  const band = seen.range < 0 ? null : data.plan[seen.range];
  const half = Math.max(seen.width_hz, 0) / 2;
  return {
    ...seen,
    low: seen.centre_hz - half,
    high: seen.centre_hz + half,
    activity: seen.hits < seen.looks ? seen.hits / seen.looks : 1,  // to order and choose by
    kindName: data.kinds[seen.kind],
    band,
    bandChoice: data.plan.indexOf(band),  // of several ranges of one name the first; none: -1
    changed: data.changes[seen.change],
    isGone: data.changes[seen.change].name === 'gone',
    row: null,  // once it is made
  };
});
const byCentre = channels.slice().sort((a, b) => a.centre_hz - b.centre_hz);
