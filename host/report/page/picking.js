// ---- One channel, in the picture and in the table -----------------------------------------------
function readOut(channel) {
  find('readout').textContent = channel ? sentence(channel) : '\u00a0';
}
function hover(channel) {
  if (hovered === channel) return;
  hovered?.row?.classList.remove('hover');
  hovered = channel;
  hovered?.row?.classList.add('hover');
  readOut(hovered ?? picked);
  drawHighlights();
}
function pick(channel) {
  picked?.row?.removeAttribute('aria-current');
  picked = channel;
  if (picked) rowOf(picked).setAttribute('aria-current', 'true');
  readOut(picked);
  if (picked && (picked.centre_hz < view.low || picked.centre_hz > view.high)) {
    const half = (view.high - view.low) / 2;
    look(picked.centre_hz - half, picked.centre_hz + half);
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
  const next = place < 0
    ? Math.max(from, 0)
    : Math.min(Math.max(place + step, 0), shown.length - 1);
  pick(shown[next]);
}

/** The channel under a point: the narrowest of several, the nearest of equally wide ones. */
function channelAt(x, y) {
  const slack = 4;
  let best = null;
  let bestRank = Infinity;
  for (const channel of channels) {
    if (!isInView(channel) || !passes(channel)) continue;
    const distance = Math.max(xOf(channel.low) - x, x - xOf(channel.high), 0);
    if (distance > slack) continue;
    const isOnLevel = y >= channel.top - slack && y <= at.level_bottom;
    const isOnTime = channel.time_end > 0
      && y >= channel.time_begin - slack && y <= channel.time_end + slack;
    if (!isOnLevel && !isOnTime) continue;
    const rank = channel.width_hz + (distance * (view.high - view.low)) / plotWidth();
    if (rank < bestRank) [best, bestRank] = [channel, rank];
  }
  return best;
}
