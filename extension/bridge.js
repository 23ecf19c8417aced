// Talks to Kivo's bridge on the loopback interface. Kivo answers POSTs at once ("ok" means
// received, not saved), so every call here is short; a Kivo that is not running is simply
// unreachable and the calls resolve to null.
/* exported KivoBridge */
'use strict';

var KivoBridge = (() => {
  const api = globalThis.browser ?? globalThis.chrome;
  const DEFAULT_PORT = 17894;
  const TIMEOUT_MS = 4000;

  async function port() {
    try {
      const stored = await api.storage.local.get('bridgePort');
      const value = Number(stored.bridgePort);
      return Number.isInteger(value) && value > 0 && value < 65536 ? value : DEFAULT_PORT;
    } catch (error) {
      return DEFAULT_PORT;
    }
  }

  async function request(method, path, body) {
    const controller = new AbortController();
    const timer = setTimeout(() => controller.abort(), TIMEOUT_MS);
    try {
      const init = {method, signal: controller.signal, cache: 'no-store'};
      if (body !== undefined) {
        init.headers = {'Content-Type': 'application/json'};
        init.body = JSON.stringify(body);
      }
      const response = await fetch(`http://127.0.0.1:${await port()}${path}`, init);
      return {status: response.status, text: await response.text()};
    } catch (error) {
      return null;
    } finally {
      clearTimeout(timer);
    }
  }

  async function getJson(path) {
    const answer = await request('GET', path);
    if (!answer || answer.status !== 200) return null;
    try {
      return JSON.parse(answer.text);
    } catch (error) {
      return null;
    }
  }

  async function post(path, body) {
    const answer = await request('POST', path, body);
    return answer !== null && answer.status === 200;
  }

  return {
    DEFAULT_PORT,
    port,
    /** {key, mods: ["shift", "alt", "ctrl", "meta"], optionHold} or null. */
    clipperConfig: () => getJson('/clipperconfig'),
    /** {active} or null; polling it is also how Kivo learns the extension is installed. */
    clipState: () => getJson('/clipstate'),
    shortcuts: () => getJson('/shortcuts'),
    /** [{id, name, count}], recently used first; [] when Kivo has no library or is not running. */
    collections: async () => ((await getJson('/collections')) ?? {}).collections ?? [],
    /** items: [{type, url, sourceURL, title, text, preview, displaySrc, posterFrame}] */
    clip: (items, destination) => {
      const body = {items};
      if (destination === 'inbox') body.target = 'inbox';
      else if (destination) body.collectionId = destination;
      return post('/clip', body);
    },
    clipMode: (active) => post('/clipmode', {active}),
    capture: (capture) => post('/capture', capture),
    alive: async () => (await request('GET', '/')) !== null,
  };
})();
