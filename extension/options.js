'use strict';

(() => {
  const api = globalThis.browser ?? globalThis.chrome;

  function show(id, text) {
    document.getElementById(id).textContent = text || '—';
  }

  async function refresh() {
    const sheet = await KivoBridge.shortcuts();
    document.getElementById('dot').classList.toggle('on', Boolean(sheet));
    show('status', sheet ? 'Connected to Kivo' : 'Kivo is not running');
    if (!sheet) return;
    show('clipper', sheet.clipper || 'Not set');
    show('clipperOptionHold', sheet.clipperOptionHold ? 'On' : 'Off');
    show('screenshot', sheet.screenshot);
    show('launcher', sheet.launcher);
    show('savePage', sheet.savePage);
    show('shelf', sheet.shelf);
    const ring = sheet.dropRing ?? {};
    show('dropRing', `${ring.requiresModifier ? `Hold ${ring.modifier} while dragging` : 'Any drag'}${ring.browsersOnly ? ', from browsers' : ''}`);
  }

  async function setUpPort() {
    const input = document.getElementById('port');
    input.value = await KivoBridge.port();
    input.addEventListener('change', async () => {
      const value = Number(input.value);
      if (Number.isInteger(value) && value > 0 && value < 65536) {
        await api.storage.local.set({bridgePort: value});
        refresh();
      }
    });
  }

  setUpPort();
  refresh();
  setInterval(refresh, 5000);
})();
