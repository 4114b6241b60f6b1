// Draws docs/report.png, the report of the simulated band, and docs/report-recording.png if a
// recording is named: rtlsdr_868.950M_1M6_samples2.cu8 of the project rtl-wmbus.
// Usage: node scripts/picture-report.mjs PELAGRIM_SURVEY NODE_MODULES [RECORDING]
// ./test page makes NODE_MODULES, build/browser.
import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync, symlinkSync } from 'node:fs';
import { createRequire } from 'node:module';
import { tmpdir } from 'node:os';
import { basename, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const [program, modules, recording] = process.argv.slice(2).map((path) => resolve(path));
const { chromium } = createRequire(join(modules, 'x.js'))('playwright-core');
const docs = fileURLToPath(new URL('../docs/', import.meta.url));
const dir = mkdtempSync(join(tmpdir(), 'picture-'));
const run = (...options) => execFileSync(program, options, { cwd: dir, stdio: 'pipe' });

const browser = await chromium.launch({
  executablePath: '/usr/bin/chromium', args: ['--headless', '--no-sandbox', '--disable-gpu'],
});
async function draw(survey, name, height, act) {
  run('report', `${survey}.survey`, '-o', `${survey}.html`);
  const viewport = { width: 1180, height };
  const page = await browser.newPage({ viewport, timezoneId: 'Europe/Berlin' });
  await page.goto(`file://${join(dir, survey)}.html`);
  await act(page);
  await page.evaluate(() => { document.activeElement.blur(); window.scrollTo(0, 0); });
  await page.mouse.move(0, 0);
  await page.screenshot({ path: join(docs, name) });
}
try {
  run('--dir', 'simulated-band.survey', '--dwell', '2', '--passes', '10', '--quiet');
  await draw('simulated-band', 'report.png', 800, (page) =>
    page.click('#rows tr:has-text("145.57")'));
  if (recording) {
    symlinkSync(recording, join(dir, basename(recording)));
    run(basename(recording), '--dwell', '0.05', '--start-time', '2024-11-16T12:00:00Z', '--quiet');
    await draw(basename(recording, '.cu8'), 'report-recording.png', 566,
      async (page) => {
        const box = await page.locator('#picture').boundingBox();
        await page.mouse.move(box.x + box.width * 0.45, box.y + 200);
        await page.mouse.down();
        await page.mouse.move(box.x + box.width * 0.6, box.y + 200);
        await page.mouse.up();
      });
  }
} finally {
  await browser.close();
  rmSync(dir, { recursive: true });
}
