// ---- Picture: frequencies over the marks --------------------------------------------------------
/** Where a label of this length goes over the mark of a channel. */
function labelBox(channel, characters) {
  const half = (characters * at.character_width) / 2 + 2;
  const x = Math.min(Math.max(xOf(channel.centre_hz), at.left + half), pictureWidth - half);
  return { channel, x, half, bottom: channel.top - at.label_gap };
}
const overlap = (a, b) => a.channel !== b.channel && Math.abs(a.x - b.x) < a.half + b.half
  && Math.abs(a.bottom - b.bottom) < at.label_height;

/**
 * The picked channel, then changed ones, then the most active, wherever there is no other label and
 * no other mark behind. Places for the symbols of changed channels are kept free, but in a crowd
 * only where the symbols would stand out.
 */
function drawLabels() {
  labels.replaceChildren();
  const skyline = skylineOf((width) => width <= at.wide_mark);
  const isHidden = ({ x, half, bottom }) => {
    const [from, to] = [Math.floor(x - half), Math.floor(x + half)];
    return skyline.slice(from, to + 1).some((top) => top < bottom);
  };
  const placed = [];
  const meetsAnother = (box) => placed.some((other) => overlap(other, box));
  const first = (c) => (c === picked ? 0 : c.changed.symbol ? 1 : 2);
  const wanted = channels.filter((c) => isInView(c) && passes(c))
    .sort((a, b) => first(a) - first(b) || b.activity - a.activity
      || (b.over_db ?? 0) - (a.over_db ?? 0));
  const crowded = isCrowded();
  const reserved = new Map();
  for (const channel of wanted) {
    if (!channel.changed.symbol) continue;
    const box = labelBox(channel, 1);
    if ((crowded && isHidden(box)) || meetsAnother(box)) continue;
    placed.push(box);
    reserved.set(channel, box);
  }
  for (const channel of wanted) {
    const { symbol } = channel.changed;
    const isPicked = channel === picked;
    const style = isPicked ? 'label picked' : 'label';
    const frequency = mhz(channel.centre_hz);
    // A symbol is as wide as two digits.
    const box = labelBox(channel, frequency.length + 2 * symbol.length);
    if (!meetsAnother(box) && (isPicked || !isHidden(box))) {
      placed.push(box);
      write(labels, box.x, box.bottom, style, symbol + frequency);
    } else if (reserved.has(channel)) {
      const { x, bottom } = reserved.get(channel);
      write(labels, x, bottom, style, symbol);
    }
  }
}
