// ---- What the program knows about the survey ----------------------------------------------------
// Names with an underscore come from the program (page_data.cpp); others are computed here.
const find = (id) => document.getElementById(id);
const data = JSON.parse(find('survey').textContent);
const at = data.measures;
const words = data.words;

/** The text with that name, with placeholders such as {low} filled in from `values`. */
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
    activity: seen.hits < seen.looks ? seen.hits / seen.looks : 1,  // to sort and filter by
    kindName: data.kinds[seen.kind],
    band,
    bandChoice: data.plan.indexOf(band),  // the first range with the name; none: -1
    changed: data.changes[seen.change],
    isGone: data.changes[seen.change].name === 'gone',
    row: null,  // once it is made
  };
});
const byCentre = channels.slice().sort((a, b) => a.centre_hz - b.centre_hz);
