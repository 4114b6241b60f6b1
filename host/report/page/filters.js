// ---- Filters ------------------------------------------------------------------------------------
const filters = {
  kind: find('kind'), band: find('band'), change: find('change'), activity: find('activity'),
};
function passes(channel) {
  const allows = (filter, value) => filter.value === '' || value === Number(filter.value);
  return allows(filters.kind, channel.kind) && allows(filters.band, channel.bandChoice)
    && allows(filters.change, channel.change)
    && channel.activity >= Number(filters.activity.value);
}
function offer(select, key, nameOf) {
  for (const value of [...new Set(channels.map((c) => c[key]))].sort((a, b) => a - b)) {
    element('option', { value }, nameOf(value), select);
  }
}
offer(filters.kind, 'kind', (kind) => data.kinds[kind]);
offer(filters.band, 'bandChoice', (band) => (band < 0 ? words.no_band : data.plan[band]));
offer(filters.change, 'change', (change) => data.changes[change].name || words.no_change);
find('change-label').hidden = !data.is_compared;

/** The filters as a sentence, for paper, where the controls are not shown. */
function filterText(onlyInView) {
  const chosen = (filter, name) => (
    filter.value && say(name, { name: filter.selectedOptions[0].textContent }));
  const isWhole = view.low === whole.low && view.high === whole.high;
  const activity = filters.activity.value;
  return [
    chosen(filters.kind, 'only_kind'),
    chosen(filters.band, 'only_band'),
    chosen(filters.change, 'only_change'),
    Number(activity) > 0 && say('only_activity', { activity }),
    onlyInView && !isWhole && say('only_range', { low: mhz(view.low), high: mhz(view.high) }),
  ].filter(Boolean).join(', ');
}

function applyFilters() {
  drawMarks();
  drawLabels();
  fillTable();
}
find('filters').addEventListener('input', applyFilters);
find('filters').addEventListener('reset', () => setTimeout(applyFilters, 0));
find('filters').addEventListener('submit', (event) => event.preventDefault());
