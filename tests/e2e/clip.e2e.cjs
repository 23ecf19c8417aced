// End to end: the unpacked extension in Debian's Chromium clips a picture from a page served on
// this machine into a real Kivo running under Xvfb on a library of its own. The picture must end
// in the library with the page as its source, and the capture card must be on the X screen.
//
// Run by ctest inside xvfb-run, with KIVO_BINARY, KIVO_EXTENSION, KIVO_E2E_DATA, KIVO_E2E_MODULES
// and KIVO_E2E_OUTPUT in the environment.
'use strict';

const assert = require('node:assert/strict');
const {spawn, execFileSync} = require('node:child_process');
const fs = require('node:fs');
const http = require('node:http');
const net = require('node:net');
const os = require('node:os');
const path = require('node:path');

const chromiumPath = '/usr/bin/chromium';
if (!fs.existsSync(chromiumPath)) {
  process.stdout.write(`skipped: ${chromiumPath} is not installed (Debian package chromium)\n`);
  process.exit(77); // ctest's skip code for this test
}
const {chromium} = require(path.join(process.env.KIVO_E2E_MODULES, 'playwright-core'));

const binary = process.env.KIVO_BINARY;
const extension = process.env.KIVO_EXTENSION;
const picture = path.join(process.env.KIVO_E2E_DATA, 'mountains-at-dusk.jpg');
const output = process.env.KIVO_E2E_OUTPUT;

function log(line) {
  process.stdout.write(`[e2e] ${line}\n`);
}

function freePort() {
  return new Promise((resolve, reject) => {
    const server = net.createServer();
    server.listen(0, '127.0.0.1', () => {
      const {port} = server.address();
      server.close(() => resolve(port));
    });
    server.on('error', reject);
  });
}

async function waitFor(what, test, timeoutMs = 20000, everyMs = 200) {
  const until = Date.now() + timeoutMs;
  for (;;) {
    const value = await test();
    if (value) return value;
    if (Date.now() > until) throw new Error(`timed out waiting for ${what}`);
    await new Promise((resolve) => setTimeout(resolve, everyMs));
  }
}

/** The page the picture is clipped from, and the picture, on a server of the test's own. */
function servePage() {
  const page = `<!doctype html><html><head><title>Mountains at dusk - Sketchbook</title>
<style>body{margin:0;font:16px sans-serif;background:#f4f1ea} img{display:block;margin:40px}</style></head>
<body><h1>Sketchbook</h1><img id="art" src="/mountains-at-dusk.jpg" alt="Mountains at dusk" width="640" height="420">
</body></html>`;
  const server = http.createServer((request, response) => {
    if (request.url === '/mountains-at-dusk.jpg') {
      response.writeHead(200, {'Content-Type': 'image/jpeg'});
      response.end(fs.readFileSync(picture));
    } else if (request.url === '/' || request.url === '/sketchbook.html') {
      response.writeHead(200, {'Content-Type': 'text/html; charset=utf-8'});
      response.end(page);
    } else {
      response.writeHead(404);
      response.end();
    }
  });
  return new Promise((resolve) => server.listen(0, '127.0.0.1', () => resolve(server)));
}

function bridgeGet(port, pathName) {
  return new Promise((resolve) => {
    const request = http.get({host: '127.0.0.1', port, path: pathName, timeout: 2000}, (response) => {
      let body = '';
      response.on('data', (chunk) => { body += chunk; });
      response.on('end', () => resolve({status: response.statusCode, body}));
    });
    request.on('error', () => resolve(null));
    request.on('timeout', () => { request.destroy(); resolve(null); });
  });
}

/** The ids of the top-level windows whose name is `name`, as the X server knows them. */
function windowsNamed(name) {
  try {
    return execFileSync('xdotool', ['search', '--onlyvisible', '--name', `^${name}$`], {encoding: 'utf8'})
      .split('\n').filter(Boolean);
  } catch (error) {
    return []; // xdotool exits with 1 when nothing matches
  }
}

