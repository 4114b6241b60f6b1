// ---- Heading and legend -------------------------------------------------------------------------
find('time-span').textContent = say('time_span', {
  first: timeText(data.first_unix_ms), last: timeText(data.last_unix_ms), zone: zoneText,
});
for (const { name, value } of data.settings) {
  const pair = element('div', {}, undefined, find('settings'));
  element('dt', {}, name, pair);
  element('dd', {}, value, pair);
}
find('remarks').hidden = data.remarks.length === 0;
for (const remark of data.remarks) element('li', {}, remark, find('remarks'));

function showLegend() {
  const scale = element('span', {}, words.least_active, find('legend'));
  const [width, height] = [at.shade_width, at.shade_height];
  const size = { width: data.shades.length * width, height, 'aria-hidden': 'true' };
  const swatches = shape('svg', size, scale);
  data.shades.forEach((fill, index) => {
    shape('rect', { x: index * width, width, height, fill }, swatches);
  });
  scale.append(words.most_active);
  if (words.change_legend) element('span', {}, words.change_legend, find('legend'));
}
showLegend();
