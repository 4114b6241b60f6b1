// ---- Numbers and times as text ------------------------------------------------------------------
const mhz = (hz, digits = 4) => (hz / 1e6).toFixed(digits);
const khz = (hz) => (hz / 1e3).toFixed(hz < 1000 ? 3 : 1);
const decibel = (db, digits = 1) => (db === null ? words.missing : db.toFixed(digits));
const two = (number) => String(number).padStart(2, '0');

function offsetText(ms) {
  const minutes = -new Date(ms).getTimezoneOffset();
  const size = Math.abs(minutes);
  return `UTC${minutes < 0 ? '−' : '+'}${two(Math.floor(size / 60))}:${two(size % 60)}`;
}
// If the times span a clock change, each has its offset; otherwise the offset is shown once.
const times = channels.flatMap((c) => [c.first_unix_ms, c.last_unix_ms]);
const offsets = [...new Set(times.filter((ms) => ms !== null).map(offsetText))];
const zoneName = Intl.DateTimeFormat().resolvedOptions().timeZone || words.local_time;
const isOffsetTold = offsets.length === 1 && zoneName !== 'UTC';
const zoneText = isOffsetTold ? `${zoneName}, ${offsets[0]}` : zoneName;

const dateText = (d) => `${d.getFullYear()}-${two(d.getMonth() + 1)}-${two(d.getDate())}`;
const clockText = (d) => [d.getHours(), d.getMinutes(), d.getSeconds()].map(two).join(':');
const millisText = (d) => `.${String(d.getMilliseconds()).padStart(3, '0')}`;
const guessMark = data.times_are_guesses ? words.guess_mark : '';
const oldGuessMark = data.old_times_are_guesses ? words.guess_mark : '';
/** `mark` goes in front of a guess. */
function timeText(ms, mark = guessMark) {
  if (ms === null) return words.missing;
  const date = new Date(ms);
  const seconds = `${mark}${dateText(date)} ${clockText(date)}`;
  const time = data.shows_milliseconds ? seconds + millisText(date) : seconds;
  return offsets.length > 1 ? `${time} ${offsetText(ms)}` : time;
}

const counted = (count, one, several) => (count === 1 ? words[one] : say(several, { count }));
const seenText = (channel) => say('seen', {
  hits: counted(channel.hits, 'one_detection', 'detections'),
  looks: counted(channel.looks, 'one_look', 'looks'),
});

/** A channel in one line. */
const sentence = (channel) => [
  say('channel', {
    centre: mhz(channel.centre_hz),
    kind: channel.kindName,
    width: khz(channel.width_hz),
    over: decibel(channel.over_db, 0),
    seen: seenText(channel),
  }),
  channel.band,
  channel.changed.name,
].filter(Boolean).join(', ');