async function main() {
  const sandbox = fs.mkdtempSync(path.join(os.tmpdir(), 'kivo-e2e-'));
  const library = path.join(sandbox, 'Kivo Library');
  const environment = {
    ...process.env,
    HOME: path.join(sandbox, 'home'),
    XDG_CONFIG_HOME: path.join(sandbox, 'config'),
    XDG_DATA_HOME: path.join(sandbox, 'data'),
    XDG_STATE_HOME: path.join(sandbox, 'state'),
    XDG_CACHE_HOME: path.join(sandbox, 'cache'),
    QT_QPA_PLATFORM: 'xcb',
    OMP_THREAD_LIMIT: '1',
  };
  for (const folder of ['home', 'config/Kivo', 'data', 'state', 'cache']) fs.mkdirSync(path.join(sandbox, folder), {recursive: true});
  // The clipper key is Kivo's setting; the extension reads it from the bridge.
  fs.writeFileSync(path.join(sandbox, 'config/Kivo/Kivo.conf'),
    '[General]\nclipperKey=k\nclipperShift=false\ncaptureCardEnabled=true\nshelfEnabled=false\n');

  const bridgePort = await freePort();
  const server = await servePage();
  const pageUrl = `http://127.0.0.1:${server.address().port}/sketchbook.html`;
  let kivo = null;
  let context = null;
  let kivoLog = '';
  try {
    kivo = spawn(binary, ['--library', library, '--no-enrich'], {env: {...environment, KIVO_BRIDGE_PORT: String(bridgePort)}});
    kivo.stdout.on('data', (chunk) => { kivoLog += chunk; });
    kivo.stderr.on('data', (chunk) => { kivoLog += chunk; });
    const alive = await waitFor('the bridge', async () => {
      const answer = await bridgeGet(bridgePort, '/');
      return answer && answer.body === 'Kivo bridge alive';
    }, 30000);
    assert.ok(alive);
    log(`Kivo is up, bridge on ${bridgePort}`);

    context = await chromium.launchPersistentContext(path.join(sandbox, 'chromium-profile'), {
      executablePath: chromiumPath,
      headless: false, // the switches below ask for the new headless mode, which runs extensions
      args: [
        '--headless=new', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
        '--disable-background-networking', '--disable-component-update', '--disable-sync',
        `--disable-extensions-except=${extension}`, `--load-extension=${extension}`,
      ],
      viewport: {width: 1000, height: 700},
    });
    const worker = context.serviceWorkers()[0] ?? await context.waitForEvent('serviceworker', {timeout: 20000});
    log(`extension running: ${worker.url()}`);
    await worker.evaluate((port) => chrome.storage.local.set({bridgePort: port}), bridgePort);
    const config = await worker.evaluate(() => KivoBridge.clipperConfig());
    assert.deepEqual(config, {key: 'k', mods: [], optionHold: false});

    const page = await context.newPage();
    await page.goto(pageUrl);
    const art = await page.locator('#art').boundingBox();
    await page.mouse.move(art.x + art.width / 2, art.y + art.height / 2);
    // The content script reads the clipper key as it loads; give it that moment.
    await page.waitForTimeout(800);
    await page.keyboard.press('k');
    await page.locator('[data-kivo="note"]').filter({hasText: 'Sent to Kivo'}).waitFor({timeout: 10000});
    log('clipped with the clipper key');

    // The card comes up on the X screen, then binds to the stored picture.
    await waitFor('the capture card', () => windowsNamed('Kivo Capture').length > 0, 15000);
    await waitFor('the picture to be saved', () => kivoLog.includes('[CaptureTrace] item bound to the card'), 30000);
    await new Promise((resolve) => setTimeout(resolve, 600)); // the fade
    const screenshot = path.join(output, 'e2e-capture-card.png');
    fs.mkdirSync(output, {recursive: true});
    execFileSync('import', ['-window', 'root', screenshot]);
    log(`screen: ${screenshot}`);

    // Finish the card from the keyboard, as a person would: a title, then Control-Return.
    const card = windowsNamed('Kivo Capture')[0];
    execFileSync('xdotool', ['windowfocus', '--sync', card]);
    execFileSync('xdotool', ['type', '--delay', '20', 'Mountains at dusk, sketch']);
    execFileSync('xdotool', ['key', 'ctrl+Return']);
    await waitFor('the card to close', () => windowsNamed('Kivo Capture').length === 0, 10000);
    log('card finished');
  } finally {
    if (context) await context.close();
    server.close();
    if (kivo && kivo.exitCode === null) {
      kivo.kill('SIGTERM'); // a clean quit, so the library is free for the command below
      await waitFor('Kivo to quit', () => kivo.exitCode !== null || kivo.signalCode !== null, 20000);
    }
    if (process.exitCode) process.stdout.write(kivoLog);
  }

  const listing = JSON.parse(execFileSync(binary, ['--library', library, 'list', '--json'], {env: environment, encoding: 'utf8'}));
  const saved = listing.filter((item) => item.sourceURL === pageUrl);
  assert.equal(saved.length, 1, `one item from the page, in ${JSON.stringify(listing)}`);
  const item = saved[0];
  assert.equal(item.kind, 'image');
  assert.equal(item.title, 'Mountains at dusk, sketch');
  assert.ok(item.deletedAt === undefined || item.deletedAt === null);
  const stored = path.join(library, 'items', item.filePath);
  assert.deepEqual(fs.readFileSync(stored), fs.readFileSync(picture), `the stored file ${stored} is the picture`);
  log(`saved: ${item.id} ${item.filePath}`);
  fs.rmSync(sandbox, {recursive: true, force: true});
  process.stdout.write('1 passed, 0 failed\n');
}

main().catch((error) => {
  process.stdout.write(`${error.stack}\n0 passed, 1 failed\n`);
  process.exitCode = 1;
});
