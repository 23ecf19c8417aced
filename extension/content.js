// The clipper in the page: the key the user set in Kivo (with its modifiers) clips whatever is
// under the pointer. In hold mode, holding Alt and clicking picks several things, sent as one clip
// when Alt is let go; Kivo then keeps them pending until the user files them or presses Escape.
'use strict';

(() => {
  const api = globalThis.browser ?? globalThis.chrome;
  const CONFIG_LIFETIME_MS = 15000;
  let config = null;
  let configReadAt = 0;
  let pointer = {x: NaN, y: NaN};
  let holding = false;
  let picked = [];
  let sessionActive = false;
  let sessionTimer = null;
  let note = null;
  let noteTimer = null;

  function ask(message) {
    return new Promise((resolve) => {
      try {
        api.runtime.sendMessage(message, (answer) => {
          void api.runtime.lastError;
          resolve(answer ?? null);
        });
      } catch (error) {
        resolve(null); // the extension was reloaded under this page
      }
    });
  }

  async function refreshConfig(force) {
    if (!force && config && Date.now() - configReadAt < CONFIG_LIFETIME_MS) return config;
    const answer = await ask({kind: 'config'});
    if (answer) {
      config = answer;
      configReadAt = Date.now();
    }
    return config;
  }

  function showNote(text, lingerMs = 1600) {
    if (!note) {
      note = document.createElement('div');
      note.className = 'kivo-note';
      note.setAttribute('data-kivo', 'note');
    }
    note.textContent = text;
    note.style.opacity = '1';
    document.documentElement.appendChild(note);
    clearTimeout(noteTimer);
    if (lingerMs > 0) noteTimer = setTimeout(() => { note.style.opacity = '0'; }, lingerMs);
  }

  function flash(element) {
    if (!element) return;
    element.classList.add('kivo-clipped');
    setTimeout(() => element.classList.remove('kivo-clipped'), 700);
  }

  function isEditable(target) {
    return target instanceof HTMLElement && (target.isContentEditable || /^(INPUT|TEXTAREA|SELECT)$/.test(target.tagName));
  }

  function modifiersMatch(event, mods) {
    const wanted = new Set(mods ?? []);
    return event.shiftKey === wanted.has('shift') && event.altKey === wanted.has('alt') &&
      event.ctrlKey === wanted.has('ctrl') && event.metaKey === wanted.has('meta');
  }

  /** Whether a key press is the clipper: its key (by letter or by physical key) with exactly its modifiers. */
  function isClipperKey(event) {
    const key = (config && config.key ? String(config.key) : '').toLowerCase();
    if (!key) return false;
    const pressed = (event.key || '').toLowerCase();
    const physical = (event.code || '').toLowerCase();
    const same = pressed === key || physical === `key${key}` || physical === `digit${key}`;
    return same && modifiersMatch(event, config.mods);
  }

  async function send(items, elements) {
    elements.forEach(flash);
    const answer = await ask({kind: 'clip', items});
    if (answer && answer.sent) {
      showNote(items.length === 1 ? 'Sent to Kivo' : `${items.length} sent to Kivo`);
    } else {
      showNote('Kivo is not running');
    }
  }

  function clipUnderPointer() {
    const item = KivoPointer.itemAt(pointer.x, pointer.y);
    send([item], [KivoPointer.elementAt(pointer.x, pointer.y)]);
  }

  function setSessionActive(active) {
    sessionActive = active;
    clearInterval(sessionTimer);
    if (active) {
      showNote('Clipping into Kivo \u00b7 Esc to finish', 0);
      sessionTimer = setInterval(async () => {
        const state = await ask({kind: 'clipState'});
        if (!state || !state.active) setSessionActive(false);
      }, 3000);
    } else if (note) {
      note.style.opacity = '0';
    }
  }

  function endHold() {
    holding = false;
    const items = picked.map((entry) => entry.item);
    const elements = picked.map((entry) => entry.element);
    elements.forEach((element) => element && element.classList.remove('kivo-picked'));
    picked = [];
    if (items.length > 0) send(items, elements);
  }

  document.addEventListener('pointermove', (event) => {
    pointer = {x: event.clientX, y: event.clientY};
  }, {capture: true, passive: true});

  document.addEventListener('keydown', async (event) => {
    if (event.repeat) return;
    if (event.key === 'Escape' && sessionActive) {
      setSessionActive(false);
      ask({kind: 'endClipMode'});
      return;
    }
    await refreshConfig(false);
    if (!config) return;
    if (config.optionHold && event.key === 'Alt' && !event.ctrlKey && !event.metaKey && !event.shiftKey) {
      holding = true;
      return;
    }
    if (!isClipperKey(event)) return;
    // A plain letter typed into a field is typing, not clipping.
    if (isEditable(event.target) && (config.mods ?? []).length === 0) return;
    event.preventDefault();
    event.stopPropagation();
    clipUnderPointer();
  }, true);

  document.addEventListener('keyup', (event) => {
    if (holding && event.key === 'Alt') endHold();
  }, true);

  // In hold mode a click with Alt held picks (or puts back) the thing under the pointer.
  document.addEventListener('click', (event) => {
    if (!holding || !event.altKey) return;
    event.preventDefault();
    event.stopPropagation();
    const element = KivoPointer.elementAt(event.clientX, event.clientY) ?? event.target;
    const existing = picked.findIndex((entry) => entry.element === element);
    if (existing >= 0) {
      element.classList.remove('kivo-picked');
      picked.splice(existing, 1);
      return;
    }
    const item = KivoPointer.itemOfElement(element) ?? KivoPointer.itemAt(event.clientX, event.clientY);
    element.classList.add('kivo-picked');
    picked.push({element, item});
    showNote(`${picked.length} picked \u00b7 let go of Alt to send`, 0);
  }, true);

  window.addEventListener('blur', () => { if (holding) endHold(); });
  window.addEventListener('focus', () => refreshConfig(true));

  api.runtime.onMessage.addListener((message) => {
    if (message && message.kind === 'clipState') setSessionActive(Boolean(message.active));
  });

  refreshConfig(true);
})();
