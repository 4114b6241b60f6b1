// The report in a browser: what a reader sees and does, hostile names, and how fast it loads.
// Usage: node page_test.mjs PELAGRIM_SURVEY NODE_MODULES
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, rmSync, statSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const [program, modules] = process.argv.slice(2);
const { chromium } = createRequire(join(modules, 'x.js'))('playwright-core');
const dir = mkdtempSync(join(tmpdir(), 'report-'));
const hostile = '</script><script>window.hacked=1</script><img src=x onerror=hacked=1>"&\'';

function report(name, rows, options = []) {
  writeFileSync(join(dir, 'survey.csv'), `# survey.csv format 2\n${rows.join('\n')}\n`);
  execFileSync(program, ['report', dir, '-o', join(dir, name), ...options]);
  return `file://${join(dir, name)}`;
}
const usual = '1731760000000,1731763600000';
const row = (hz, width, over, hits, looks, kind, times = usual) =>
  [hz, width, width, width, over - 90, -90, hits, looks, times, kind].join();

const browser = await chromium.launch({
  executablePath: '/usr/bin/chromium',
  args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
    '--disable-background-networking', '--disable-component-update', '--disable-sync'],
});
try {
  writeFileSync(join(dir, 'survey-labels.txt'), Buffer.concat([
    Buffer.from(`144 145 ${hostile}\n145.5 146 bad `), Buffer.from([0xff, 0x1b]),
    Buffer.from(' bytes\n')]));
  writeFileSync(join(dir, 'survey.cfg'), 'raster_hz = 5000\n');
  writeFileSync(join(dir, 'old.csv'), [row(145300000, 3000, 20, 9, 9, 'SSB/CW?'),
    row(145800000, 12000, 30, 1, 90, 'NFM?'), ''].join('\n'));
  const page = await browser.newPage({
    viewport: { width: 1000, height: 1500 }, timezoneId: 'Europe/Berlin',
  });
  const troubles = [];
  page.on('pageerror', (error) => troubles.push(error.message));
  page.on('console', (message) => {
    if (message.type() === 'error') troubles.push(message.text());
  });
  page.on('request', (request) => {
    if (!request.url().startsWith('file:')) troubles.push(request.url());
  });
  const cells = (column) => page.locator(`#rows tr > :nth-child(${column})`).allTextContents();
  const frequencies = () => cells(1);

  // a: 9/10 of looks, narrow, upon b, wide: 10/10; c: 1/2.
  await page.goto(report('small.html', [row(144620000, 160000, 30, 10, 10, 'WFM?'),
    row(144600000, 3000, 10, 9, 10, 'SSB/CW?'), row(145800000, 12000, 20, 45, 90, 'NFM?'),
    'garbage'], ['--compare', join(dir, 'old.csv')]));
  const [wide, narrow, third, gone] = ['144.6200', '144.6000', '145.8000', '145.3000'];
  assert.match(await page.textContent('#title'), /144\.000–146\.000 MHz, 3 channels, 1 gone$/);
  assert.match(await page.textContent('#time-span'),
    /^Seen from 2024-11-16 13:26:40 to .* 14:26:40 \(Europe\/Berlin, UTC\+01:00\)$/);
  assert.match(await page.textContent('#remarks'),
    /skipped 1 line that could not be read, first line 5/);
  assert.match(await page.textContent('#legend'),
    /hits\/looks since first heard: 01 or more\+ thick outline: new, × dashed: gone/);
  assert.deepEqual(await page.locator('#heading th').allTextContents(), ['FrequencyMHz',
    'Changehits/looks before', 'WidthkHz', 'Kindby width', 'Over floorrelative dB',
    'Peakrelative dB', 'Seenhits/looks', 'First seenEurope/Berlin, UTC+01:00',
    'Last seenEurope/Berlin, UTC+01:00', 'Bandband plan']);
  assert.deepEqual(await page.locator('#rows tr:first-child > *').allTextContents(), ['144.6200',
    'new', '160.0', 'WFM?', '30.0', '-60.0', '10/10', '2024-11-16 13:26:40',
    '2024-11-16 14:26:40', hostile]);
  assert.doesNotMatch(await page.textContent('main'), /undefined|NaN|\{\w+\}/);
  assert.equal(await page.textContent('#count'), '3 of 3 channels, 1 of 1 gone');

  // Names are shown as text, whatever is in them.
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  assert.equal(await page.locator('img').count(), 0);
  assert.deepEqual((await cells(10)).slice(0, 2), [hostile, '']);
  assert.ok((await cells(10)).includes('bad \uFFFD\u241B bytes'));

  // Sorting by mouse and by keyboard, also announced to those who cannot see the arrow.
  assert.deepEqual(await frequencies(), [wide, gone, narrow, third]);
  await page.click('thead button:text("Frequency")');
  assert.deepEqual(await frequencies(), [narrow, wide, gone, third]);
  await page.keyboard.press('Enter');
  assert.deepEqual(await frequencies(), [third, gone, wide, narrow]);
  const order = async () => [await page.getAttribute('th:has-text("Frequency")', 'aria-sort'),
    await page.locator('th:has-text("Frequency") button')
      .evaluate((button) => getComputedStyle(button, '::after').content)];
  assert.deepEqual(await order(), ['descending', '" ↓"']);
  await page.keyboard.press('Enter');
  assert.deepEqual(await order(), ['ascending', '" ↑"']);
  await page.keyboard.press('Enter');
  assert.deepEqual(await cells(2), ['more often, was 1/90', 'gone', 'new', 'new']);

  // Filters.
  await page.selectOption('#kind', { label: 'NFM?' });
  assert.deepEqual(await frequencies(), [third]);
  assert.equal(await page.locator('#picture .mark:not(.left-out)').count(), 2, 'of level and time');
  await page.click('button[type=reset]');
  await page.selectOption('#change', { label: 'new' });
  assert.deepEqual(await frequencies(), [wide, narrow]);
  await page.click('button[type=reset]');
  await page.selectOption('#band', { label: 'not in the band plan' });
  assert.deepEqual(await frequencies(), [gone]);
  assert.equal(await page.textContent('#count'), '0 of 3 channels, 1 of 1 gone');
  await page.click('button[type=reset]');
  await page.fill('#activity', '0.6');
  assert.deepEqual(await frequencies(), [gone, wide, narrow]);
  await page.click('button[type=reset]');

  // A narrow signal can be pointed at even under a wide one; the picture and the row agree.
  const box = await page.locator('#picture').boundingBox();
  const label = page.locator('#picture .label', { hasText: third });
  const labelX = Number(await label.getAttribute('x'));
  const xOf = (mhz) => box.x + labelX + ((mhz - 145.8) / (2 * 1.02)) * (box.width - 90);
  await page.mouse.click(xOf(144.6), box.y + 245);
  assert.match(await page.textContent('#rows tr[aria-current]'), new RegExp(narrow));
  await page.mouse.click(xOf(144.65), box.y + 245);
  assert.match(await page.textContent('#rows tr[aria-current]'), new RegExp(wide));
  assert.match(await page.textContent('#readout'), new RegExp('^144\\.6200 MHz, WFM\\?, '
    + '160\\.0 kHz wide, 30 dB over floor, 10 detections, 10 looks since first heard, .*, new$'));

  // Dates are above the clock times beside the lines of the time scale.
  assert.deepEqual((await page.locator('#picture text.end').evaluateAll((all) => all
    .sort((a, b) => a.getAttribute('y') - b.getAttribute('y')).map((text) => text.textContent)))
    .slice(-6), ['13:26:40', '13:56:40', '14:26:40'].flatMap((clock) => ['2024-11-16', clock]));

  // Dragging zooms in on what was dragged over, and a double-click undoes it.
  await page.mouse.move(xOf(145.2), box.y + 100);
  await page.mouse.down();
  await page.mouse.move(xOf(145.4), box.y + 100, { steps: 3 });
  await page.mouse.up();
  assert.match(await page.textContent('#view'), /^145\.(19|20)\d\d–145\.(39|40)\d\d MHz/);
  assert.deepEqual(await frequencies(), [gone]);
  await page.mouse.dblclick(xOf(145.0), box.y + 100);
  assert.equal((await frequencies()).length, 4);

  // The same with keys alone.
  await page.focus('#picture');
  const press = async (...keys) => { for (const key of keys) await page.keyboard.press(key); };
  await press('Escape', 'ArrowDown', 'ArrowDown', 'ArrowDown', '+', '+', '+');
  assert.deepEqual(await frequencies(), [gone]);
  const readoutHeight = async () => (await page.locator('#readout').boundingBox()).height;
  assert.equal(await readoutHeight(), 21.75, 'one line, also without a name');
  const shown = async () => (await page.textContent('#view')).match(/\d+\.\d+/g).map(Number);
  const [low, high] = await shown();
  assert.ok(Math.abs(high - low - 2 * 1.02 / 8) < 0.001, `${low} to ${high}`);
  await press('ArrowRight', 'ArrowRight');
  assert.ok(Math.abs((await shown())[0] - (low + high) / 2) < 0.001, 'half of what was seen');
  await press('ArrowLeft', 'ArrowLeft', 'ArrowLeft');
  assert.ok((await shown())[0] < low);
  await press('-');
  assert.ok(Math.abs(high - low - ((await shown())[1] - (await shown())[0]) / 2) < 0.001);
  await press('ArrowUp');
  assert.match(await page.textContent('#readout'), new RegExp(wide));
  assert.ok(Math.abs((await shown())[0] + (await shown())[1] - 2 * 144.62) < 0.3, 'goes along');
  assert.equal(await readoutHeight(), 21.75, 'one line, however long the name');
  await press('0');
  assert.deepEqual(await page.locator('[aria-current] > th').allTextContents(), [wide]);
  await press('ArrowDown');
  await page.keyboard.press('0');
  await page.keyboard.press('Enter');
  assert.match(await page.evaluate(() => document.activeElement.textContent), new RegExp(gone));
  await page.keyboard.press('ArrowUp');
  await page.keyboard.press('Enter');
  assert.match(await page.textContent('#readout'), new RegExp(third));
  await press('End', 'Enter');
  assert.match(await page.textContent('#readout'), new RegExp(narrow));
  await press('Home', 'ArrowDown', 'Enter');
  assert.match(await page.textContent('#readout'), new RegExp(gone));
  await page.hover('#rows tr:first-child');
  assert.match(await page.textContent('#readout'), new RegExp(third));
  await page.click(`#rows tr:has-text("${wide}")`);
  await press('ArrowDown', 'Enter');
  assert.match(await page.textContent('#readout'), new RegExp(narrow));

  // Unknown values come last, whichever way the rest is sorted.
  const [known, unknown] = ['145.0000', '144.9000'];
  await page.goto(report('unknown.html', [row(144900000, 3000, NaN, 1, 2, '?', '0,0'),
    row(145000000, 3000, 20, 1, 2, '?'), row(145600000, 3000, 30, 1, 2, '?')]));
  for (const head of ['Over floor', 'Peak', 'First seen', 'Last seen', 'Band']) {
    for (let click = 0; click < 2; click += 1) {
      await page.click(`thead button:text("${head}")`);
      const last = (await frequencies()).at(-1);
      assert.equal(last, head === 'Band' ? known : unknown, `${head}, click ${click}`);
    }
  }

  // Two ranges of one name are one choice, activity is hits by looks, and where there are
  // more hits than looks, none is made up; a carrier of 29 Hz has a width.
  writeFileSync(join(dir, 'survey-labels.txt'), '144 144.1 Club\n145.9 146 Club\n');
  const crowd = Array.from({ length: 30 }, (_, i) => row(144.2e6 + 5e4 * i, 3000, 20, 1, 2, '?'));
  await page.goto(report('parts.html', [row(144050000, 29, 50, 400, 400, 'carrier?'),
    row(144060000, 29, 15, 1, 400, 'carrier?'), row(145950000, 12000, 20, 2, 3, 'NFM?'),
    row(145960000, 3000, 20, 13, 9, 'NFM?'), row(145000000, 900000, 40, 9, 10, 'WFM?'),
    ...crowd]));
  assert.deepEqual(await page.locator('#band option').allTextContents(),
    ['all', 'not in the band plan', 'Club']);
  await page.selectOption('#band', { label: 'Club' });
  await page.fill('#activity', '0.66');
  assert.deepEqual(await cells(6), ['400/400', '13/9', '2/3']);
  await page.hover('#rows tr:nth-child(2)');
  assert.match(await page.textContent('#readout'), /, 13 detections, 9 looks since first heard,/);
  assert.equal((await cells(2))[0], '0.029');

  // Paper tells the filters and has no box that scrolls; on a screen picture, headings and the row
  // that is picked are seen at once.
  await page.setViewportSize({ width: 1280, height: 800 });
  await page.emulateMedia({ media: 'print' });
  assert.equal(await page.innerText('#chosen'), 'band Club, activity at least 0.66');
  await page.evaluate(() => document.querySelector('#filters').reset());
  await page.waitForFunction(() => document.querySelectorAll('#rows tr').length === 35);
  assert.ok(await page.evaluate(() => (
    document.querySelector('#table-box').clientHeight
      >= document.querySelector('#table').offsetHeight)));
  await page.emulateMedia({ media: 'screen' });
  await page.locator('#rows tr').nth(30).click();
  await page.locator('#picture').evaluate((element) => element.scrollIntoView());
  for (const seen of ['#picture', 'th:has-text("Frequency")', '#rows tr[aria-current]']) {
    const { y, height } = await page.locator(seen).boundingBox();
    assert.ok(y >= 0 && y + height <= 800, `${seen}: ${y} to ${y + height}`);
  }

  // Wide marks are drawn first, then tall, then short ones; the picked one is framed and hides
  // nothing.
  const fills = await page.locator('#picture .mark')
    .evaluateAll((all) => all.map((mark) => mark.getAttribute('fill')));
  assert.equal(fills[0], '#0f2677');
  assert.ok(fills.indexOf('#230863') < fills.indexOf('#deba42'));
  assert.equal(await page.locator('.highlight').first()
    .evaluate((frame) => getComputedStyle(frame).fill), 'none');

  // Guessed times are marked, and those of an earlier survey that knew its times are not.
  writeFileSync(join(dir, 'survey-source.json'), JSON.stringify({ program: '', source: {
    kind: 'recording', name: 'a', start_is_guess: true }, settings: { start: 1, stop: 2,
    threshold_db: 9, dwell_seconds: 1, raster_hz: 5000, sweep: true } }));
  mkdirSync(join(dir, 'sure'));
  writeFileSync(join(dir, 'sure/survey.csv'), `${row(145900000, 3000, 20, 1, 2, '?')}\n`);
  await page.goto(report('guess.html', [row(144900000, 3000, 20, 1, 2, '?')],
    ['--compare', join(dir, 'sure')]));
  assert.match(await page.textContent('#time-span'), /^Seen from ≈2024-.* to ≈2024-/);
  assert.match(await page.locator('#rows tr:not(:has-text("gone"))').textContent(), /≈2024.*≈2024/);
  assert.doesNotMatch(await page.locator('#rows tr:has-text("gone")').textContent(), /≈/);

  // Times to the millisecond keep to their cells, on a narrow screen and on paper.
  await page.goto(report('short.html', [
    row(145000000, 3000, 20, 1, 2, '?', '1731760000123,1731760000456')],
  ['--compare', join(dir, 'old.csv')]));
  for (const [media, width] of [['screen', 390], ['screen', 1280], ['print', 700]]) {
    await page.emulateMedia({ media });
    await page.setViewportSize({ width, height: 800 });
    const tooWide = await page.locator('#rows td').evaluateAll((all) => all
      .filter((cell) => cell.scrollWidth > cell.clientWidth).map((cell) => cell.textContent));
    assert.deepEqual(tooWide, [], `${media}, ${width} pixels`);
  }
  await page.emulateMedia({ media: 'screen' });
  await page.setViewportSize({ width: 1280, height: 800 });

  // Five thousand channels: all of them, and fast.
  const many = Array.from({ length: 5000 }, (_, i) => (
    row(30e6 + 90e3 * i, 3000 + 40 * (i % 900), 12 + (i % 50), 1 + (i % 40), 40, '?')));
  const url = report('many.html', many);
  assert.ok(statSync(join(dir, 'many.html')).size < 2e6);
  await page.addInitScript(() => {
    const note = () => setTimeout(() => { window.shownAfter = performance.now(); }, 0);
    const look = () => requestAnimationFrame(document.querySelector('#rows tr') ? note : look);
    look();
  });
  const times = [];
  for (let load = 0; load < 3; load += 1) {
    await page.goto(url);
    await page.waitForFunction(() => document.querySelectorAll('#rows tr').length === 5000
      && performance.getEntriesByName('first-contentful-paint').length > 0);
    times.push(await page.evaluate(() => Math.round(Math.max(
      performance.getEntriesByName('first-contentful-paint')[0].startTime, window.shownAfter))));
  }
  // All of them are printed, also those that the screen has not shown yet.
  assert.deepEqual(await page.evaluate(() => {
    const rows = () => document.querySelectorAll('#rows tr').length;
    document.querySelector('#filters').dispatchEvent(new Event('input'));
    const before = rows();
    window.dispatchEvent(new Event('beforeprint'));
    const onPaper = [rows(), document.querySelector('#picture svg').getAttribute('width')];
    window.dispatchEvent(new Event('afterprint'));
    const after = document.querySelector('#picture svg').getAttribute('width');
    return [before < 5000, ...onPaper, Number(after) > 1000];
  }), [true, 5000, '700', true]);
  console.log(`5,000 channels: page, picture and table seen after ${times.join(', ')} ms`);
  assert.ok(Math.min(...times) < 1000, 'seen within a second, on a machine that is not busy');
  assert.deepEqual(troubles, []);

  // No script but the page's own runs, whatever gets into it.
  await page.evaluate(() => {
    const script = document.createElement('script');
    script.textContent = 'window.hacked = 1';
    document.body.append(script);
    document.body.setAttribute('onclick', 'window.hacked = 1');
    document.body.click();
  });
  assert.equal(await page.evaluate(() => window.hacked), undefined);
  console.log('report page: passed');
} finally {
  await browser.close();
  rmSync(dir, { recursive: true });
}
